// CTarAnalyzer: header blocks, octal fields, block arithmetic and member copies.
#include "analyzers/containers/tar_analyzer.h"

#include <cstdio>
#include <cstring>
#include <memory>
#include <string>

#include "analyzers/member_records.h"
#include "index/kurvo_index.h"

namespace {

constexpr size_t kBlock = 512;
constexpr size_t kPiece = 65536;

// One header block with the fields kurvo uses.
struct TarHeader {
  char block[kBlock];
  std::string name;
  uint32_t size = 0;
  uint32_t mtime = 0;

  // False at the end of the archive: a short read or an empty name.
  bool read(FILE *archive);
  bool isRegularFile() const { return block[156] == '\0' || block[156] == '0'; }
  // The data with its padding to whole blocks. In unsigned 32-bit
  // arithmetic a size of 0 gives no blocks.
  uint32_t paddedSize() const { return (((size - 1) / kBlock) + 1) * static_cast<uint32_t>(kBlock); }
};

// At most 12 characters: leading non-octal characters are passed over, then
// digits are taken up to the first non-octal character.
uint32_t octalField(const char *field) {
  uint32_t value = 0;
  bool digits = false;
  for (int i = 0; i < 12; ++i) {
    const char c = field[i];
    if (c >= '0' && c <= '7') {
      value = value * 8 + static_cast<uint32_t>(c - '0');
      digits = true;
    } else if (digits) {
      break;
    }
  }
  return value;
}

bool TarHeader::read(FILE *archive) {
  if (std::fread(block, 1, kBlock, archive) != kBlock || block[0] == '\0') return false;
  // Only the name field names the member: the ustar prefix is emptied, not
  // joined, so long paths keep their last 100 bytes (as existing indexes have them).
  if (std::memcmp(block + 257, "ustar", 5) == 0) block[345] = '\0';
  name.assign(block, strnlen(block, 100));
  size = octalField(block + 124);
  mtime = octalField(block + 136);
  return true;
}

void skip(FILE *archive, uint32_t bytes) { fseeko(archive, static_cast<off_t>(bytes), SEEK_CUR); }

// Copies up to bytes from the archive to out, in pieces; stops at a short
// read. What lies past the unpacking bounds is skipped, not copied.
void copyBytes(FILE *archive, FILE *out, uint64_t bytes, char *piece, ArchiveLevel &level) {
  uint64_t copied = 0;
  while (bytes > 0) {
    const size_t want = bytes < kPiece ? static_cast<size_t>(bytes) : kPiece;
    const size_t got = std::fread(piece, 1, want, archive);
    if (got == 0) return;
    const size_t keep = static_cast<size_t>(level.allow(copied, got));
    std::fwrite(piece, 1, keep, out);
    copied += keep;
    bytes -= got;
    if (keep < got) {
      skip(archive, static_cast<uint32_t>(bytes));
      return;
    }
  }
}

}  // namespace

bool CTarAnalyzer::canUseIndexBuffer() { return false; }

bool CTarAnalyzer::indexFile(const char *path, unsigned long fileNumber) {
  CKurvoIndex &index = *m_pIndex;
  const uint32_t archiveId = static_cast<uint32_t>(fileNumber);
  ArchiveLevel level(index, path);
  if (level.tooDeep()) return true;
  FILE *archive = std::fopen(path, "rb");
  if (!archive) return false;
  std::unique_ptr<char[]> piece(new char[kPiece + 1]);
  TarHeader header;
  while (header.read(archive)) {
    const char *baseName = memberBaseName(header.name.c_str());
    if (!*baseName) continue;
    const uint32_t padded = header.paddedSize();
    CFileAnalyzer *analyzer = nullptr;
    if (!header.isRegularFile() ||
        memberUnchanged(index, header.name.c_str(), archiveId, static_cast<int32_t>(header.mtime)) ||
        (!(analyzer = memberAnalyzer(index, baseName)) && !index.TrackAll)) {
      skip(archive, padded);
      continue;
    }
    const uint32_t member =
        recordMember(index, header.name.c_str(), archiveId, static_cast<int32_t>(header.mtime), header.size);
    if (!analyzer) {
      skip(archive, padded);
      continue;
    }
    if (!analyzer->canUseIndexBuffer()) {
      const std::string temp = memberTempPath(index, member, baseName);
      // A copy that cannot be created leaves the data unread, and the next
      // header is looked for inside it: kept as existing indexes have it.
      if (FILE *out = std::fopen(temp.c_str(), "wb")) {
        copyBytes(archive, out, padded, piece.get(), level);
        if (closeTempFile(index, out, temp.c_str())) analyzer->indexFile(temp.c_str(), member);
      }
      std::remove(temp.c_str());
      continue;
    }
    // Read whole: the per-file limit bounds each piece, not the member.
    const uint32_t pieceSize = index.MaxPerFileRead > 0 && static_cast<size_t>(index.MaxPerFileRead) < kPiece
                                   ? static_cast<uint32_t>(index.MaxPerFileRead)
                                   : (index.MaxPerFileRead > 0 ? static_cast<uint32_t>(kPiece) : 0);
    uint32_t left = padded;
    bool first = true;
    while (left > 0 && pieceSize > 0) {
      size_t got = std::fread(piece.get(), 1, left < pieceSize ? left : pieceSize, archive);
      if (got == 0) break;
      left -= static_cast<uint32_t>(got);
      const size_t keep = static_cast<size_t>(level.allow(padded - left - got, got));
      if (keep < got) {
        skip(archive, left);
        left = 0;
        if (keep == 0) break;
        got = keep;
      }
      indexMemberPiece(index, *analyzer, piece.get(), got, member, first);
      index.reportBytesRead(path);
      first = false;
    }
    if (pieceSize == 0) skip(archive, left);
    index.partialWord[0] = '\0';
    ++index.ContentsIndexed;
  }
  std::fclose(archive);
  ++index.ContentsIndexed;
  return true;
}

bool CTarAnalyzer::extractToTempFile(const char *archivePath, const char *memberName, const char *tempPath,
                                     unsigned long) {
  FILE *archive = std::fopen(archivePath, "rb");
  if (!archive) return false;
  ArchiveLevel level(*m_pIndex, archivePath);
  TarHeader header;
  bool extracted = false;
  while (header.read(archive)) {
    if (header.name != memberName) {
      skip(archive, header.paddedSize());
      continue;
    }
    if (FILE *out = std::fopen(tempPath, "wb")) {
      std::unique_ptr<char[]> piece(new char[kPiece]);
      copyBytes(archive, out, header.size, piece.get(), level);
      extracted = closeTempFile(*m_pIndex, out, tempPath);
    }
    break;
  }
  std::fclose(archive);
  return extracted;
}
