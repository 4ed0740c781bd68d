// A hashed table of strings, each with a fixed-size data area, in a memory file.
#include "storage/text_storage.h"

#include <cstring>

#include "report/message_keys.h"
#include "report/reporting.h"
#include "storage/description_io.h"

CTextStorage::CTextStorage(const std::string &path, uint32_t initialSize, uint32_t increment, uint32_t dataSize,
                           uint32_t bucketCount)
    : CHashedStorage(path, initialSize, increment, dataSize + 4, bucketCount) {}

CTextStorage::CTextStorage(const std::string &path, FILE *stream) : CHashedStorage(path) {
  // A table whose own file is missing or damaged is as unreadable as one
  // whose description is.
  if (!read(stream) || !isMapped()) failOpen(path);
}

bool CTextStorage::read(FILE *stream) {
  uint32_t magic = 0;
  if (!readWord(stream, magic) || magic != kTextStorageMagic) return false;
  if (!readWord(stream, m_nPrefixSize) || m_nPrefixSize < 4) return false;
  if (!readWord(stream, m_nEntryCount)) return false;
  return readBuckets(stream);
}

bool CTextStorage::store(FILE *stream) {
  return writeWord(stream, kTextStorageMagic) && writeWord(stream, m_nPrefixSize) && writeWord(stream, m_nEntryCount) &&
         storeBuckets(stream);
}

uint32_t CTextStorage::addText(const char *text, uint32_t hash) {
  if (++m_nEntryCount > m_nBucketCount) reHash();
  uint32_t textOffset = appendEntry(text);
  linkEntry(hash, textOffset);
  return textOffset;
}

void CTextStorage::addHash(const char *text, uint32_t textOffset) { linkEntry(textHash(text), textOffset); }

void CTextStorage::reHash() {
  uint32_t count = m_nBucketCount ? m_nBucketCount : 1;
  while (count < m_nEntryCount) count *= 2;
  resetBuckets(count);
  for (uint32_t entry = getFirst(); entry; entry = getNext(entry)) clearNextWord(entry);
  for (uint32_t entry = getFirst(); entry; entry = getNext(entry)) {
    const char *text = getText(entry);
    if (!text) throwKurvoError(kurvo_keys::kAssertionFailed, "");
    addHash(text, entry);
  }
}

uint32_t CTextStorage::lookup(const char *text, uint32_t hash, size_t length) {
  const size_t size = length + 1;
  return findInChain(hash, [&](uint32_t entry) {
    const TextMatch match = matchText(entry, text, size);
    if (match == TextMatch::Damaged) throwKurvoError(kurvo_keys::kAssertionFailed, "");
    return match == TextMatch::Equal;
  });
}

char *CTextStorage::getData(uint32_t textOffset) const {
  if (textOffset < m_nPrefixSize || !getText(textOffset)) return nullptr;
  return getPointer(textOffset - m_nPrefixSize + 4);
}
