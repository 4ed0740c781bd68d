// A growable byte region kept in one storage file through a shared mapping.
#include "storage/file_memory.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <vector>

#include "report/message_keys.h"
#include "report/reporting.h"
#include "storage/byte_io.h"

namespace {

constexpr uint32_t kHeaderSize = 16;

std::string decimal(uint64_t value) {
  char text[32];
  std::snprintf(text, sizeof text, "%llu", static_cast<unsigned long long>(value));
  return text;
}

}  // namespace

CFileMemory::CFileMemory(const std::string &path) : m_sStoragePath(path) {
  if (!openForRead()) return;
  m_nLength = load32(m_pBase);
  m_nUsed = load32(m_pBase + 4);
  m_nInitialSize = load32(m_pBase + 8);
  m_nIncrement = load32(m_pBase + 12);
  // A header that claims more than the mapping holds would let later reads
  // run off the end of the mapping: treat such a file as unreadable.
  if (m_nUsed < kHeaderSize || m_nUsed > m_nLength) clearAll();
}

CFileMemory::CFileMemory(const std::string &path, uint32_t initialSize, uint32_t increment)
    : m_nInitialSize(initialSize), m_nIncrement(increment), m_sStoragePath(path) {
  getNewSpace(kHeaderSize);
  writeHeader();
}

CFileMemory::~CFileMemory() {
  try {
    clearAll();
  } catch (int) {
    // The host has been told through the error callback; a destructor must
    // not throw.
  }
}

uint32_t CFileMemory::getSpaceSlowly(uint32_t size) {
  if (size > m_nIncrement && !m_bGrowByRequest) throwKurvoError(kurvo_keys::kGetHugeSpace, decimal(size));
  uint32_t offset = m_nUsed;
  uint64_t end = static_cast<uint64_t>(offset) + size;
  // Records are written in place right after allocation, so a region that
  // was reopened read-only must become writable before it hands out space.
  if (m_bMapped && !m_bWritable) enableWrite();
  if (end > m_nLength || !m_bMapped) grow(static_cast<uint32_t>(end > m_nLength ? end : m_nLength));
  m_nUsed = static_cast<uint32_t>(end);
  return offset;
}

// Gives the file its new length with its blocks reserved, so that a full
// disk fails here rather than as a fault when the mapping is written.
bool CFileMemory::reserve(uint32_t oldLength, uint64_t newLength) {
  if (newLength > oldLength) {
    const int result =
        posix_fallocate(m_nFileDescriptor, static_cast<off_t>(oldLength), static_cast<off_t>(newLength - oldLength));
    if (result == 0) return true;
    // File systems that cannot reserve blocks are only extended.
    if (result != EOPNOTSUPP && result != EINVAL) return false;
  }
  return ftruncate(m_nFileDescriptor, static_cast<off_t>(newLength)) == 0;
}

