// UTF-8 decoding with Latin-1 fallback, and the Windows-1252 punctuation table both ways.
#include "analyzers/utf8_decoder.h"

namespace {

// Code points of the bytes 0x80-0x9F; where Windows-1252 has no character
// the byte stands for itself.
constexpr uint16_t kWindows1252[32] = {0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                       0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
                                       0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                       0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

constexpr uint32_t kByteOrderMark = 0xFEFF;

// Bytes in a sequence that starts with lead; 0 when lead cannot start one.
size_t sequenceLength(unsigned char lead) {
  if (lead >= 0xC2 && lead <= 0xDF) return 2;
  if (lead >= 0xE0 && lead <= 0xEF) return 3;
  if (lead >= 0xF0 && lead <= 0xF4) return 4;
  return 0;
}

// Whether byte may stand at position at (1..3) of a sequence led by lead;
// the second byte's range rules out overlong forms and surrogates.
bool fitsAt(unsigned char lead, size_t at, unsigned char byte) {
  if (at == 1) {
    if (lead == 0xE0) return byte >= 0xA0 && byte <= 0xBF;
    if (lead == 0xED) return byte >= 0x80 && byte <= 0x9F;
    if (lead == 0xF0) return byte >= 0x90 && byte <= 0xBF;
    if (lead == 0xF4) return byte >= 0x80 && byte <= 0x8F;
  }
  return byte >= 0x80 && byte <= 0xBF;
}

void appendUtf8(uint32_t cp, std::string &out) {
  if (cp < 0x80) {
    out += static_cast<char>(cp);
  } else if (cp < 0x800) {
    out += static_cast<char>(0xC0 | (cp >> 6));
    out += static_cast<char>(0x80 | (cp & 0x3F));
  } else {
    out += static_cast<char>(0xE0 | (cp >> 12));
    out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (cp & 0x3F));
  }
}

}  // namespace

int byteForCodePoint(uint32_t cp) {
  if (cp < 0x80 || (cp >= 0xA0 && cp <= 0xFF)) return static_cast<int>(cp);
  for (int i = 0; i < 32; ++i) {
    if (kWindows1252[i] == cp) return 0x80 + i;
  }
  return -1;
}

uint32_t codePointForByte(unsigned char byte) {
  if (byte >= 0x80 && byte <= 0x9F) return kWindows1252[byte - 0x80];
  return byte;
}

void Utf8Decoder::decode(const char *bytes, size_t length, bool last, std::string &out) {
  // A sequence cut by the end of the last piece goes in front of this one.
  std::string joined;
  if (!m_held.empty()) {
    joined = m_held + std::string(bytes, length);
    m_held.clear();
    bytes = joined.data();
    length = joined.size();
  }
  out.reserve(out.size() + length);
  size_t at = 0;
  while (at < length) {
    // Runs of ASCII, most of most texts, are copied as they are.
    size_t run = at;
    while (run < length && static_cast<unsigned char>(bytes[run]) < 0x80) ++run;
    if (run > at) {
      out.append(bytes + at, run - at);
      at = run;
      m_atStart = false;
      continue;
    }
    const unsigned char lead = static_cast<unsigned char>(bytes[at]);
    const size_t need = sequenceLength(lead);
    size_t got = 1;
    while (need && got < need && at + got < length && fitsAt(lead, got, static_cast<unsigned char>(bytes[at + got])))
      ++got;
    if (need && got < need && at + got == length && !last) {
      m_held.assign(bytes + at, length - at);  // cut by the end of the piece
      break;
    }
    if (need == 0 || got < need) {  // not UTF-8: the byte is Latin-1
      out += static_cast<char>(lead);
      ++at;
      m_atStart = false;
      continue;
    }
    uint32_t cp = lead & (0xFF >> (need + 1));
    for (size_t i = 1; i < need; ++i) cp = (cp << 6) | (static_cast<unsigned char>(bytes[at + i]) & 0x3F);
    at += need;
    const bool mark = m_atStart && cp == kByteOrderMark;
    m_atStart = false;
    if (mark) continue;
    const int byte = byteForCodePoint(cp);
    if (byte < 0) ++m_foreign;
    out += static_cast<char>(byte < 0 ? kForeignCharacter : byte);
  }
}

std::string toUtf8(const char *text, size_t length) {
  std::string out;
  out.reserve(length);
  for (size_t i = 0; i < length; ++i) {
    const unsigned char byte = static_cast<unsigned char>(text[i]);
    appendUtf8(byte == kForeignCharacter ? 0xFFFD : codePointForByte(byte), out);
  }
  return out;
}
