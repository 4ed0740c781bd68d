// UTF-8 text to and from the index's character set: ISO 8859-1 with the Windows-1252 punctuation in 0x80-0x9F.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

// Stands for a character the set cannot hold: a separator for the word
// cutter, shown as U+FFFD.
constexpr unsigned char kForeignCharacter = 0x1A;

// The byte that holds code point cp, or -1 when the set has none.
int byteForCodePoint(uint32_t cp);
// The code point byte stands for.
uint32_t codePointForByte(unsigned char byte);

// Decodes a stream of UTF-8 pieces. Bytes that are not valid UTF-8 are taken
// as Latin-1 one by one, so Latin-1 text decodes to itself; a byte-order mark
// at the start is dropped.
class Utf8Decoder {
 public:
  // Appends the decoded form of length bytes to out. A sequence cut by the
  // end of the piece is held back for the next one; after the last piece
  // its bytes are taken as Latin-1.
  void decode(const char *bytes, size_t length, bool last, std::string &out);
  // Characters outside the set met so far.
  uint64_t foreignCount() const { return m_foreign; }

 private:
  std::string m_held;
  uint64_t m_foreign = 0;
  bool m_atStart = true;
};

// text (in the index's character set) as UTF-8.
std::string toUtf8(const char *text, size_t length);
