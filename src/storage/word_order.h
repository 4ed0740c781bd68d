// The word table's entries sorted by their text: a file beside the tables that answers prefix queries.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "storage/byte_io.h"
#include "storage/text_storage.h"

// Magic word at the start of a word order file.
constexpr uint32_t kWordOrderMagic = 12380001;

class CWordOrder;

// Writes path: the magic word, the word table's used bytes and entry count,
// then every entry in byte order of its text. The file is written beside
// path and renamed over it, so a reader never sees half of it. Raises
// "FileMapWriteFail" with path when it cannot be written. An earlier order of
// the same table is extended by the words added since, when they are few.
void writeWordOrder(const CTextStorage &words, const std::string &path, const CWordOrder &earlier);
// The same with the table's entries already sorted (by sortedWordEntries,
// with no word added since).
void writeWordOrder(const CTextStorage &words, const std::string &path, std::vector<uint32_t> sorted);
// Every entry of the table in byte order of its text. Reads only the texts,
// so it may run while the word data is being written.
std::vector<uint32_t> sortedWordEntries(const CTextStorage &words);

// A word order read back. It fits only the word table it was written for:
// once a word is added, it is no longer usable.
class CWordOrder {
 public:
  // Reads path; a missing, short or damaged file gives an order that is not usable.
  explicit CWordOrder(const std::string &path);
  ~CWordOrder();
  CWordOrder(const CWordOrder &) = delete;
  CWordOrder &operator=(const CWordOrder &) = delete;

  bool usable(const CTextStorage &words) const {
    return m_usedBytes != 0 && m_usedBytes == words.getUsed() && m_count == words.getEntryCount();
  }
  // Written for words before more were added: the table only grows, so its
  // entries are still the table's first ones, in order.
  bool precedes(const CTextStorage &words) const {
    return m_usedBytes != 0 && m_usedBytes < words.getUsed() && m_count < words.getEntryCount();
  }
  // Usable, or to be extended by few words (at most one added word for
  // every kHeldPerAdded it holds), which costs far less than sorting again.
  static constexpr size_t kHeldPerAdded = 32;
  bool extendsCheaply(const CTextStorage &words) const {
    return usable(words) || (precedes(words) && (words.getEntryCount() - m_count) * kHeldPerAdded <= m_count);
  }
  size_t size() const { return m_count; }
  uint32_t usedBytes() const { return m_usedBytes; }
  uint32_t entry(size_t i) const { return load32(m_map + (3 + i) * 4); }
  // Appends the entries of words whose text begins with prefix, in order.
  // False when the order does not fit words, or when an entry it leads to is
  // no word or out of order (damage: the caller then walks every word).
  bool withPrefix(CTextStorage &words, const std::string &prefix, std::vector<uint32_t> &out) const;

 private:
  // Index of the first entry whose text is not below prefix, or -1 on damage.
  int64_t lowerBound(CTextStorage &words, const std::string &prefix) const;

  // The file mapped whole: a query touches only the pages its search visits.
  const char *m_map = nullptr;
  size_t m_size = 0;
  size_t m_count = 0;
  uint32_t m_usedBytes = 0;
};
