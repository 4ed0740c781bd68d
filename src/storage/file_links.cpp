// Per-word file lists, the blocks queries read, in a memory file.
#include "storage/file_links.h"

#include "api/message_keys.h"
#include "api/reporting.h"
#include "storage/byte_io.h"

// The description of both link regions: magic, then the counts flag.
bool readLinksDescription(FILE *stream, int32_t &counts);
bool storeLinksDescription(FILE *stream, int32_t counts);

CFileLinks::CFileLinks(const std::string &path, uint32_t initialSize, uint32_t increment,
                       int32_t counts)
    : CFileMemory(path, initialSize, increment), m_bCounts(counts) {}

CFileLinks::CFileLinks(const std::string &path, FILE *stream) : CFileMemory(path) {
  if (!read(stream) || !isMapped()) throwKurvoError(kurvo_keys::kStorageReadError, path);
}

bool CFileLinks::read(FILE *stream) { return readLinksDescription(stream, m_bCounts); }

bool CFileLinks::store(FILE *stream) { return storeLinksDescription(stream, m_bCounts); }

char *CFileLinks::writableRange(uint32_t position, uint32_t size) {
  if (!getRange(position, size)) throwKurvoError(kurvo_keys::kAssertionFailed, "");
  // A stored index maps its tables read-only; writing needs them writable.
  if (!isWritable()) enableWrite();
  return getPointer(position);
}

void CFileLinks::addFile(uint32_t position, uint32_t fileNumber, unsigned char count) {
  char *p = writableRange(position, entrySize());
  store32(p, fileNumber);
  if (m_bCounts) p[4] = static_cast<char>(count);
}

uint32_t CFileLinks::getFile(uint32_t &position, unsigned char &count) const {
  const char *p = getRange(position, entrySize());
  position += entrySize();
  if (!p) {
    count = 0;
    return 0;
  }
  count = m_bCounts ? static_cast<unsigned char>(p[4]) : 0xFF;
  return load32(p);
}

uint32_t CFileLinks::getNextList(uint32_t position) const {
  const char *p = getRange(position, 4);
  if (!p) throwKurvoError(kurvo_keys::kAssertionFailed, "");
  return load32(p);
}

void CFileLinks::setNextList(uint32_t position, uint32_t value) {
  store32(writableRange(position, 4), value);
}

void CFileLinks::removeFile(uint32_t fileNumber) {
  // The scan steps from offset 0 by the entry size whatever the blocks are,
  // so header and next-list words that happen to match are rewritten too.
  for (uint32_t offset = 0; getRange(offset, 4); offset += entrySize()) {
    if (load32(getPointer(offset)) == fileNumber) store32(writableRange(offset, 4), 1);
  }
}
