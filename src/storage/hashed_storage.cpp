// The hashed entry layout shared by the word tables and the file table.
#include "storage/hashed_storage.h"

#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>

#include "report/message_keys.h"
#include "report/reporting.h"
#include "storage/byte_io.h"
#include "storage/description_io.h"
#include "storage/lower_case_table.h"

namespace {

constexpr uint32_t kFirstEntry = 16;
// No real table comes near this many buckets; a larger count in a summary
// file means the file is damaged.
constexpr uint32_t kMaxBuckets = 1u << 28;

// ASCII letters only, whatever locale the host has set: the same index
// must match the same words everywhere.
unsigned char asciiLower(unsigned char c) { return c >= 'A' && c <= 'Z' ? static_cast<unsigned char>(c + 32) : c; }

}  // namespace

bool storeHashEntries(FILE *stream, uint32_t count, const uint32_t *buckets) {
  if (!writeWord(stream, kHashEntriesMagic) || !writeWord(stream, count)) return false;
  return count == 0 || std::fwrite(buckets, 4, count, stream) == count;
}

bool readHashHeader(FILE *stream, uint32_t &count) {
  uint32_t magic = 0;
  return readWord(stream, magic) && magic == kHashEntriesMagic && readWord(stream, count) && count <= kMaxBuckets;
}

namespace {

// Bucket arrays this large are mapped from the summary file rather than read:
// a query then touches only the pages of the buckets it looks in, where a
// read would fault in and copy all of them. The mapping is private, so
// changes stay in memory. Null when the stream is no plain file that holds them.
uint32_t *mapBuckets(FILE *stream, uint32_t count, void *&map, size_t &length) {
  constexpr uint64_t kMapFrom = 64 * 1024;
  const uint64_t bytes = static_cast<uint64_t>(count) * 4;
  const off_t offset = ftello(stream);
  const int fd = fileno(stream);
  struct stat info;
  if (bytes < kMapFrom || offset < 0 || offset % 4 != 0 || fd < 0 || fstat(fd, &info) != 0 || !S_ISREG(info.st_mode) ||
      static_cast<uint64_t>(info.st_size) < static_cast<uint64_t>(offset) + bytes)
    return nullptr;
  const off_t start = offset - offset % static_cast<off_t>(sysconf(_SC_PAGESIZE));
  length = static_cast<size_t>(static_cast<uint64_t>(offset - start) + bytes);
  map = mmap(nullptr, length, PROT_READ | PROT_WRITE, MAP_PRIVATE, fd, start);
  if (map == MAP_FAILED || fseeko(stream, offset + static_cast<off_t>(bytes), SEEK_SET) != 0) {
    if (map != MAP_FAILED) munmap(map, length);
    map = nullptr;
    return nullptr;
  }
  return reinterpret_cast<uint32_t *>(static_cast<char *>(map) + (offset - start));
}

}  // namespace

uint32_t textHash(const char *text) {
  uint32_t h = 0;
  for (const unsigned char *p = reinterpret_cast<const unsigned char *>(text); *p; ++p) {
    signed char folded = static_cast<signed char>(lowerCase(*p));
    if (folded == 0) break;
    h = h * 33 + static_cast<uint32_t>(static_cast<int32_t>(folded));
  }
  return h;
}

uint32_t hashText(const char *text, uint32_t bucketCount) { return bucketCount ? textHash(text) % bucketCount : 0; }

CHashedStorage::CHashedStorage(const std::string &path, uint32_t initialSize, uint32_t increment, uint32_t prefixSize,
                               uint32_t bucketCount)
    : CFileMemory(path, initialSize, increment), m_nPrefixSize(prefixSize) {
  resetBuckets(bucketCount);
}

CHashedStorage::CHashedStorage(const std::string &path) : CFileMemory(path) {}

CHashedStorage::~CHashedStorage() { releaseBuckets(); }

void CHashedStorage::releaseBuckets() {
  if (m_bucketMap)
    munmap(m_bucketMap, m_bucketMapLength);
  else
    delete[] m_pBuckets;
  m_bucketMap = nullptr;
  m_pBuckets = nullptr;
}

void CHashedStorage::keepBucketsInMemory() {
  if (!m_bucketMap) return;
  uint32_t *owned = new uint32_t[m_nBucketCount ? m_nBucketCount : 1];
  std::memcpy(owned, m_pBuckets, static_cast<size_t>(m_nBucketCount) * 4);
  releaseBuckets();
  m_pBuckets = owned;
}

void CHashedStorage::failOpen(const std::string &path) {
  releaseBuckets();
  m_nBucketCount = 0;
  throwKurvoError(kurvo_keys::kStorageReadError, path);
}

uint32_t CHashedStorage::getFirst() const {
  uint32_t first = kFirstEntry + m_nPrefixSize;
  return first < getUsed() ? first : 0;
}

uint32_t CHashedStorage::getNext(uint32_t textOffset) const {
  uint32_t length = textLength(textOffset);
  if (length == kNoText) return 0;
  uint64_t next = static_cast<uint64_t>(textOffset) + length + 1 + m_nPrefixSize;
  return next < getUsed() ? static_cast<uint32_t>(next) : 0;
}

