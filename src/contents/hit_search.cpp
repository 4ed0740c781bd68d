// CFileContents hit search: which words of the display text a query marks.
//
// A word starts with a byte of firstCharClass and goes on with bytes of
// trailingCharClass. A query is a row of terms (trailing-class bytes and the
// wildcards '?' and '*'); everything else only separates them, except '+',
// which hides the next term or parenthesised group from marking, and "<N"
// behind a term, which makes that term a hit only when a later term matches
// within N words.
#include <cstdint>
#include <cstring>

#include "contents/file_contents.h"
#include "index/kurvo_index.h"
#include "storage/lower_case_table.h"

namespace {

inline unsigned char byteAt(const char *p) { return static_cast<unsigned char>(*p); }

// NUL never belongs to a word or a term, whatever the host's masks say, so
// that no scan can run past the end of a text.
inline bool inClass(const int32_t *charClass, const char *p) { return *p != '\0' && charClass[byteAt(p)] != 0; }

inline bool isTermByte(const int32_t *trailing, const char *p) {
  return *p == '?' || *p == '*' || inClass(trailing, p);
}

inline bool isBlank(char c) { return c == ' ' || c == '\t'; }

// Past the group that starts at p ('('), nested groups included.
const char *skipGroup(const char *p) {
  int depth = 0;
  for (; *p; ++p) {
    if (*p == '(') ++depth;
    if (*p == ')' && --depth == 0) return p + 1;
  }
  return p;
}

// Reads the proximity number after '<'. The digit 9 is not part of it: a
// number stops there, and "<9" alone counts as no number at all.
const char *readDistance(const char *p, int &distance, bool &given) {
  given = false;
  distance = 0;
  while (*p >= '0' && *p <= '8') {
    distance = distance * 10 + (*p - '0');
    given = true;
    ++p;
  }
  return p;
}

}  // namespace

bool CFileContents::isMatch(const char *text, const char *term, bool first) const {
  for (;;) {
    bool inWord = inClass(first ? firstCharClass : trailingCharClass, text);
    if (!isTermByte(trailingCharClass, term)) return !inWord;
    if (!inWord) break;
    if (*term == '*') {
      const char *next = term + 1;
      if (!isTermByte(trailingCharClass, next)) return true;
      for (const char *p = text; inClass(p == text && first ? firstCharClass : trailingCharClass, p); ++p) {
        if (lowerCase(byteAt(p)) == byteAt(next) && isMatch(p, next, false)) return true;
      }
      return false;
    }
    if (*term != '?' && byteAt(term) != lowerCase(byteAt(text))) return false;
    ++text;
    ++term;
    first = false;
  }
  // The word ended before the term: trailing wildcards may match nothing.
  while (*term == '*' || *term == '?') ++term;
  return !isTermByte(trailingCharClass, term);
}

// Whether a term of query marks word: it matches, and when "<" follows it,
// the rest of the query is found within the distance after the word. Terms
// after "+" are required elsewhere and never mark a word.
bool CFileContents::termMarks(char *word, const char *query) {
  const char *q = query;
  while (*q) {
    if (*q == '+') {
      ++q;
      while (isBlank(*q)) ++q;
      if (*q == '(')
        q = skipGroup(q);
      else
        while (isTermByte(trailingCharClass, q)) ++q;
      continue;
    }
    if (!isTermByte(trailingCharClass, q)) {
      ++q;
      continue;
    }
    const char *term = q;
    while (isTermByte(trailingCharClass, q)) ++q;
    const char *after = q;
    while (isBlank(*after)) ++after;
    const bool matches = isMatch(word, term, true);
    if (*after != '<') {
      if (matches) return true;
      continue;
    }
    int near = 0;
    bool given = false;
    q = readDistance(after + 1, near, given);
    if (!given) near = defaultDistance;
    if (matches) {
      char *start = word + 1;
      char *found = searchBuffer(start, q, near, false);
      if (*found && found > contentsText && found != start) return true;
    }
  }
  return false;
}

// The word after word, or before it going backward; null when there is no
// word before it.
char *CFileContents::adjacentWord(char *word, bool backward) const {
  if (!backward) {
    ++word;
    while (inClass(trailingCharClass, word)) ++word;
    while (*word && !inClass(firstCharClass, word)) ++word;
    return word;
  }
  if (word == contentsText) return nullptr;
  char *previous = word;
  while (previous > contentsText && !inClass(trailingCharClass, previous - 1)) --previous;
  while (previous > contentsText && inClass(trailingCharClass, previous - 1)) --previous;
  while (previous < word && !inClass(firstCharClass, previous)) ++previous;
  return previous == word ? nullptr : previous;
}

char *CFileContents::searchBuffer(char *from, const char *query, int distance, bool backward) {
  if (!contentsText) return nullptr;
  char *word = from;
  if (backward) {
    while (word > contentsText && !inClass(trailingCharClass, word - 1)) --word;
    while (word > contentsText && inClass(trailingCharClass, word - 1)) --word;
  }
  while (*word && !inClass(firstCharClass, word)) ++word;

  for (int examined = 0;; ++examined) {
    if (*word == '\0') return word;
    // Out of reach: the search ends at the terminating NUL. Its place is
    // known, so a failed proximity test does not scan the rest of the text.
    if (distance > 0 && examined > distance) return contentsText + contentsLength;
    if (termMarks(word, query)) return word;
    word = adjacentWord(word, backward);
    // The byte before the text: callers compare against it, never read it.
    if (!word) return reinterpret_cast<char *>(reinterpret_cast<uintptr_t>(contentsText) - 1);
  }
}

uint32_t CFileContents::searchBuffer(uint32_t offset, const char *query) {
  if (!contentsText || offset > contentsLength) return 0;
  char *hit = searchBuffer(contentsText + offset, query, 0, false);
  if (*hit == '\0') return 0;
  return static_cast<uint32_t>(hit - contentsText) + 1;
}

bool CFileContents::containsHit(const char *query) {
  if (!contentsText) return false;
  return *searchBuffer(contentsText, query, 0, false) != '\0';
}

uint32_t CFileContents::tokenLength(uint32_t offset) const {
  if (!contentsText || offset >= contentsLength) return 0;
  const char *p = contentsText + offset;
  if (!inClass(firstCharClass, p)) return 0;
  uint32_t length = 1;
  while (inClass(trailingCharClass, p + length)) ++length;
  return length;
}

void CFileContents::convertToOutline(const char *query) {
  if (!contentsText) return;
  // Lines are copied forward over lines already passed, so the text still to
  // be searched is never overwritten.
  char *write = contentsText;
  char *hit = searchBuffer(contentsText, query, 0, false);
  while (*hit) {
    int64_t length = tokenLength(static_cast<uint32_t>(hit - contentsText));
    if (length < index->MinWordLength || length > index->MaxWordLength) {
      hit = searchBuffer(hit + 1, query, 0, false);
      continue;
    }
    char *lineStart = hit;
    while (lineStart > contentsText && lineStart[-1] != '\n') --lineStart;
    char *lineEnd = std::strchr(hit, '\n');
    lineEnd = lineEnd ? lineEnd + 1 : hit + std::strlen(hit);
    size_t lineLength = static_cast<size_t>(lineEnd - lineStart);
    std::memmove(write, lineStart, lineLength);
    write += lineLength;
    hit = searchBuffer(lineEnd, query, 0, false);
  }
  *write = '\0';
  contentsLength = static_cast<size_t>(write - contentsText);
}
