// CKurvoIndex include and exclude patterns and the queries the walk makes of them.
#include <cstring>

#include "analyzers/file_analyzer.h"
#include "report/message_keys.h"
#include "report/reporting.h"
#include "index/kurvo_index.h"
#include "index/name_match.h"

namespace {

void freePatterns(char **&patterns) {
  if (!patterns) return;
  for (char **p = patterns; *p; ++p) delete[] * p;
  delete[] patterns;
  patterns = nullptr;
}

void storePattern(char **patterns, int i, const char *pattern) {
  char *copy = new char[std::strlen(pattern) + 1];
  std::strcpy(copy, pattern);
  delete[] patterns[i];
  patterns[i] = copy;
}

}  // namespace

void CKurvoIndex::setIncludeCount(int count) {
  freePatterns(includePatterns);
  delete[] includeAnalyzers;
  includeAnalyzers = nullptr;
  if (count > 0) {
    includePatterns = new char *[count + 1]();
    includeAnalyzers = new CFileAnalyzer *[count + 1]();
  }
}

void CKurvoIndex::setExcludeCount(int count) {
  freePatterns(excludePatterns);
  if (count > 0) excludePatterns = new char *[count + 1]();
}

void CKurvoIndex::setExcludePattern(int i, const char *pattern) { storePattern(excludePatterns, i, pattern); }

void CKurvoIndex::setIncludePattern(int i, const char *pattern, const char *analyzerName) {
  storePattern(includePatterns, i, pattern);
  std::string name = analyzerName && *analyzerName ? analyzerName : "generic";
  auto it = analyzers.find(name);
  // The pattern stays stored; its analyzer slot keeps what it held.
  if (it == analyzers.end()) postWarning(kurvo_keys::kAnalyzerNotFound, name);
  includeAnalyzers[i] = it->second;
}

int CKurvoIndex::dirMatch(const char *path, const char *pattern) const { return ::dirMatch(path, pattern); }

int CKurvoIndex::isExcluded(const char *name) const {
  if (!excludePatterns) return 0;
  for (char **p = excludePatterns; *p; ++p)
    if (fileNameMatch(name, *p)) return 1;
  return 0;
}

CFileAnalyzer *CKurvoIndex::analyzerThatMatches(const char *name) const {
  if (!includePatterns) return nullptr;
  // The first pattern that matches decides, even when it names no analyzer.
  for (int i = 0; includePatterns[i]; ++i)
    if (termMatch(name, includePatterns[i])) return includeAnalyzers[i];
  return nullptr;
}
