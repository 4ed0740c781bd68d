// CFileContents: one indexed file shown again, with hit search and outline.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

class CKurvoIndex;

class CFileContents {
 public:
  // Builds the display text of record fileNumber, extracting it from its
  // archives first when it is a member. Raises "AssertionFailed",
  // "NoFileContentsForDir", "ArchivesNestedTooDeep", "ArchiveExtractError".
  CFileContents(CKurvoIndex *index, uint32_t fileNumber, uint32_t maxLength, int wrapWidth, bool displayFlag,
                int defaultDistance);
  ~CFileContents();

  CFileContents(const CFileContents &) = delete;
  CFileContents &operator=(const CFileContents &) = delete;

  // The display text, or "" when there is none.
  const char *contents() const;
  // The next line with its line feed; raises "EndOfContents" at the end.
  const char *nextLine();
  // 1-based offset of the next hit at or after offset, or 0.
  uint32_t searchBuffer(uint32_t offset, const char *query);
  // The word-level search; the hit word's first byte, or the terminating NUL.
  char *searchBuffer(char *from, const char *query, int distance, bool backward);
  bool containsHit(const char *query);
  bool isMatch(const char *text, const char *term, bool first) const;
  bool termMarks(char *word, const char *query);
  char *adjacentWord(char *word, bool backward) const;
  uint32_t tokenLength(uint32_t offset) const;
  void convertToOutline(const char *query);
  const char *filePath() const { return path.c_str(); }

 private:
  CKurvoIndex *index;
  std::string path;
  bool extracted = false;
  uint32_t maxLength;
  int wrapWidth;
  int defaultDistance;
  char *readPosition = nullptr;
  char *contentsText = nullptr;
  // strlen(contentsText), kept so that host offsets can be checked cheaply.
  size_t contentsLength = 0;
  int32_t firstCharClass[256];
  int32_t trailingCharClass[256];
  std::string line;
};
