// CAutoAnalyzer: signatures, the text test and the hand-over.
#include "analyzers/auto_analyzer.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "report/message_keys.h"
#include "report/reporting.h"
#include "index/kurvo_index.h"

namespace {

// Enough to see a signature and to judge text, as grep -I and ripgrep do
// from their first read.
constexpr size_t kHeadSize = 8192;

bool startsWith(const unsigned char *head, size_t length, const char *prefix, size_t at = 0) {
  const size_t n = std::strlen(prefix);
  return length >= at + n && std::memcmp(head + at, prefix, n) == 0;
}

// ASCII case alone, whatever locale the host has set.
bool startsWithNoCase(const unsigned char *head, size_t length, const char *prefix) {
  const size_t n = std::strlen(prefix);
  if (length < n) return false;
  for (size_t i = 0; i < n; ++i)
    if ((head[i] >= 'A' && head[i] <= 'Z' ? head[i] + ('a' - 'A') : head[i]) != prefix[i]) return false;
  return true;
}

// No NUL, and control bytes other than the layout ones are rare.
bool looksLikeText(const unsigned char *head, size_t length) {
  size_t controls = 0;
  for (size_t i = 0; i < length; ++i) {
    const unsigned char c = head[i];
    if (c == 0) return false;
    if (c < 0x20 && c != '\t' && c != '\n' && c != '\r' && c != '\f' && c != '\v' && c != 0x1B) ++controls;
  }
  return controls * 10 <= length;
}

bool looksLikeHtml(const unsigned char *head, size_t length) {
  size_t at = startsWith(head, length, "\xEF\xBB\xBF") ? 3 : 0;
  // ASCII white space alone, whatever locale the host has set.
  while (at < length && (head[at] == ' ' || (head[at] >= '\t' && head[at] <= '\r'))) ++at;
  const unsigned char *tag = head + at;
  const size_t rest = length - at;
  return startsWithNoCase(tag, rest, "<!doctype html") || startsWithNoCase(tag, rest, "<html") ||
         startsWithNoCase(tag, rest, "<head") || startsWithNoCase(tag, rest, "<body");
}

bool holdsPdfMark(const unsigned char *head, size_t length) {
  const size_t window = length < 1024 ? length : 1024;  // readers allow junk before it
  for (size_t i = 0; i + 5 <= window; ++i)
    if (std::memcmp(head + i, "%PDF-", 5) == 0) return true;
  return false;
}

}  // namespace

const char *CAutoAnalyzer::kindOf(const unsigned char *head, size_t length) {
  if (startsWith(head, length, "PK\x03\x04") || startsWith(head, length, "PK\x05\x06")) return "zip";
  if (startsWith(head, length, "\x1F\x8B")) return "gzip";
  if (startsWith(head, length, "ustar", 257)) return "tar";
  if (holdsPdfMark(head, length)) return "pdf";
  if (!looksLikeText(head, length)) return nullptr;
  if (startsWith(head, length, "{\\rtf")) return "rtf";
  if (startsWith(head, length, "From ")) return "mbox";
  if (looksLikeHtml(head, length)) return "html";
  return "utf8";
}

CFileAnalyzer *CAutoAnalyzer::analyzerFor(const char *path, bool &opened) const {
  FILE *file = std::fopen(path, "rb");
  opened = file != nullptr;
  if (!file) return nullptr;
  unsigned char head[kHeadSize];
  const size_t length = std::fread(head, 1, sizeof head, file);
  std::fclose(file);
  const char *kind = kindOf(head, length);
  return kind ? m_pIndex->analyzerNamed(kind) : nullptr;
}

bool CAutoAnalyzer::canUseIndexBuffer() { return false; }

bool CAutoAnalyzer::indexFile(const char *path, unsigned long fileNumber) {
  bool opened = false;
  CFileAnalyzer *analyzer = analyzerFor(path, opened);
  return analyzer ? analyzer->indexFile(path, fileNumber) : opened;
}

char *CAutoAnalyzer::fillDisplayBuffer(const char *path, unsigned long fileNumber, unsigned long maxLength,
                                       int wrapWidth, bool displayFlag) {
  bool opened = false;
  CFileAnalyzer *analyzer = analyzerFor(path, opened);
  if (!opened) throwKurvoError(kurvo_keys::kCannotOpenContentsFile, path);
  if (analyzer) return analyzer->fillDisplayBuffer(path, fileNumber, maxLength, wrapWidth, displayFlag);
  // A file that is not text has nothing to show.
  char *empty = static_cast<char *>(std::calloc(1, 1));
  if (!empty) throwKurvoError(kurvo_keys::kNoMemory, "");
  return empty;
}

bool CAutoAnalyzer::extractToTempFile(const char *archivePath, const char *memberName, const char *tempPath,
                                      unsigned long fileNumber) {
  bool opened = false;
  CFileAnalyzer *analyzer = analyzerFor(archivePath, opened);
  return analyzer && analyzer->extractToTempFile(archivePath, memberName, tempPath, fileNumber);
}
