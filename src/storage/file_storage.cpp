// The table of folders, files and archive members, hashed by name in a memory file.
#include "storage/file_storage.h"

#include <strings.h>

#include <algorithm>

#include "report/message_keys.h"
#include "report/reporting.h"
#include "storage/description_io.h"
#include "storage/table_sizes.h"

namespace {

constexpr uint32_t kPrefixSize = 20;
constexpr uint32_t kFirstRecord = 16 + kPrefixSize;

}  // namespace

CFileStorage::CFileStorage(const std::string &path, uint32_t bucketCount)
    : CHashedStorage(path, table_sizes::kFiles.initial, table_sizes::kFiles.increment, kPrefixSize, bucketCount) {}

CFileStorage::CFileStorage(const std::string &path, FILE *stream) : CHashedStorage(path) {
  if (!read(stream) || !isMapped()) failOpen(path);
}

bool CFileStorage::read(FILE *stream) {
  uint32_t magic = 0;
  if (!readWord(stream, magic) || magic != kFileStorageMagic) return false;
  // The record layout is fixed; any other prefix size means a damaged file.
  if (!readWord(stream, m_nPrefixSize) || m_nPrefixSize != kPrefixSize) return false;
  return readBuckets(stream);
}

bool CFileStorage::store(FILE *stream) {
  return writeWord(stream, kFileStorageMagic) && writeWord(stream, m_nPrefixSize) && storeBuckets(stream);
}

uint32_t CFileStorage::addFile(const char *name) {
  uint32_t fileNumber = appendEntry(name);
  linkEntry(textHash(name), fileNumber);
  if (m_finder.isBuilt()) m_finder.insert(RecordFinder::hashName(name), fileNumber);
  return fileNumber;
}

uint32_t CFileStorage::lookupFile(const char *name, uint32_t parentId) {
  auto matches = [&](uint32_t record) {
    const char *data = getData(record);
    if (!data) throwKurvoError(kurvo_keys::kAssertionFailed, "");
    return strcasecmp(file_record::name(data), name) == 0 && file_record::parent(data) == parentId;
  };
  // A few lookups walk their bucket's chain; past that, as when a run adds
  // file after file, a finder over every record keeps each lookup short.
  if (!m_finder.isBuilt() && ++m_chainLookups <= chainLookupsBeforeFinder())
    return findInChain(textHash(name), matches);
  if (!m_finder.isBuilt()) {
    for (uint32_t record = getFirst(); record; record = getNext(record)) {
      const char *text = getText(record);
      if (!text) throwKurvoError(kurvo_keys::kAssertionFailed, "");
      m_finder.insert(RecordFinder::hashName(text), record);
    }
    m_finder.markBuilt();
  }
  return m_finder.findFirst(RecordFinder::hashName(name), matches);
}

uint32_t CFileStorage::chainLookupsBeforeFinder() const {
  // A walk visits about records / buckets entries, each a cache miss; a
  // build reads every record once, in order, several times as fast an entry.
  // So walks cost as much as a build after about a quarter as many lookups
  // as there are buckets, however many records there are: a query for a
  // word in a few hundred files of a large index never builds a finder.
  return std::max<uint32_t>(64, getBucketCount() / 4);
}

char *CFileStorage::getData(uint32_t fileNumber) const {
  if (fileNumber < kFirstRecord || !getText(fileNumber)) return nullptr;
  return getPointer(fileNumber - file_record::kName);
}