void CFileMemory::grow(uint32_t needed) {
  // A writable mapping is extended where it is, so the pages it has mapped
  // stay mapped and what was written before does not fault in again.
  const bool extend = m_bMapped && m_bWritable && m_bFileOpen;
  if (m_bMapped && !extend) dropMapping();
  if (!m_bFileOpen) {
    m_nFileDescriptor = open(m_sStoragePath.c_str(), O_RDWR | O_CREAT, 0600);
    if (m_nFileDescriptor < 0) throwKurvoError(kurvo_keys::kMemFileOpenFail, m_sStoragePath);
    m_bFileOpen = 1;
  }
  uint32_t oldLength = m_nLength;
  // Bytes the file already holds past the region (a file reused for a new
  // table) must be cleared; what reserving adds reads as zero already.
  struct stat info;
  const uint64_t fileSize = fstat(m_nFileDescriptor, &info) == 0 ? static_cast<uint64_t>(info.st_size) : UINT64_MAX;
  uint64_t newLength;
  if (m_nLength == 0)
    newLength = m_nInitialSize;
  else if (m_nLength < m_nIncrement)
    newLength = 2ull * m_nLength;
  else
    newLength = static_cast<uint64_t>(m_nLength) + m_nIncrement;
  if (needed > newLength) newLength = needed;
  if (newLength > UINT32_MAX || !reserve(oldLength, newLength)) {
    std::string size = decimal(newLength);
    if (m_bMapped) dropMapping();
    clearAll();
    throwKurvoError(kurvo_keys::kMemFileExtendFail, size);
  }
  void *base = extend ? mremap(m_pBase, m_nLength, newLength, MREMAP_MAYMOVE)
                      : mmap(nullptr, newLength, PROT_READ | PROT_WRITE, MAP_SHARED, m_nFileDescriptor, 0);
  if (base == MAP_FAILED) {
    std::string path = m_sStoragePath;
    if (m_bMapped) dropMapping();
    clearAll();
    throwKurvoError(kurvo_keys::kFileMapOpenRWFail, path);
  }
  m_pBase = static_cast<char *>(base);
  m_nLength = static_cast<uint32_t>(newLength);
  m_bWritable = 1;
  m_bMapped = 1;
  const uint64_t stale = std::min<uint64_t>(fileSize, m_nLength);
  if (stale > oldLength) std::memset(m_pBase + oldLength, 0, stale - oldLength);
  writeZeros(std::max<uint64_t>(oldLength, stale));
  populate(oldLength);
}

// The file past its old size reads as zero already; writing those zeros
// puts its pages in the page cache at a fraction of the cost of faulting
// them in through the mapping, which reads each one first. Only a speed-up:
// a failed write leaves the pages to fault in.
void CFileMemory::writeZeros(uint64_t from) {
  static const std::vector<char> zeros(256 << 10, 0);
  for (uint64_t at = from; at < m_nLength;) {
    const size_t n = static_cast<size_t>(std::min<uint64_t>(zeros.size(), m_nLength - at));
    const ssize_t written = pwrite(m_nFileDescriptor, zeros.data(), n, static_cast<off_t>(at));
    if (written <= 0) return;
    at += static_cast<uint64_t>(written);
  }
}

// Regions fill from the front, so the pages a growth adds will all be
// written: they are faulted in writable at once, in one call, instead of
// one fault at a time. Kernels without the call simply fault them later.
void CFileMemory::populate(uint32_t from) {
#ifdef MADV_POPULATE_WRITE
  const uintptr_t page = static_cast<uintptr_t>(sysconf(_SC_PAGESIZE));
  const uintptr_t start = (reinterpret_cast<uintptr_t>(m_pBase) + from + page - 1) & ~(page - 1);
  const uintptr_t end = reinterpret_cast<uintptr_t>(m_pBase) + m_nLength;
  if (end > start) madvise(reinterpret_cast<void *>(start), end - start, MADV_POPULATE_WRITE);
#else
  (void)from;
#endif
}

// Unmaps the region without writing its header.
void CFileMemory::dropMapping() {
  munmap(m_pBase, m_nLength);
  m_pBase = nullptr;
  m_bMapped = 0;
}

uint32_t CFileMemory::textLength(uint32_t offset) const {
  if (!m_bMapped || offset >= m_nUsed) return kNoText;
  const void *end = std::memchr(m_pBase + offset, 0, m_nUsed - offset);
  if (!end) return kNoText;
  return static_cast<uint32_t>(static_cast<const char *>(end) - (m_pBase + offset));
}

bool CFileMemory::readLengthWord(uint32_t &length) {
  unsigned char word[4];
  if (read(m_nFileDescriptor, word, sizeof word) != static_cast<ssize_t>(sizeof word)) return false;
  length = load32(word);
  // A length beyond the file's real size would map pages that fault when
  // touched; one below the header cannot be a region at all.
  struct stat info;
  if (fstat(m_nFileDescriptor, &info) != 0) return false;
  return length >= kHeaderSize && static_cast<uint64_t>(length) <= static_cast<uint64_t>(info.st_size);
}

