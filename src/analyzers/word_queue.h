// WordQueue: words on their way to the index, held back so that their table entries are fetched early.
#pragma once

#include <cstdint>
#include <cstring>
#include <vector>

#include "index/kurvo_index.h"
#include "storage/hashed_storage.h"

// Words on their way to the index, in the order they came. Each word's
// word-table bucket is prefetched when it arrives, the entry that bucket
// leads to eight words later, and the word is indexed eight words after
// that, so the cache misses of neighbouring lookups overlap.
class WordQueue {
 public:
  WordQueue(CKurvoIndex &index, uint32_t file, size_t longest)
      : m_index(index), m_file(file), m_slotSize(longest + 1), m_texts(kSlots * m_slotSize) {}

  void push(const char *word, size_t length) { push(word, length, textHash(word)); }
  // The same with textHash(word) at hand; times occurrences in a row.
  void push(const char *word, size_t length, uint32_t hash, uint32_t times = 1) {
    if (m_count == kSlots) indexOldest();
    const size_t slot = (m_first + m_count++) % kSlots;
    std::memcpy(&m_texts[slot * m_slotSize], word, length + 1);
    m_hashes[slot] = hash;
    m_lengths[slot] = length;
    m_times[slot] = times;
    m_index.prefetchWordBucket(m_hashes[slot]);
    if (m_count > kDistance) m_index.prefetchWordEntry(m_hashes[(slot + kSlots - kDistance) % kSlots]);
  }

  // Indexes every word still held; returns the last one's number (0: none).
  uint32_t flush() {
    for (size_t i = 0; i < m_count; ++i) m_index.prefetchWordEntry(m_hashes[(m_first + i) % kSlots]);
    uint32_t last = 0;
    while (m_count) last = indexOldest();
    return last;
  }

 private:
  static constexpr size_t kDistance = 8;
  static constexpr size_t kSlots = 2 * kDistance;

  uint32_t indexOldest() {
    const uint32_t word = m_index.indexWord(&m_texts[m_first * m_slotSize], m_file, m_hashes[m_first],
                                            m_lengths[m_first], m_times[m_first]);
    m_first = (m_first + 1) % kSlots;
    --m_count;
    return word;
  }

  CKurvoIndex &m_index;
  const uint32_t m_file;
  const size_t m_slotSize;
  std::vector<char> m_texts;  // kSlots slots of the longest word and its NUL
  uint32_t m_hashes[kSlots];
  size_t m_lengths[kSlots];
  uint32_t m_times[kSlots];
  size_t m_first = 0;
  size_t m_count = 0;
};
