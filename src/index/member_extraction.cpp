// CKurvoIndex::extractToTempFile: one archive member written to a temporary file.
#include <cstdio>
#include <cstring>
#include <string>

#include "analyzers/file_analyzer.h"
#include "index/kurvo_index.h"

std::string CKurvoIndex::extractToTempFile(const char *archivePath, const char *memberName, uint32_t memberNumber) {
  // The archive's analyzer is the one its include pattern names, exactly as
  // when the archive was indexed.
  CFileAnalyzer *archiveAnalyzer = analyzerThatMatches(archivePath);
  if (!archiveAnalyzer) return "";

  // The temporary file keeps the member's extension so that the member's own
  // analyzer can be chosen for it; the member number keeps nested levels apart.
  const char *dot = std::strrchr(memberName, '.');
  const char *extension = dot ? dot + 1 : memberName;
  char tempPath[1024];
  std::snprintf(tempPath, sizeof tempPath, "%s%ctmp%d.%s", temporaryDirectory.c_str(), '/',
                static_cast<int>(memberNumber), extension);

  if (!archiveAnalyzer->extractToTempFile(archivePath, memberName, tempPath, memberNumber)) return "";
  return tempPath;
}
