// CRtfAnalyzer: control words, hexadecimal escapes and skipped groups, byte by byte.
#include "analyzers/rtf_analyzer.h"

#include <cstring>

#include "analyzers/charset_analyzers.h"
#include "index/kurvo_index.h"

namespace {

// Display keeps this many bytes back for the next buffer, so that a control
// word cut by the buffer's end is seen whole.
constexpr unsigned long kDisplayLookAhead = 9;

bool isLower(char c) { return c >= 'a' && c <= 'z'; }
bool isLetter(char c) { return isLower(c) || (c >= 'A' && c <= 'Z'); }
bool isDigit(char c) { return c >= '0' && c <= '9'; }

int hexDigit(char c) {
  if (isDigit(c)) return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return 0;
}

bool startsWith(const char *text, const char *prefix) { return std::strncmp(text, prefix, std::strlen(prefix)) == 0; }

// A control word of the groups whose contents are never shown: pictures,
// objects, drawing objects, the font table, lists and the style sheet. The
// object test compares five letters and then looks at the seventh byte, so a
// plain \object group is shown; kept as existing displays have it.
bool startsSkippedGroup(const char *word) {
  return (startsWith(word, "pict") && !isLetter(word[4])) || (startsWith(word, "objec") && !isLetter(word[6])) ||
         (startsWith(word, "do") && !isLetter(word[2])) || (startsWith(word, "fonttbl") && !isLetter(word[7])) ||
         startsWith(word, "list") || startsWith(word, "style");
}

}  // namespace

CRtfAnalyzer::CRtfAnalyzer(CKurvoIndex *index) : CFileAnalyzer(index) { m_bHooks = 1; }

void CRtfAnalyzer::noteCodePage(const char *buffer, unsigned long length, bool firstBuffer) {
  if (!firstBuffer) return;
  // "{\rtf1\mac\ansicpg10000": only "mac" at bytes 7 to 9 is compared.
  m_bMacCodePage = length > 22 && std::memcmp(buffer + 7, "mac", 3) == 0 ? 1 : 0;
}

unsigned char CRtfAnalyzer::escapedByte(const char *digits) const {
  const unsigned char value = static_cast<unsigned char>(hexDigit(digits[0]) * 16 + hexDigit(digits[1]));
  return m_bMacCodePage ? macRomanChart[value] : value;
}

int CRtfAnalyzer::indexBuffer(char *buffer, unsigned long length, unsigned long fileNumber, bool firstBuffer) {
  noteCodePage(buffer, length, firstBuffer);
  return CFileAnalyzer::indexBuffer(buffer, length, fileNumber, firstBuffer);
}

unsigned long CRtfAnalyzer::stripBuffer(char *source, unsigned long sourceLength, char *output,
                                        unsigned long outputSize, int wrapWidth, bool displayFlag, bool firstBuffer,
                                        int *state) {
  noteCodePage(source, sourceLength, firstBuffer);
  return CFileAnalyzer::stripBuffer(source, sourceLength, output, outputSize, wrapWidth, displayFlag, firstBuffer,
                                    state);
}

bool CRtfAnalyzer::checkIndexCharacter(char *current, char **read, char **wordStart, char **write, char **bufferStart,
                                       unsigned long length) {
  if (*current != '\\') return false;
  CKurvoIndex &index = *m_pIndex;
  char *const end = *bufferStart + length;
  char *p = *read + 1;
  if (p >= end) {
    carryBytes("\\", 1);
    *read = end;
    return true;
  }

  if (*p == '\'') {
    // Hexadecimal escape: its byte is written over the second digit, where
    // the cutter takes it as the next character.
    if (p + 2 >= end) {
      carryBytes(*read, static_cast<unsigned long>(end - *read));
      *read = end;
      return true;
    }
    p[2] = static_cast<char>(escapedByte(p + 1));
    p += 2;
  } else if (isLower(*p)) {
    while (p < end && isLower(*p)) ++p;
    if (p >= end) {
      carryBytes("\\", 1);
      *read = end;
      return true;
    }
    if (*p == ' ') ++p;
    while (p < end && (isDigit(*p) || *p == '-')) ++p;
    if (p >= end) {
      index.partialWord[0] = '\0';
      *read = end;
      return true;
    }
  } else if (*p != '\\') {
    *p = ' ';
  }
  *read = p;

  // A control word inside a word does not split it: the word's letters move
  // up to sit right before the text that follows.
  const long wordLength = *write - *wordStart;
  if (wordLength > 0) std::memmove(p - wordLength, *wordStart, static_cast<size_t>(wordLength));
  *wordStart = p - wordLength;
  *write = p;
  return true;
}

bool CRtfAnalyzer::checkStripCharacter(unsigned char *current, char **read, unsigned long *remaining,
                                       char /*lastOutput*/, bool /*displayFlag*/, int *state) {
  char *const p = *read;
  auto consume = [&](unsigned long last) {
    *read = p + last;
    *remaining -= last;
    return true;
  };

  if (*remaining <= kDisplayLookAhead) {
    carryBytes(p, *remaining + 1);
    return consume(*remaining);
  }
  const char c = static_cast<char>(*current);

  if (*state > 0) {
    if (c == '\\') {
      // "\}" is not taken as escaped here: it still closes the group.
      return consume(p[1] == '{' || p[1] == ']' ? 1 : 0);
    }
    if (c == '{') ++*state;
    if (c == '}') --*state;
    return consume(0);
  }
  if (*state == -1) {
    if (isLower(c) || isDigit(c) || c == '-') return consume(0);
    if (c == ' ') {
      *state = -2;
      return consume(0);
    }
    *state = 0;
  } else if (*state == -2) {
    if (isDigit(c)) return consume(0);
    *state = 0;
  }

  if (c != '\\') {
    if (c == '{' || c == '}') return consume(0);
    if (c == '\r') return consume(p[1] == '\n' ? 1 : 0);
    return false;
  }

  const char next = p[1];
  if (next == '\\' || next == '{' || next == '}') {
    // Shown as a backslash; the escaped byte is stepped over.
    consume(1);
    return false;
  }
  if (next == '*') {
    *state = 1;
    return consume(1);
  }
  if (isLower(next)) {
    if (startsWith(p + 1, "par") && !isLower(p[4])) {
      *current = '\n';
      consume(3);
      return false;
    }
    *state = startsSkippedGroup(p + 1) ? 1 : -1;
    return consume(0);
  }
  if (next == '\'') {
    *current = escapedByte(p + 2);
    consume(3);
    return false;
  }
  // Any other escape shows as a space; the escaped byte follows as text.
  *current = ' ';
  return false;
}
