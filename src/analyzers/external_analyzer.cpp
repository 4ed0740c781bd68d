// CExternalAnalyzer: building and running the converter's command, then handing its output on.
#include "analyzers/external_analyzer.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "analyzers/member_records.h"
#include "analyzers/converter_process.h"
#include "index/kurvo_index.h"

namespace {

constexpr size_t kTemporaryPathSize = 1024;
// Longest command handed to the shell.
constexpr size_t kMaxCommandLength = 32768;

char *copyOf(const char *text, size_t length) {
  char *copy = static_cast<char *>(std::malloc(length + 1));
  if (!copy) return nullptr;
  std::memcpy(copy, text, length);
  copy[length] = '\0';
  return copy;
}

char *emptyBlock() {
  char *block = static_cast<char *>(std::malloc(1));
  if (block) block[0] = '\0';
  return block;
}

// Quotes the user put around a placeholder ("%i" or '%o') are dropped: the
// path gets quoting of its own.
void dropQuotesAround(std::string &before, std::string &after) {
  if (before.empty() || after.empty()) return;
  const char quote = before.back();
  if ((quote == '"' || quote == '\'') && after.front() == quote) {
    before.pop_back();
    after.erase(0, 1);
  }
}

}  // namespace

CExternalAnalyzer::CExternalAnalyzer(CKurvoIndex *index, const char *extension, char *commandTemplate)
    : CFileAnalyzer(index), m_pExtension(copyOf(extension, std::strlen(extension))) {
  char *pieceStart = commandTemplate;
  int found = 0;
  for (char *p = commandTemplate; *p && found < 2; ++p) {
    if (p[0] != '%' || (p[1] != 'i' && p[1] != 'o')) continue;
    *p = '\0';
    m_pPieces[found++] = copyOf(pieceStart, static_cast<size_t>(p - pieceStart));
    m_cLastPlaceholder = p[1];
    pieceStart = p + 2;
    ++p;
  }
  if (found == 2) m_pPieces[2] = copyOf(pieceStart, std::strlen(pieceStart));
}

CExternalAnalyzer::~CExternalAnalyzer() {
  std::free(m_pExtension);
  for (char *piece : m_pPieces) std::free(piece);
}

bool CExternalAnalyzer::canUseIndexBuffer() { return false; }

char *CExternalAnalyzer::makeTemporaryPath(const char *sourcePath, char *out, unsigned long fileNumber) {
  std::snprintf(out, kTemporaryPathSize, "%s%c%d", m_pIndex->temporaryDirectory.c_str(), '/',
                static_cast<int>(fileNumber));
  size_t used = std::strlen(out);
  const char *extension = m_pExtension ? m_pExtension : "";
  if (std::strncmp(extension, "...", 3) == 0) {
    // The inner extension: from the name's first dot up to its last.
    const char *slash = std::strrchr(sourcePath, '/');
    const char *name = slash ? slash + 1 : sourcePath;
    const char *first = std::strchr(name, '.');
    const char *last = std::strrchr(name, '.');
    if (first && last > first) {
      std::snprintf(out + used, kTemporaryPathSize - used, "%.*s", static_cast<int>(last - first), first);
    }
  } else {
    std::snprintf(out + used, kTemporaryPathSize - used, ".%s", extension);
  }
  return out;
}

std::string CExternalAnalyzer::buildCommand(const char *sourcePath, const char *tempPath) const {
  // With %i before %o the source comes first and the converted file second.
  const char *first = m_cLastPlaceholder == 'o' ? sourcePath : tempPath;
  const char *second = m_cLastPlaceholder == 'i' ? sourcePath : tempPath;
  std::string pieces[3] = {m_pPieces[0], m_pPieces[1], m_pPieces[2]};
  dropQuotesAround(pieces[0], pieces[1]);
  dropQuotesAround(pieces[1], pieces[2]);
  return pieces[0] + shellQuoted(first) + pieces[1] + shellQuoted(second) + pieces[2];
}

bool CExternalAnalyzer::createTemporaryFile(const char *sourcePath, const char *tempPath) {
  if (!isUsable() || !m_pIndex->analyzerThatMatches(tempPath)) return false;
  const std::string command = buildCommand(sourcePath, tempPath);
  if (command.size() > kMaxCommandLength) return false;
  const ConverterResult result = runConverter(command, m_pIndex->ConverterTimeLimit, m_pIndex->ConverterOutputLimit);
  if (result == ConverterResult::TimedOut) {
    // What a stopped converter left is not the document.
    std::remove(tempPath);
    return false;
  }
  return result == ConverterResult::Finished;
}

bool CExternalAnalyzer::indexFile(const char *path, unsigned long fileNumber) {
  // Converters whose output goes to a converter again count as nested
  // archives, so that a cycle of them ends.
  ArchiveLevel level(*m_pIndex, path);
  if (level.tooDeep()) return false;
  char tempPath[kTemporaryPathSize];
  makeTemporaryPath(path, tempPath, fileNumber);
  if (!createTemporaryFile(path, tempPath)) return false;
  CFileAnalyzer *analyzer = m_pIndex->analyzerThatMatches(tempPath);
  if (!analyzer) return false;
  const bool result = analyzer->indexFile(tempPath, fileNumber);
  // Output that analyzers read from memory is kept for the viewer.
  if (!analyzer->canUseIndexBuffer()) std::remove(tempPath);
  return result;
}

char *CExternalAnalyzer::fillDisplayBuffer(const char *path, unsigned long fileNumber, unsigned long maxLength,
                                           int wrapWidth, bool displayFlag) {
  ArchiveLevel level(*m_pIndex, path);
  if (level.tooDeep()) return emptyBlock();
  char tempPath[kTemporaryPathSize];
  makeTemporaryPath(path, tempPath, fileNumber);
  if (access(tempPath, F_OK) != 0 && !createTemporaryFile(path, tempPath)) return emptyBlock();
  CFileAnalyzer *analyzer = m_pIndex->analyzerThatMatches(tempPath);
  if (!analyzer) return emptyBlock();
  return analyzer->fillDisplayBuffer(tempPath, fileNumber, maxLength, wrapWidth, displayFlag);
}
