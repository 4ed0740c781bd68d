// Word-file links in file order, written while indexing and read by compression.
#include "storage/word_links.h"

#include "storage/byte_io.h"

void CWordLinks::addWord(uint32_t fileNumber, uint32_t wordNumber, unsigned char count) {
  if (fileNumber != m_nCurrentFile) {
    if (m_nCurrentGroup != 0) writeEntry(getPointer(getNewSpace(entrySize())), 0, 0);
    m_nCurrentFile = fileNumber;
    m_nCurrentGroup = getNewSpace(4);
    store32(getPointer(m_nCurrentGroup), fileNumber);
  }
  writeEntry(getPointer(getNewSpace(entrySize())), wordNumber, count);
}

uint32_t CWordLinks::getFile(uint32_t &position) const {
  const char *p = getRange(position, 4);
  position += 4;
  return p ? load32(p) : 0;
}
