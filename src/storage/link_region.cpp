// The memory file and saved description shared by both kinds of link lists.
#include "storage/link_region.h"

#include "report/message_keys.h"
#include "report/reporting.h"
#include "storage/byte_io.h"
#include "storage/description_io.h"

CLinkRegion::CLinkRegion(const std::string &path, FILE *stream) : CFileMemory(path) {
  if (!read(stream) || !isMapped()) throwKurvoError(kurvo_keys::kStorageReadError, path);
}

bool CLinkRegion::read(FILE *stream) {
  uint32_t magic = 0, counts = 0;
  if (!readWord(stream, magic) || magic != kLinksMagic || !readWord(stream, counts)) return false;
  m_bCounts = static_cast<int32_t>(counts);
  return true;
}

bool CLinkRegion::store(FILE *stream) {
  return writeWord(stream, kLinksMagic) && writeWord(stream, static_cast<uint32_t>(m_bCounts));
}

uint32_t CLinkRegion::readEntry(uint32_t &position, unsigned char &count) const {
  const char *p = getRange(position, entrySize());
  position += entrySize();
  if (!p) {
    count = 0;
    return 0;
  }
  count = m_bCounts ? static_cast<unsigned char>(p[4]) : 0xFF;
  return load32(p);
}

void CLinkRegion::writeEntry(char *p, uint32_t number, unsigned char count) const {
  store32(p, number);
  if (m_bCounts) p[4] = static_cast<char>(count);
}
