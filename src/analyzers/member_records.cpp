// Member names, records, analyzers and temporary copies for the container analyzers.
#include "analyzers/member_records.h"

#include <cstdio>
#include <cstring>

#include "analyzers/file_analyzer.h"
#include "report/message_keys.h"
#include "report/reporting.h"
#include "index/kurvo_index.h"

const char *memberBaseName(const char *name) {
  const char *base = name;
  for (const char *p = name; *p; ++p) {
    if (*p == '/' || *p == '\\') base = p + 1;
  }
  return base;
}

CFileAnalyzer *memberAnalyzer(CKurvoIndex &index, const char *baseName) {
  CFileAnalyzer *analyzer = index.analyzerThatMatches(baseName);
  return analyzer && index.isExcluded(baseName) ? nullptr : analyzer;
}

uint32_t recordMember(CKurvoIndex &index, const char *fullName, uint32_t parent, int32_t time, uint32_t size) {
  uint32_t record = index.files->lookupFile(fullName, parent);
  if (!record) {
    ++index.FilesIndexed;
    record = index.files->addFile(fullName);
  }
  char *data = index.files->getData(record);
  if (!data) throwKurvoError(kurvo_keys::kAssertionFailed, fullName);
  file_record::setParent(data, parent);
  file_record::setTime(data, time);
  file_record::setSize(data, size);
  file_record::setAttributes(data, 0);
  return record;
}

bool memberUnchanged(CKurvoIndex &index, const char *fullName, uint32_t parent, int64_t time) {
  return index.IsUpdate && index.files->lookupFile(fullName, parent) != 0 && time <= index.TimeBase;
}

std::string memberTempPath(CKurvoIndex &index, uint32_t member, const char *baseName) {
  char path[1024];
  std::snprintf(path, sizeof path, "%s%c%d%s", index.temporaryDirectory.c_str(), '/', static_cast<int>(member),
                baseName);
  return path;
}

bool closeTempFile(CKurvoIndex &index, FILE *out, const char *path) {
  const bool written = std::ferror(out) == 0;
  if (std::fclose(out) == 0 && written) return true;
  std::remove(path);
  index.reportSkipped("write", path);
  return false;
}

ArchiveLevel::ArchiveLevel(CKurvoIndex &index, const char *archivePath) : m_index(index), m_path(archivePath) {
  if (index.ArchiveDepth++ == 0) {
    index.ArchiveBytes = 0;
    index.ArchiveLimitReported = false;
  }
  if (index.ArchiveDepth > index.ArchiveDepthLimit) {
    m_tooDeep = true;
    if (!index.ArchiveLimitReported) setStatus(kurvo_keys::kArchiveTooDeep, archivePath);
    index.ArchiveLimitReported = true;
  }
}

ArchiveLevel::~ArchiveLevel() { --m_index.ArchiveDepth; }

uint64_t ArchiveLevel::allow(uint64_t memberSoFar, uint64_t bytes) {
  const uint64_t memberLimit = m_index.ArchiveMemberLimit, totalLimit = m_index.ArchiveTotalLimit;
  const uint64_t memberRoom = memberSoFar < memberLimit ? memberLimit - memberSoFar : 0;
  const uint64_t archiveRoom = m_index.ArchiveBytes < totalLimit ? totalLimit - m_index.ArchiveBytes : 0;
  uint64_t allowed = bytes;
  if (allowed > memberRoom) allowed = memberRoom;
  if (allowed > archiveRoom) allowed = archiveRoom;
  if (allowed < bytes && !m_index.ArchiveLimitReported) {
    setStatus(kurvo_keys::kArchiveTooLarge, m_path);
    m_index.ArchiveLimitReported = true;
  }
  m_index.ArchiveBytes += allowed;
  return allowed;
}

void indexMemberPiece(CKurvoIndex &index, CFileAnalyzer &analyzer, char *buffer, unsigned long length, uint32_t member,
                      bool firstPiece) {
  index.partialWord[0] = '\0';
  buffer[length] = '\0';
  analyzer.indexBuffer(buffer, length, member, firstPiece);
}
