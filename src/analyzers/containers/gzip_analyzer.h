// CGZipAnalyzer: a gzip-compressed file as a container of the one file it packs.
#pragma once

#include <string>

#include "analyzers/file_analyzer.h"

// notes.txt.gz holds notes.txt and x.tgz holds x.tar; the inner file is
// recorded under the compressed one, unpacked to a temporary file and read by
// the analyzer its name selects.
class CGZipAnalyzer : public CFileAnalyzer {
 public:
  using CFileAnalyzer::CFileAnalyzer;

  bool canUseIndexBuffer() override;
  bool indexFile(const char *path, unsigned long fileNumber) override;
  bool extractToTempFile(const char *archivePath, const char *memberName, const char *tempPath,
                         unsigned long fileNumber) override;

  // The base name up to the path's last '.', with ".tar" added for ".tgz".
  static std::string innerName(const char *path);
};