bool CFileMemory::openAndMap(int flags, int protection) {
  m_nFileDescriptor = open(m_sStoragePath.c_str(), flags, 0600);
  if (m_nFileDescriptor < 0) return false;
  m_bFileOpen = 1;
  uint32_t length = 0;
  if (!readLengthWord(length)) {
    closeFile();
    return false;
  }
  void *base = mmap(nullptr, length, protection, MAP_SHARED, m_nFileDescriptor, 0);
  if (base == MAP_FAILED) {
    closeFile();
    throwKurvoError(kurvo_keys::kFileMapWriteFail, m_sStoragePath);
  }
  m_pBase = static_cast<char *>(base);
  m_nLength = length;
  m_bMapped = 1;
  m_pHeader = m_pBase;
  return true;
}

bool CFileMemory::openForRead() {
  if (m_bWritable) return disableWrite();
  return openAndMap(O_RDONLY, PROT_READ);
}

bool CFileMemory::openForWrite() {
  if (!openAndMap(O_RDWR | O_CREAT, PROT_READ | PROT_WRITE)) return false;
  m_bWritable = 1;
  return true;
}

bool CFileMemory::enableWrite() {
  if (!m_bMapped || !m_bFileOpen) return false;
  munmap(m_pBase, m_nLength);
  m_pBase = nullptr;
  m_pHeader = nullptr;
  m_bMapped = 0;
  closeFile();
  if (openForWrite()) return true;
  disableWrite();
  return false;
}

bool CFileMemory::disableWrite() {
  if (m_bMapped) {
    if (m_bWritable) writeHeader();
    munmap(m_pBase, m_nLength);
    m_pBase = nullptr;
    m_pHeader = nullptr;
    m_bWritable = 0;
    m_bMapped = 0;
  }
  if (m_bFileOpen) closeFile();
  return openForRead();
}

void CFileMemory::clearAll() {
  if (m_bMapped) {
    if (m_bWritable) writeHeader();
    if (munmap(m_pBase, m_nLength) != 0) throwKurvoError(kurvo_keys::kUnmapFail, m_sStoragePath);
    m_bMapped = 0;
    m_bWritable = 0;
  }
  m_pBase = nullptr;
  m_nLength = 0;
  m_nUsed = 0;
  if (m_bFileOpen) closeFile();
  m_sStoragePath.clear();
  m_pHeader = nullptr;
}

CFileMemory::Handover CFileMemory::handOver() {
  const Handover region{m_bMapped ? m_pBase : nullptr, m_bMapped ? m_nLength : 0, m_bFileOpen ? m_nFileDescriptor : -1};
  m_bMapped = 0;
  m_bWritable = 0;
  m_bFileOpen = 0;
  m_nFileDescriptor = -1;
  m_pBase = nullptr;
  m_pHeader = nullptr;
  m_nLength = 0;
  m_nUsed = 0;
  return region;
}

void CFileMemory::letGo(const Handover &region) {
  if (region.base) munmap(region.base, region.length);
  if (region.fd >= 0) close(region.fd);
}

std::string CFileMemory::getStoragePath() const { return m_sStoragePath.empty() ? std::string(".") : m_sStoragePath; }

void CFileMemory::setStoragePath(const std::string &path) { m_sStoragePath = path; }

void CFileMemory::writeHeader() {
  m_pHeader = m_pBase;
  store32(m_pHeader, m_nLength);
  store32(m_pHeader + 4, m_nUsed);
  store32(m_pHeader + 8, m_nInitialSize);
  store32(m_pHeader + 12, m_nIncrement);
}

void CFileMemory::closeFile() {
  close(m_nFileDescriptor);
  m_nFileDescriptor = -1;
  m_bFileOpen = 0;
}
