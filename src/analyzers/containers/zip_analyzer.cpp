// CZipAnalyzer: walking a ZIP archive's members, and copying one member out.
#include "analyzers/containers/zip_analyzer.h"

#include <minizip/unzip.h>

#include <cstdio>
#include <cstring>
#include <ctime>
#include <memory>

#include "analyzers/member_records.h"
#include "index/kurvo_index.h"

namespace {

constexpr unsigned kChunkSize = 65535;
constexpr unsigned kNameSize = 256;

// minizip does not open an archive that is nothing but its end record (no
// members), which is what ZIP writers make of an empty archive.
bool isEmptyArchive(const char *path) {
  unsigned char record[23];
  FILE *file = std::fopen(path, "rb");
  if (!file) return false;
  const size_t got = std::fread(record, 1, sizeof record, file);
  std::fclose(file);
  return got == 22 && std::memcmp(record, "PK\x05\x06", 4) == 0 && record[10] == 0 && record[11] == 0;
}

// The member's date as local calendar time, with the daylight-saving flag of now.
time_t memberTime(const tm_unz &date) {
  const time_t now = std::time(nullptr);
  struct tm local {};
  localtime_r(&now, &local);
  local.tm_sec = static_cast<int>(date.tm_sec);
  local.tm_min = static_cast<int>(date.tm_min);
  local.tm_hour = static_cast<int>(date.tm_hour);
  local.tm_mday = static_cast<int>(date.tm_mday);
  local.tm_mon = static_cast<int>(date.tm_mon);
  local.tm_year = static_cast<int>(date.tm_year) - 1900;
  return std::mktime(&local);
}

// Copies the open member into path; false when the file cannot be created or written.
// lastRead is the last read's result: 0 at the member's clean end, negative
// after a decompression or write error.
// A member cut at the unpacking bounds ends there as if cleanly.
bool copyMember(CKurvoIndex &index, unzFile archive, const char *path, char *chunk, int &lastRead,
                ArchiveLevel &level) {
  lastRead = -1;
  FILE *out = std::fopen(path, "wb");
  if (!out) return false;
  uint64_t copied = 0;
  while ((lastRead = unzReadCurrentFile(archive, chunk, kChunkSize)) > 0) {
    const size_t keep = static_cast<size_t>(level.allow(copied, static_cast<uint64_t>(lastRead)));
    if (std::fwrite(chunk, 1, keep, out) != keep) {
      lastRead = -1;
      break;
    }
    copied += keep;
    if (keep < static_cast<size_t>(lastRead)) {
      lastRead = 0;
      break;
    }
  }
  return closeTempFile(index, out, path);
}

}  // namespace

bool CZipAnalyzer::canUseIndexBuffer() { return false; }

bool CZipAnalyzer::indexFile(const char *path, unsigned long fileNumber) {
  CKurvoIndex &index = *m_pIndex;
  const uint32_t archiveId = static_cast<uint32_t>(fileNumber);
  ArchiveLevel level(index, path);
  if (level.tooDeep()) return true;
  unzFile archive = unzOpen(path);
  if (!archive) return isEmptyArchive(path);
  unz_global_info global{};
  if (unzGetGlobalInfo(archive, &global) != UNZ_OK) {
    unzClose(archive);
    return false;
  }
  std::unique_ptr<char[]> chunk(new char[kChunkSize + 1]);

  for (uLong i = 0; i < global.number_entry;) {
    unz_file_info info{};
    char name[kNameSize];
    if (unzGetCurrentFileInfo(archive, &info, name, sizeof name, nullptr, 0, nullptr, 0) != UNZ_OK) {
      unzClose(archive);
      return false;
    }
    const char *baseName = memberBaseName(name);
    CFileAnalyzer *analyzer = nullptr;
    const time_t time = *baseName ? memberTime(info.tmu_date) : 0;
    const bool visit = *baseName && !memberUnchanged(index, name, archiveId, time);
    if (visit) analyzer = memberAnalyzer(index, baseName);
    if (visit && (analyzer || index.TrackAll)) {
      const uint32_t member = recordMember(index, name, archiveId, static_cast<int32_t>(time),
                                           static_cast<uint32_t>(info.uncompressed_size));
      if (analyzer) {
        if (unzOpenCurrentFile(archive) != UNZ_OK) {
          // The member is met again on every remaining pass, so the members
          // after one that cannot be opened are not reached: kept as
          // existing indexes have it.
          ++i;
          continue;
        }
        if (!analyzer->canUseIndexBuffer()) {
          const std::string temp = memberTempPath(index, member, baseName);
          int lastRead = 0;
          if (copyMember(index, archive, temp.c_str(), chunk.get(), lastRead, level) && lastRead == 0)
            analyzer->indexFile(temp.c_str(), member);
          std::remove(temp.c_str());
        } else {
          const unsigned long maxRead = index.MaxPerFileRead > 0 ? static_cast<unsigned long>(index.MaxPerFileRead) : 0;
          unsigned long total = 0;
          bool first = true;
          while (total < maxRead) {
            const unsigned long room = maxRead - total < kChunkSize ? maxRead - total : kChunkSize;
            const int got = unzReadCurrentFile(archive, chunk.get(), static_cast<unsigned>(room));
            if (got <= 0) break;
            total += static_cast<unsigned long>(got);
            indexMemberPiece(index, *analyzer, chunk.get(), static_cast<unsigned long>(got), member, first);
            index.BytesRead += got;
            index.reportBytesRead(path);
            first = false;
          }
          index.partialWord[0] = '\0';
          ++index.ContentsIndexed;
        }
        unzCloseCurrentFile(archive);
      }
    }
    ++i;
    if (i < global.number_entry && unzGoToNextFile(archive) != UNZ_OK) {
      unzClose(archive);
      return false;
    }
  }
  unzClose(archive);
  return true;
}

bool CZipAnalyzer::extractToTempFile(const char *archivePath, const char *memberName, const char *tempPath,
                                     unsigned long) {
  unzFile archive = unzOpen(archivePath);
  if (!archive) return false;
  ArchiveLevel level(*m_pIndex, archivePath);
  if (unzLocateFile(archive, memberName, 0) != UNZ_OK || unzOpenCurrentFile(archive) != UNZ_OK) {
    unzClose(archive);
    return false;
  }
  std::unique_ptr<char[]> chunk(new char[kChunkSize + 1]);
  // A read error midway still counts as extracted: the file exists.
  int lastRead = 0;
  const bool created = copyMember(*m_pIndex, archive, tempPath, chunk.get(), lastRead, level);
  unzCloseCurrentFile(archive);
  unzClose(archive);
  return created;
}
