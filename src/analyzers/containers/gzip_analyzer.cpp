// CGZipAnalyzer: the inner name, unpacking through zlib's gzip reader, and the inner record.
#include "analyzers/containers/gzip_analyzer.h"

#include <zlib.h>

#include <cstdio>
#include <cstring>
#include <memory>

#include "analyzers/member_records.h"
#include "index/kurvo_index.h"

namespace {

constexpr unsigned kChunkSize = 65535;

// Unpacks the whole of gz into path; false when path cannot be created or written.
// An error in the compressed data ends the copy like its end does.
// What lies past the unpacking bounds is left out.
bool unpack(CKurvoIndex &index, gzFile gz, const char *path, uint32_t &bytes, ArchiveLevel &level) {
  FILE *out = std::fopen(path, "wb");
  if (!out) return false;
  std::unique_ptr<char[]> chunk(new char[kChunkSize]);
  bytes = 0;
  uint64_t copied = 0;
  int got;
  while ((got = gzread(gz, chunk.get(), kChunkSize)) > 0) {
    const size_t keep = static_cast<size_t>(level.allow(copied, static_cast<uint64_t>(got)));
    std::fwrite(chunk.get(), 1, keep, out);
    copied += keep;
    bytes += static_cast<uint32_t>(keep);
    if (keep < static_cast<size_t>(got)) break;
  }
  return closeTempFile(index, out, path);
}

}  // namespace

std::string CGZipAnalyzer::innerName(const char *path) {
  const char *base = memberBaseName(path);
  // The dot is looked for over the whole path, as existing indexes have it.
  const char *dot = std::strrchr(path, '.');
  std::string name = dot && dot >= base ? std::string(base, dot) : std::string(base);
  if (dot && std::strcmp(dot, ".tgz") == 0) name += ".tar";
  return name;
}

bool CGZipAnalyzer::canUseIndexBuffer() { return false; }

bool CGZipAnalyzer::indexFile(const char *path, unsigned long fileNumber) {
  CKurvoIndex &index = *m_pIndex;
  const uint32_t fileId = static_cast<uint32_t>(fileNumber);
  if (!*memberBaseName(path)) return false;
  ArchiveLevel level(index, path);
  if (level.tooDeep()) return true;
  const std::string inner = innerName(path);
  CFileAnalyzer *analyzer = memberAnalyzer(index, inner.c_str());
  if (!analyzer && !index.TrackAll) return true;

  const char *outer = index.files->getData(fileId);
  const int32_t time = outer ? file_record::time(outer) : 0;
  const uint32_t innerId = recordMember(index, inner.c_str(), fileId, time, 0);
  if (!analyzer) return true;

  const std::string temp = memberTempPath(index, innerId, inner.c_str());
  gzFile gz = gzopen(path, "rb");
  if (!gz) return false;
  uint32_t bytes = 0;
  if (unpack(index, gz, temp.c_str(), bytes, level)) {
    if (char *data = index.files->getData(innerId)) file_record::setSize(data, bytes);
    analyzer->indexFile(temp.c_str(), innerId);
    std::remove(temp.c_str());
  }
  gzclose(gz);
  return true;
}

bool CGZipAnalyzer::extractToTempFile(const char *archivePath, const char *, const char *tempPath, unsigned long) {
  gzFile gz = gzopen(archivePath, "rb");
  if (!gz) return false;
  ArchiveLevel level(*m_pIndex, archivePath);
  uint32_t bytes = 0;
  const bool created = unpack(*m_pIndex, gz, tempPath, bytes, level);
  gzclose(gz);
  return created;
}
