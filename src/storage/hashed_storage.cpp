// The hashed entry layout shared by the word tables and the file table.
#include "storage/hashed_storage.h"

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

}  // namespace

bool storeHashEntries(FILE *stream, uint32_t count, const uint32_t *buckets) {
  if (!writeWord(stream, kHashEntriesMagic) || !writeWord(stream, count)) return false;
  return count == 0 || std::fwrite(buckets, 4, count, stream) == count;
}

uint32_t *readHashEntries(FILE *stream, uint32_t &count) {
  uint32_t magic = 0;
  if (!readWord(stream, magic) || magic != kHashEntriesMagic) return nullptr;
  if (!readWord(stream, count) || count > kMaxBuckets) return nullptr;
  // Filled by the read, so not zeroed first.
  uint32_t *buckets = new uint32_t[count ? count : 1];
  buckets[0] = 0;
  if (count && std::fread(buckets, 4, count, stream) != count) {
    delete[] buckets;
    return nullptr;
  }
  return buckets;
}

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

CHashedStorage::~CHashedStorage() { delete[] m_pBuckets; }

void CHashedStorage::failOpen(const std::string &path) {
  delete[] m_pBuckets;
  m_pBuckets = nullptr;
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
  delete[] m_pBuckets;
  m_pBuckets = new uint32_t[count ? count : 1]();
  m_nBucketCount = count;
  m_tails.assign(count, 0);
}

void CHashedStorage::clearNextWord(uint32_t textOffset) { store32(nextWord(textOffset), 0); }

bool CHashedStorage::readBuckets(FILE *stream) {
  delete[] m_pBuckets;
  m_pBuckets = readHashEntries(stream, m_nBucketCount);
  // Tails are made when the first entry is linked: a reader never needs them.
  m_tails.clear();
  if (m_pBuckets) return true;
  m_nBucketCount = 0;
  return false;
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
