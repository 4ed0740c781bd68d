// The table of folders, files and archive members, hashed by name in a memory file.
#include "storage/file_storage.h"

#include <strings.h>

#include <cstring>

#include "api/message_keys.h"
#include "api/reporting.h"
#include "storage/byte_io.h"
#include "storage/hash_chain.h"
#include "storage/text_storage.h"

namespace {

constexpr uint32_t kInitialSize = 0xFFFF;
constexpr uint32_t kIncrement = 0xFFFFF;
constexpr uint32_t kPrefixSize = 20;
constexpr uint32_t kFirstRecord = 16 + kPrefixSize;

bool writeWord(FILE *stream, uint32_t word) { return std::fwrite(&word, 4, 1, stream) == 1; }

bool readWord(FILE *stream, uint32_t &word) { return std::fread(&word, 4, 1, stream) == 1; }

}  // namespace

CFileStorage::CFileStorage(const std::string &path, uint32_t bucketCount)
    : CFileMemory(path, kInitialSize, kIncrement),
      m_pBuckets(new uint32_t[bucketCount ? bucketCount : 1]()),
      m_nBucketCount(bucketCount) {}

CFileStorage::CFileStorage(const std::string &path, FILE *stream) : CFileMemory(path) {
  if (!read(stream) || !isMapped()) {
    delete[] m_pBuckets;
    m_pBuckets = nullptr;
    throwKurvoError(kurvo_keys::kStorageReadError, path);
  }
}

CFileStorage::~CFileStorage() { delete[] m_pBuckets; }

bool CFileStorage::read(FILE *stream) {
  uint32_t magic = 0;
  if (!readWord(stream, magic) || magic != kFileStorageMagic) return false;
  // The record layout is fixed; any other prefix size means a damaged file.
  if (!readWord(stream, m_nPrefixSize) || m_nPrefixSize != kPrefixSize) return false;
  delete[] m_pBuckets;
  m_pBuckets = readHashEntries(stream, m_nBucketCount);
  if (!m_pBuckets) {
    m_nBucketCount = 0;
    return false;
  }
  return true;
}

bool CFileStorage::store(FILE *stream) {
  return writeWord(stream, kFileStorageMagic) && writeWord(stream, m_nPrefixSize) &&
         storeHashEntries(stream, m_nBucketCount, m_pBuckets);
}

uint32_t CFileStorage::getHash(const char *name) const { return hashText(name, m_nBucketCount); }

uint32_t CFileStorage::addFile(const char *name) {
  uint32_t length = static_cast<uint32_t>(std::strlen(name));
  uint32_t fileNumber = getNewSpace(length + 1 + m_nPrefixSize) + m_nPrefixSize;
  std::memcpy(getPointer(fileNumber), name, length + 1);
  uint32_t bucket = getHash(name);
  if (bucket >= m_nBucketCount) throwKurvoError(kurvo_keys::kAssertionFailed, "");
  CHashChain(*this, m_nPrefixSize).append(m_pBuckets[bucket], fileNumber);
  return fileNumber;
}

uint32_t CFileStorage::lookupFile(const char *name, uint32_t parentId) {
  uint32_t bucket = getHash(name);
  if (bucket >= m_nBucketCount) throwKurvoError(kurvo_keys::kAssertionFailed, "");
  CHashChain chain(*this, m_nPrefixSize);
  uint32_t steps = 0;
  for (uint32_t record = m_pBuckets[bucket]; record; record = chain.next(record)) {
    chain.checkSteps(steps++);
    const char *data = getData(record);
    if (!data) throwKurvoError(kurvo_keys::kAssertionFailed, "");
    if (strcasecmp(file_record::name(data), name) == 0 && file_record::parent(data) == parentId)
      return record;
  }
  return 0;
}

uint32_t CFileStorage::getFirst() const { return kFirstRecord < getUsed() ? kFirstRecord : 0; }

uint32_t CFileStorage::getNext(uint32_t fileNumber) const {
  uint32_t length = textLength(fileNumber);
  if (length == kNoText) return 0;
  uint64_t next = static_cast<uint64_t>(fileNumber) + length + 1 + m_nPrefixSize;
  return next < getUsed() ? static_cast<uint32_t>(next) : 0;
}

char *CFileStorage::getText(uint32_t fileNumber) const {
  if (textLength(fileNumber) == kNoText) return nullptr;
  return getPointer(fileNumber);
}

char *CFileStorage::getData(uint32_t fileNumber) const {
  if (fileNumber < kFirstRecord || !getText(fileNumber)) return nullptr;
  return getPointer(fileNumber - file_record::kName);
}
