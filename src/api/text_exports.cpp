// Exported conversions between UTF-8 and the index's character set.
#include <cstring>
#include <string>

#include "analyzers/utf8_decoder.h"
#include "kurvo.h"
#include "storage/lower_case_table.h"

namespace {

// Copies at most outSize - 1 bytes and a NUL, backing off to a whole
// UTF-8 character when utf8 is set.
void copyOut(const std::string &text, char *out, unsigned int outSize, bool utf8) {
  if (!out || outSize == 0) return;
  size_t length = text.size() < outSize - 1 ? text.size() : outSize - 1;
  if (utf8 && length < text.size()) {
    while (length > 0 && (static_cast<unsigned char>(text[length]) & 0xC0) == 0x80) --length;
  }
  std::memcpy(out, text.data(), length);
  out[length] = '\0';
}

}  // namespace

extern "C" {

KURVO_API unsigned int kTextFromUtf8(const char *utf8, char *out, unsigned int outSize) {
  Utf8Decoder decoder;
  std::string text;
  if (utf8) decoder.decode(utf8, std::strlen(utf8), true, text);
  copyOut(text, out, outSize, false);
  return static_cast<unsigned int>(decoder.foreignCount());
}

KURVO_API void kFoldCase(char *text) {
  for (char *p = text; p && *p; ++p) {
    // DEL folds to 0 only to end hashed texts; here it stays itself.
    const unsigned char folded = lowerCase(static_cast<unsigned char>(*p));
    if (folded != 0) *p = static_cast<char>(folded);
  }
}

KURVO_API unsigned int kTextToUtf8(const char *text, char *out, unsigned int outSize) {
  const std::string converted = text ? toUtf8(text, std::strlen(text)) : std::string();
  copyOut(converted, out, outSize, true);
  return static_cast<unsigned int>(converted.size());
}

}  // extern "C"
