// CZipAnalyzer: the members of a ZIP archive as files of their own, read through minizip.
#pragma once

#include "analyzers/file_analyzer.h"

// Members are recorded under the archive by their full name and read by the
// analyzer their base name selects, from memory or from a temporary copy.
class CZipAnalyzer : public CFileAnalyzer {
 public:
  using CFileAnalyzer::CFileAnalyzer;

  bool canUseIndexBuffer() override;
  bool indexFile(const char *path, unsigned long fileNumber) override;
  bool extractToTempFile(const char *archivePath, const char *memberName, const char *tempPath,
                         unsigned long fileNumber) override;
};
