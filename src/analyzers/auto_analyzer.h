// CAutoAnalyzer ("auto"): hands a file to the analyzer its first bytes call for.
#pragma once

#include <cstddef>

#include "analyzers/file_analyzer.h"

// Beyond the classic analyzers, for names no pattern knows: PDF, ZIP, gzip,
// TAR, RTF, mailbox and HTML by their signatures, other text to "utf8";
// anything else is recorded by name only.
class CAutoAnalyzer : public CFileAnalyzer {
 public:
  using CFileAnalyzer::CFileAnalyzer;

  bool canUseIndexBuffer() override;
  bool indexFile(const char *path, unsigned long fileNumber) override;
  char *fillDisplayBuffer(const char *path, unsigned long fileNumber, unsigned long maxLength, int wrapWidth,
                          bool displayFlag) override;
  bool extractToTempFile(const char *archivePath, const char *memberName, const char *tempPath,
                         unsigned long fileNumber) override;

  // The registry name for a file that begins with head (length bytes of
  // it), or null when it is neither a known format nor text.
  static const char *kindOf(const unsigned char *head, size_t length);

 private:
  CFileAnalyzer *analyzerFor(const char *path, bool &opened) const;
};
