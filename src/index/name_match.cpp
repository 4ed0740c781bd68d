// The file-name pattern language: '*', '?', and the connectives '|', '&', '^'.
#include "index/name_match.h"

#include <cstring>

#include "storage/lower_case_table.h"

namespace {

bool sameFolded(unsigned char a, unsigned char b) { return lowerCase(a) == lowerCase(b); }

const unsigned char *skipSpaces(const unsigned char *p) {
  while (*p == ' ') ++p;
  return p;
}

// Whether what is left of a term, with the name at its end or stopped,
// still counts as a match.
bool termEndMatches(const unsigned char *name, const unsigned char *pattern) {
  pattern = skipSpaces(pattern);
  switch (*pattern) {
    case 0:
      return *name == 0;
    case '*':
      return pattern[1] == 0;
    case '|':
    case '&':
    case '^':
      // A term followed by a connective only has to match a prefix.
      return true;
    default:
      return false;
  }
}

bool hasFolderSeparator(const char *pattern) { return std::strpbrk(pattern, "/\\") != nullptr; }

// A pattern of literals and stars alone, each star followed by a literal or
// ending the pattern, matches as an ordinary glob, which needs no backtracking.
bool isPlainGlob(const unsigned char *pattern) {
  for (const unsigned char *p = pattern; *p; ++p) {
    if (*p == '?' || *p == '|' || *p == '&' || *p == '^' || *p == ' ' || *p == 0x7F) return false;
    if (*p == '*' && p[1] == '*') return false;
  }
  return true;
}

bool sameFoldedRun(const unsigned char *a, const unsigned char *b, size_t length) {
  for (size_t i = 0; i < length; ++i)
    if (!sameFolded(a[i], b[i])) return false;
  return true;
}

size_t literalLength(const unsigned char *pattern) {
  size_t length = 0;
  while (pattern[length] && pattern[length] != '*') ++length;
  return length;
}

// The first part must start the name and the last end it; each part between
// stars is taken where it first occurs, which leaves the most room after it.
bool plainGlobMatch(const unsigned char *name, const unsigned char *pattern) {
  const unsigned char *end = name + std::strlen(reinterpret_cast<const char *>(name));
  size_t length = literalLength(pattern);
  if (pattern[length] == 0) return static_cast<size_t>(end - name) == length && sameFoldedRun(name, pattern, length);
  if (static_cast<size_t>(end - name) < length || !sameFoldedRun(name, pattern, length)) return false;
  name += length;
  pattern += length;
  for (;;) {
    ++pattern;  // the star
    length = literalLength(pattern);
    if (pattern[length] == 0) {
      return static_cast<size_t>(end - name) >= length && sameFoldedRun(end - length, pattern, length);
    }
    const unsigned char *at = name;
    while (static_cast<size_t>(end - at) >= length && !sameFoldedRun(at, pattern, length)) ++at;
    if (static_cast<size_t>(end - at) < length) return false;
    name = at + length;
    pattern += length;
  }
}

}  // namespace

int termMatch(const char *nameText, const char *patternText) {
  const unsigned char *pattern = reinterpret_cast<const unsigned char *>(patternText);
  if (isPlainGlob(pattern)) return plainGlobMatch(reinterpret_cast<const unsigned char *>(nameText), pattern) ? 1 : 0;
  return backtrackingTermMatch(nameText, patternText);
}

int backtrackingTermMatch(const char *nameText, const char *patternText) {
  const unsigned char *name = reinterpret_cast<const unsigned char *>(nameText);
  const unsigned char *pattern = reinterpret_cast<const unsigned char *>(patternText);
  int polarity = 1;
  if (*pattern == '^') {
    pattern = skipSpaces(pattern + 1);
    polarity = 0;
  }

  bool nameUsedUp = true;
  while (*name) {
    if (*pattern == '?') {
      ++name;
      ++pattern;
    } else if (*pattern == '*') {
      // Try the rest of the term at every place the next literal occurs.
      const unsigned char *rest = pattern + 1;
      for (; *name; ++name) {
        if (sameFolded(*name, *rest) &&
            backtrackingTermMatch(reinterpret_cast<const char *>(name), reinterpret_cast<const char *>(rest)))
          return polarity;
      }
      pattern = rest;
    } else if (*pattern != 0 && sameFolded(*pattern, *name)) {
      ++name;
      ++pattern;
    } else {
      nameUsedUp = false;
      break;
    }
  }
  if (nameUsedUp) {
    // Trailing wildcards match an empty remainder.
    while (*pattern == '*' || *pattern == '?') ++pattern;
  }
  return termEndMatches(name, pattern) ? polarity : 1 - polarity;
}

int fileNameMatch(const char *name, const char *pattern) {
  const char *p = pattern;
  for (;;) {
    if (termMatch(name, p) == 1) {
      // Passed: skip alternatives up to the next "and" or "not" term.
      if (*p == '^') ++p;
      while (*p && *p != '^' && *p != '&') ++p;
      if (*p == '&') {
        ++p;
        while (*p == ' ') ++p;
      }
      if (*p == 0) return 1;
    } else {
      // Failed: only a later alternative can still succeed.
      p = std::strchr(p, '|');
      if (!p) return 0;
      ++p;
      while (*p == ' ') ++p;
    }
  }
}

int dirMatch(const char *pathText, const char *patternText) {
  const unsigned char *path = reinterpret_cast<const unsigned char *>(pathText);
  const char *pattern = patternText;
  while (*path) {
    const unsigned char p = static_cast<unsigned char>(*pattern);
    if (p == '?') {
      ++path;
      ++pattern;
    } else if (p == '*') {
      if (!hasFolderSeparator(pattern + 1)) return 1;
      // Only the first occurrence of the next literal is tried.
      ++pattern;
      const unsigned char c = static_cast<unsigned char>(*pattern);
      while (*path && !sameFolded(*path, c)) ++path;
      if (!*path) return 1;
    } else if (p != 0 && sameFolded(p, *path)) {
      ++path;
      ++pattern;
    } else {
      break;
    }
  }
  return hasFolderSeparator(pattern) ? 0 : 1;
}
