// CHtmlAnalyzer: references, UTF-8 pairs, tags and scripts, byte by byte.
#include "analyzers/html_analyzer.h"

#include <cstring>
#include <string>

#include "index/kurvo_index.h"
#include "storage/lower_case_table.h"

namespace {

// Longest reference name taken between '&' and ';'.
constexpr int kMaxReference = 31;
// Display keeps this many bytes back for the next buffer, so that a tag or
// reference cut by the buffer's end is seen whole.
constexpr unsigned long kDisplayLookAhead = 9;

bool isPairLead(unsigned char c) { return (c & 0xE0) == 0xC0; }

// The byte a two-byte UTF-8 sequence names. Only the lowest two bits of the
// lead's payload survive, so code points up to 255 come out right and others
// fold into that range.
unsigned char decodePair(unsigned char lead, unsigned char next) {
  return static_cast<unsigned char>(((lead << 6) & 0xC0) | (next & 0x3F));
}

bool matchesFolded(const char *text, const char *lowerWord) {
  for (; *lowerWord; ++text, ++lowerWord) {
    if (lowerCase(static_cast<unsigned char>(*text)) != static_cast<unsigned char>(*lowerWord)) return false;
  }
  return true;
}

// The value of a reference as indexing reads it: from the second byte on,
// bytes 1 to 57 count as decimal digits, so only "#" references decode and
// names give 0.
unsigned char numericReference(const char *text) {
  uint32_t value = 0;
  for (const char *p = text + 1; *p >= 1 && *p <= 57; ++p) value = value * 10 + static_cast<uint32_t>(*p - 48);
  return static_cast<unsigned char>((value + value / 255) % 256);
}

}  // namespace

CHtmlAnalyzer::CHtmlAnalyzer(CKurvoIndex *index) : CFileAnalyzer(index) { m_bHooks = 1; }

bool CHtmlAnalyzer::checkIndexCharacter(char *current, char **read, char **wordStart, char **write, char **bufferStart,
                                        unsigned long length) {
  (void)wordStart;
  char *const end = *bufferStart + length;
  unsigned char c = static_cast<unsigned char>(*current);
  if (isPairLead(c)) {
    if (*read + 1 >= end) {
      *read = end;
      return true;
    }
    ++*read;
    c = decodePair(c, static_cast<unsigned char>(**read));
    *current = static_cast<char>(c);
  }
  if (c != '&') return false;

  char *p = *read + 1;
  if (p >= end) {
    *read = end;
    return true;
  }
  std::string reference;
  while (p < end && *p != ';' && reference.size() < kMaxReference) reference.push_back(*p++);
  if (p >= end) {
    carryBytes(reference.data(), reference.size());
    *read = end;
    return true;
  }
  *read = p;

  unsigned char result = 0;
  if (!reference.empty() && static_cast<unsigned char>(reference[0]) > 34) {
    result = numericReference(reference.c_str());
  } else {
    auto it = m_pIndex->entities.find(reference);
    if (it != m_pIndex->entities.end()) result = it->second;
  }
  **write = static_cast<char>(result);
  *current = static_cast<char>(result);
  return false;
}

bool CHtmlAnalyzer::checkStripCharacter(unsigned char *current, char **read, unsigned long *remaining, char lastOutput,
                                        bool displayFlag, int *state) {
  char *p = *read;
  // Consumes the bytes up to and including p + last.
  auto consume = [&](unsigned long last) {
    *read = p + last;
    *remaining -= last;
    return true;
  };

  if (*remaining <= kDisplayLookAhead) {
    carryBytes(p, *remaining + 1);
    return consume(*remaining);
  }
  unsigned char c = *current;
  if (isPairLead(c)) {
    c = decodePair(c, static_cast<unsigned char>(p[1]));
    ++p;
    --*remaining;
    *read = p;
  } else if (c == '\t' || c == '\n') {
    c = ' ';
  }
  *current = c;
  if (c == ' ' && lastOutput == ' ') return consume(0);

  if (displayFlag) {
    if (*state == -1) {
      if (*remaining >= 9 && p[1] == '/' && matchesFolded(p + 2, "script")) {
        *state = 1;
        return consume(7);
      }
      return consume(0);
    }
    if (c != '<') {
      if (c == '>' && *state == 1) {
        *state = 0;
        const bool spacesToo = p[1] == ' ';
        unsigned long skip = 0;
        while (skip < *remaining) {
          const char next = p[skip + 1];
          if (next != '\r' && next != '\n' && next != '\t' && !(spacesToo && next == ' ')) break;
          ++skip;
        }
        consume(skip);
        p = *read;
        if (lastOutput == ' ' || lastOutput == '\n') return true;
        c = ' ';
        *current = c;
      } else if (*state == 1) {
        return consume(0);
      }
    } else {
      *state = 1;
      const unsigned char first = lowerCase(static_cast<unsigned char>(p[1]));
      if (first == 'p') {
        *current = '\n';
        consume(1);
        return false;
      }
      if ((p[1] == '/' && lowerCase(static_cast<unsigned char>(p[2])) == 'p') ||
          (*remaining > 2 && (matchesFolded(p + 1, "br") || matchesFolded(p + 1, "tr"))) ||
          matchesFolded(p + 1, "li")) {
        *current = '\n';
        consume(2);
        return false;
      }
      if (*remaining > 7 && matchesFolded(p + 1, "script")) {
        *state = -1;
        return consume(6);
      }
      return consume(0);
    }
  }

  // References are decoded after the tags, so a decoded '<' starts no tag.
  if (*remaining == 0 || c != '&') return false;
  std::string reference;
  char *q = p + 1;
  char *const end = p + *remaining + 1;
  while (q < end && *q != ';' && reference.size() < kMaxReference) reference.push_back(*q++);
  *current = m_pIndex->htmlChar(reference.c_str());
  // The base shows the decoded byte and steps over the ';', or over the byte
  // the scan stopped on.
  consume(q < end ? static_cast<unsigned long>(q - p) : *remaining);
  return false;
}
