// CTarAnalyzer: the regular files of an uncompressed tar archive as files of their own.
#pragma once

#include "analyzers/file_analyzer.h"

// Reads the 512-byte header blocks directly; members are recorded under the
// archive by their header name and read by the analyzer their base name selects.
class CTarAnalyzer : public CFileAnalyzer {
 public:
  using CFileAnalyzer::CFileAnalyzer;

  bool canUseIndexBuffer() override;
  bool indexFile(const char *path, unsigned long fileNumber) override;
  bool extractToTempFile(const char *archivePath, const char *memberName, const char *tempPath,
                         unsigned long fileNumber) override;
};
