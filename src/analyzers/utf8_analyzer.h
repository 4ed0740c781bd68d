// CUtf8Analyzer ("utf8"): text as it is written today, UTF-8 or Latin-1, read whole.
#pragma once

#include <string>

#include "analyzers/file_analyzer.h"

// Beyond the classic analyzers: decodes UTF-8 into the index's character
// set (utf8_decoder.h), indexes every word including the last one and those
// cut by a read, and shows the file with its own lines and tabs. Characters
// the set cannot hold separate words; files that hold them are counted.
class CUtf8Analyzer : public CFileAnalyzer {
 public:
  using CFileAnalyzer::CFileAnalyzer;

  // Archive members are unpacked to a file, so each is read whole.
  bool canUseIndexBuffer() override;
  bool indexFile(const char *path, unsigned long fileNumber) override;
  // The buffer is taken as a whole text.
  int indexBuffer(char *buffer, unsigned long length, unsigned long fileNumber, bool firstBuffer) override;
  char *fillDisplayBuffer(const char *path, unsigned long fileNumber, unsigned long maxLength, int wrapWidth,
                          bool displayFlag) override;
};
