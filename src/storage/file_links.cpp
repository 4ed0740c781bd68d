// Per-word file lists, the blocks queries read, in a memory file.
#include "storage/file_links.h"

#include "report/message_keys.h"
#include "report/reporting.h"
#include "storage/byte_io.h"

char *CFileLinks::writableRange(uint32_t position, uint32_t size) {
  if (!getRange(position, size)) throwKurvoError(kurvo_keys::kAssertionFailed, "");
  // A stored index maps its tables read-only; writing needs them writable.
  if (!isWritable()) enableWrite();
  return getPointer(position);
}

void CFileLinks::addFile(uint32_t position, uint32_t fileNumber, unsigned char count) {
  writeEntry(writableRange(position, entrySize()), fileNumber, count);
}

uint32_t CFileLinks::getNextList(uint32_t position) const {
  const char *p = getRange(position, 4);
  if (!p) throwKurvoError(kurvo_keys::kAssertionFailed, "");
  return load32(p);
}

void CFileLinks::setNextList(uint32_t position, uint32_t value) { store32(writableRange(position, 4), value); }

void CFileLinks::removeFile(uint32_t fileNumber) {
  // The scan steps from offset 0 by the entry size whatever the blocks are,
  // so header and next-list words that happen to match are rewritten too.
  for (uint32_t offset = 0; getRange(offset, 4); offset += entrySize()) {
    if (load32(getPointer(offset)) == fileNumber) store32(writableRange(offset, 4), kRemovedFileNumber);
  }
}