uint32_t CHashedStorage::entryAppendedAt(uint32_t usedBytes) const {
  const uint64_t entry = static_cast<uint64_t>(usedBytes) + m_nPrefixSize;
  if (usedBytes < kFirstEntry || entry >= getUsed()) return 0;
  return textLength(static_cast<uint32_t>(entry)) == kNoText ? 0 : static_cast<uint32_t>(entry);
}

char *CHashedStorage::getText(uint32_t textOffset) const {
  if (textLength(textOffset) == kNoText) return nullptr;
  return getPointer(textOffset);
}

CHashedStorage::TextMatch CHashedStorage::matchText(uint32_t textOffset, const char *text, size_t size) const {
  if (!m_bMapped || textOffset >= m_nUsed) return TextMatch::Damaged;
  const unsigned char *stored = reinterpret_cast<const unsigned char *>(m_pBase) + textOffset;
  const unsigned char *wanted = reinterpret_cast<const unsigned char *>(text);
  // Words are looked up as they were stored, so most matches are exact.
  if (size <= m_nUsed - textOffset && std::memcmp(stored, wanted, size) == 0) return TextMatch::Equal;
  for (uint32_t i = 0; i < m_nUsed - textOffset; ++i) {
    if (stored[i] != wanted[i] && asciiLower(stored[i]) != asciiLower(wanted[i]))
      return textLength(textOffset + i) == kNoText ? TextMatch::Damaged : TextMatch::Different;
    if (stored[i] == 0) return TextMatch::Equal;
  }
  return TextMatch::Damaged;
}

uint32_t CHashedStorage::appendEntry(const char *text) {
  uint32_t length = static_cast<uint32_t>(std::strlen(text));
  uint32_t textOffset = getNewSpace(length + 1 + m_nPrefixSize) + m_nPrefixSize;
  std::memcpy(getPointer(textOffset), text, length + 1);
  return textOffset;
}

void CHashedStorage::linkEntry(uint32_t hash, uint32_t textOffset) {
  const uint32_t bucket = bucketOf(hash);
  uint32_t &head = m_pBuckets[bucket];
  if (m_tails.size() != m_nBucketCount) m_tails.assign(m_nBucketCount, 0);
  uint32_t &tail = m_tails[bucket];
  if (head == 0) {
    head = tail = textOffset;
    return;
  }
  // The known tail still ends the chain unless the file was changed behind
  // our back; then the chain is walked as before.
  if (tail != 0 && load32(nextWord(tail)) == 0) {
    store32(nextWord(tail), textOffset);
    tail = textOffset;
    return;
  }
  uint32_t current = head;
  for (uint32_t steps = 0;; ++steps) {
    checkSteps(steps);
    char *word = nextWord(current);
    uint32_t following = load32(word);
    if (following == 0) {
      store32(word, textOffset);
      tail = textOffset;
      return;
    }
    current = following;
  }
}

void CHashedStorage::resetBuckets(uint32_t count) {
  releaseBuckets();
  m_pBuckets = new uint32_t[count ? count : 1]();
  m_nBucketCount = count;
  m_tails.assign(count, 0);
}

void CHashedStorage::clearNextWord(uint32_t textOffset) { store32(nextWord(textOffset), 0); }

bool CHashedStorage::readBuckets(FILE *stream) {
  releaseBuckets();
  // Tails are made when the first entry is linked: a reader never needs them.
  m_tails.clear();
  uint32_t count = 0;
  if (readHashHeader(stream, count)) {
    m_pBuckets = mapBuckets(stream, count, m_bucketMap, m_bucketMapLength);
    if (!m_pBuckets) {
      // Filled by the read, so not zeroed first.
      m_pBuckets = new uint32_t[count ? count : 1];
      m_pBuckets[0] = 0;
      if (count && std::fread(m_pBuckets, 4, count, stream) != count) releaseBuckets();
    }
  }
  m_nBucketCount = m_pBuckets ? count : 0;
  return m_pBuckets != nullptr;
}

bool CHashedStorage::storeBuckets(FILE *stream) const { return storeHashEntries(stream, m_nBucketCount, m_pBuckets); }

char *CHashedStorage::nextWord(uint32_t textOffset) const {
  if (textOffset < m_nPrefixSize || !getRange(textOffset - m_nPrefixSize, 4))
    throwKurvoError(kurvo_keys::kAssertionFailed, "");
  return getPointer(textOffset - m_nPrefixSize);
}

uint32_t CHashedStorage::nextInChain(uint32_t textOffset) const { return load32(nextWord(textOffset)); }

uint32_t CHashedStorage::bucketOf(uint32_t hash) const {
  if (m_nBucketCount == 0) throwKurvoError(kurvo_keys::kAssertionFailed, "");
  return hash % m_nBucketCount;
}

void CHashedStorage::checkSteps(uint32_t steps) const {
  if (steps > getUsed() / (m_nPrefixSize + 1)) throwKurvoError(kurvo_keys::kAssertionFailed, "");
}
