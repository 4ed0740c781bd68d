// Word-file links in file order, written while indexing and read by compression.
#include "storage/word_links.h"

#include <cstring>

#include "api/message_keys.h"
#include "api/reporting.h"
#include "storage/byte_io.h"

namespace {

bool writeWord(FILE *stream, uint32_t word) { return std::fwrite(&word, 4, 1, stream) == 1; }

bool readWord(FILE *stream, uint32_t &word) { return std::fread(&word, 4, 1, stream) == 1; }

}  // namespace

bool readLinksDescription(FILE *stream, int32_t &counts) {
  uint32_t magic = 0, flag = 0;
  if (!readWord(stream, magic) || magic != kLinksMagic || !readWord(stream, flag)) return false;
  counts = static_cast<int32_t>(flag);
  return true;
}

bool storeLinksDescription(FILE *stream, int32_t counts) {
  return writeWord(stream, kLinksMagic) && writeWord(stream, static_cast<uint32_t>(counts));
}

CWordLinks::CWordLinks(const std::string &path, uint32_t initialSize, uint32_t increment,
                       int32_t counts)
    : CFileMemory(path, initialSize, increment), m_bCounts(counts) {}

CWordLinks::CWordLinks(const std::string &path, FILE *stream) : CFileMemory(path) {
  if (!read(stream) || !isMapped()) throwKurvoError(kurvo_keys::kStorageReadError, path);
}

bool CWordLinks::read(FILE *stream) { return readLinksDescription(stream, m_bCounts); }

bool CWordLinks::store(FILE *stream) { return storeLinksDescription(stream, m_bCounts); }

void CWordLinks::addWord(uint32_t fileNumber, uint32_t wordNumber, unsigned char count) {
  if (fileNumber != m_nCurrentFile) {
    if (m_nCurrentGroup != 0) {
      uint32_t end = getNewSpace(entrySize());
      std::memset(getPointer(end), 0, entrySize());
    }
    m_nCurrentFile = fileNumber;
    m_nCurrentGroup = getNewSpace(4);
    store32(getPointer(m_nCurrentGroup), fileNumber);
  }
  uint32_t entry = getNewSpace(entrySize());
  char *p = getPointer(entry);
  store32(p, wordNumber);
  if (m_bCounts) p[4] = static_cast<char>(count);
}

uint32_t CWordLinks::getFile(uint32_t &position) const {
  const char *p = getRange(position, 4);
  position += 4;
  return p ? load32(p) : 0;
}

uint32_t CWordLinks::getWord(uint32_t &position, unsigned char &count) const {
  const char *p = getRange(position, entrySize());
  position += entrySize();
  if (!p) {
    count = 0;
    return 0;
  }
  count = m_bCounts ? static_cast<unsigned char>(p[4]) : 0xFF;
  return load32(p);
}
