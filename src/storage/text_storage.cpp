// A hashed table of strings, each with a fixed-size data area, in a memory file.
#include "storage/text_storage.h"

#include <strings.h>

#include <cstring>

#include "api/message_keys.h"
#include "api/reporting.h"
#include "storage/hash_chain.h"

namespace {

constexpr uint32_t kFirstEntry = 16;

bool writeWord(FILE *stream, uint32_t word) { return std::fwrite(&word, 4, 1, stream) == 1; }

bool readWord(FILE *stream, uint32_t &word) { return std::fread(&word, 4, 1, stream) == 1; }

}  // namespace

CTextStorage::CTextStorage(const std::string &path, uint32_t initialSize, uint32_t increment,
                           uint32_t dataSize, uint32_t bucketCount)
    : CFileMemory(path, initialSize, increment),
      m_nPrefixSize(dataSize + 4),
      m_pBuckets(new uint32_t[bucketCount ? bucketCount : 1]()),
      m_nBucketCount(bucketCount) {}

CTextStorage::CTextStorage(const std::string &path, FILE *stream) : CFileMemory(path) {
  // A table whose own file is missing or damaged is as unreadable as one
  // whose description is.
  if (!read(stream) || !isMapped()) {
    delete[] m_pBuckets;
    m_pBuckets = nullptr;
    throwKurvoError(kurvo_keys::kStorageReadError, path);
  }
}

CTextStorage::~CTextStorage() { delete[] m_pBuckets; }

bool CTextStorage::read(FILE *stream) {
  uint32_t magic = 0;
  if (!readWord(stream, magic) || magic != kTextStorageMagic) return false;
  if (!readWord(stream, m_nPrefixSize) || m_nPrefixSize < 4) return false;
  if (!readWord(stream, m_nEntryCount)) return false;
  delete[] m_pBuckets;
  m_pBuckets = readHashEntries(stream, m_nBucketCount);
  if (!m_pBuckets) {
    m_nBucketCount = 0;
    return false;
  }
  return true;
}

bool CTextStorage::store(FILE *stream) {
  return writeWord(stream, kTextStorageMagic) && writeWord(stream, m_nPrefixSize) &&
         writeWord(stream, m_nEntryCount) && storeHashEntries(stream, m_nBucketCount, m_pBuckets);
}

uint32_t CTextStorage::getHash(const char *text) const { return hashText(text, m_nBucketCount); }

uint32_t CTextStorage::addText(const char *text) {
  if (++m_nEntryCount > m_nBucketCount) reHash();
  uint32_t length = static_cast<uint32_t>(std::strlen(text));
  uint32_t textOffset = getNewSpace(length + 1 + m_nPrefixSize) + m_nPrefixSize;
  std::memcpy(getPointer(textOffset), text, length + 1);
  addHash(text, textOffset);
  return textOffset;
}

void CTextStorage::addHash(const char *text, uint32_t textOffset) {
  uint32_t bucket = getHash(text);
  if (bucket >= m_nBucketCount) throwKurvoError(kurvo_keys::kAssertionFailed, "");
  CHashChain(*this, m_nPrefixSize).append(m_pBuckets[bucket], textOffset);
}

void CTextStorage::reHash() {
  uint32_t count = m_nBucketCount ? m_nBucketCount : 1;
  while (count < m_nEntryCount) count *= 2;
  delete[] m_pBuckets;
  m_pBuckets = new uint32_t[count]();
  m_nBucketCount = count;
  CHashChain chain(*this, m_nPrefixSize);
  for (uint32_t entry = getFirst(); entry; entry = getNext(entry)) {
    chain.next(entry);  // checks that the word is addressable
    std::memset(getPointer(entry - m_nPrefixSize), 0, 4);
  }
  for (uint32_t entry = getFirst(); entry; entry = getNext(entry)) addHash(getText(entry), entry);
}

uint32_t CTextStorage::lookup(const char *text) {
  uint32_t bucket = getHash(text);
  if (bucket >= m_nBucketCount) throwKurvoError(kurvo_keys::kAssertionFailed, "");
  CHashChain chain(*this, m_nPrefixSize);
  uint32_t steps = 0;
  for (uint32_t entry = m_pBuckets[bucket]; entry; entry = chain.next(entry)) {
    chain.checkSteps(steps++);
    const char *stored = getText(entry);
    if (!stored) throwKurvoError(kurvo_keys::kAssertionFailed, "");
    if (strcasecmp(stored, text) == 0) return entry;
  }
  return 0;
}

uint32_t CTextStorage::getFirst() const {
  uint32_t first = kFirstEntry + m_nPrefixSize;
  return first < getUsed() ? first : 0;
}

uint32_t CTextStorage::getNext(uint32_t textOffset) const {
  uint32_t length = textLength(textOffset);
  if (length == kNoText) return 0;
  uint64_t next = static_cast<uint64_t>(textOffset) + length + 1 + m_nPrefixSize;
  return next < getUsed() ? static_cast<uint32_t>(next) : 0;
}

char *CTextStorage::getText(uint32_t textOffset) const {
  if (textLength(textOffset) == kNoText) return nullptr;
  return getPointer(textOffset);
}

char *CTextStorage::getData(uint32_t textOffset) const {
  if (textOffset < m_nPrefixSize || !getText(textOffset)) return nullptr;
  return getPointer(textOffset - m_nPrefixSize + 4);
}
