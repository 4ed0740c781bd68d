// CFileAnalyzer: cuts a file into words for the index and into display text.
#include "analyzers/file_analyzer.h"

#include <cstdlib>

#include "index/kurvo_index.h"

CFileAnalyzer::CFileAnalyzer(CKurvoIndex *index) : m_pIndex(index) {}

CFileAnalyzer::~CFileAnalyzer() = default;

bool CFileAnalyzer::canUseIndexBuffer() { return true; }

int CFileAnalyzer::indexBuffer(char *, unsigned long, unsigned long, bool) { return 0; }

bool CFileAnalyzer::indexFile(const char *, unsigned long) { return false; }

void CFileAnalyzer::convertRawBuffer(char *, unsigned long) {}

bool CFileAnalyzer::extractToTempFile(const char *, const char *, const char *, unsigned long) {
  return false;
}

char *CFileAnalyzer::fillDisplayBuffer(const char *, unsigned long, unsigned long, int, bool) {
  char *block = static_cast<char *>(std::malloc(1));
  if (block) block[0] = '\0';
  return block;
}

unsigned long CFileAnalyzer::stripBuffer(char *, unsigned long, char *output, unsigned long outputSize,
                                         int, bool, bool, int *) {
  if (outputSize) output[0] = '\0';
  return 0;
}

bool CFileAnalyzer::checkIndexCharacter(char *, char **, char **, char **, char **, unsigned long) {
  return false;
}

bool CFileAnalyzer::checkStripCharacter(unsigned char *, char **, unsigned long *, char, bool, int *) {
  return false;
}
