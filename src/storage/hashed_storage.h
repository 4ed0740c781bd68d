// The hashed entry layout shared by the word tables and the file table.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "storage/file_memory.h"

constexpr uint32_t kHashEntriesMagic = 12340001;

// Writes the shared bucket-array record: magic, count, count bucket heads.
bool storeHashEntries(FILE *stream, uint32_t count, const uint32_t *buckets);
// Reads that record's magic and count; false when they are not sound.
bool readHashHeader(FILE *stream, uint32_t &count);
// The bucket of text: h = h * 33 + folded signed byte, stopping at a 0 fold.
uint32_t hashText(const char *text, uint32_t bucketCount);
// The same before it is reduced to a bucket: one word's hash serves every
// table it is looked up in.
uint32_t textHash(const char *text);

// Entries lie back to back from offset 16 in the order added: a u32
// next-in-bucket word, the table's data area, then the text and its NUL. An
// entry is known by the offset of its text; the bucket heads live in memory
// (a large array read back is mapped privately from the summary file) and in
// the saved description.
class CHashedStorage : public CFileMemory {
 public:
  ~CHashedStorage() override;

  uint32_t getHash(const char *text) const { return hashText(text, m_nBucketCount); }
  // Walk every entry in the order added; 0 ends the walk.
  uint32_t getFirst() const;
  uint32_t getNext(uint32_t textOffset) const;
  // The entry appended when the table held usedBytes, or 0 when there is none.
  uint32_t entryAppendedAt(uint32_t usedBytes) const;
  // The entry's text, or null when it is out of range or unterminated.
  char *getText(uint32_t textOffset) const;

  uint32_t getBucketCount() const { return m_nBucketCount; }
  // Hints for a lookup of hash to come: its bucket head, and once that has
  // arrived, the first entry of its chain. They read nothing that can fail.
  // Always inlined: a call to a function that only prefetches looks free of
  // effects to the optimizer, which drops it.
  [[gnu::always_inline]] void prefetchBucket(uint32_t hash) const {
    if (m_nBucketCount) __builtin_prefetch(m_pBuckets + hash % m_nBucketCount);
  }
  [[gnu::always_inline]] void prefetchChain(uint32_t hash) const {
    const uint32_t entry = m_nBucketCount ? m_pBuckets[hash % m_nBucketCount] : 0;
    if (entry >= m_nPrefixSize && entry < getUsed()) __builtin_prefetch(getPointer(entry - m_nPrefixSize));
  }
  // Buckets read from a summary file may be mapped from it; here they take
  // memory of their own, as they must before that file is written again.
  void keepBucketsInMemory();

 protected:
  CHashedStorage(const std::string &path, uint32_t initialSize, uint32_t increment, uint32_t prefixSize,
                 uint32_t bucketCount);
  explicit CHashedStorage(const std::string &path);

  enum class TextMatch { Equal, Different, Damaged };
  // Compares the entry's text with text as strcasecmp does, reading the
  // entry once; Damaged when the entry's text has no NUL below the used part.
  // size: strlen(text) + 1, taken once for a whole chain.
  TextMatch matchText(uint32_t textOffset, const char *text, size_t size) const;
  // Appends an entry with a zero prefix and the text; it is not yet linked.
  uint32_t appendEntry(const char *text);
  // Links the entry at the end of its bucket's chain, so a chain keeps its
  // entries in the order they were linked.
  void linkEntry(uint32_t hash, uint32_t textOffset);
  // The first entry of text's bucket chain for which matches(offset) holds,
  // or 0. Raises "AssertionFailed" for a bucket out of range or a damaged chain.
  template <typename Match>
  uint32_t findInChain(uint32_t hash, Match matches) const;
  // Replaces the bucket heads by count empty ones.
  void resetBuckets(uint32_t count);
  void clearNextWord(uint32_t textOffset);
  bool readBuckets(FILE *stream);
  bool storeBuckets(FILE *stream) const;
  // Frees what a failed opening holds and raises "StorageReadError" with path.
  [[noreturn]] void failOpen(const std::string &path);

  uint32_t m_nPrefixSize = 4;
  uint32_t *m_pBuckets = nullptr;
  uint32_t m_nBucketCount = 0;

 private:
  // In memory only: the last entry of each bucket's chain (0: not known
  // yet), so that linking an entry need not walk a long chain.
  std::vector<uint32_t> m_tails;
  // The private mapping m_pBuckets lies in, when they were mapped.
  void *m_bucketMap = nullptr;
  size_t m_bucketMapLength = 0;

  void releaseBuckets();

  char *nextWord(uint32_t textOffset) const;
  uint32_t nextInChain(uint32_t textOffset) const;
  uint32_t bucketOf(uint32_t hash) const;
  // Raises "AssertionFailed" once a walk has taken more steps than the region
  // can hold entries, so a damaged (cyclic) chain cannot hang a lookup.
  void checkSteps(uint32_t steps) const;
};

template <typename Match>
uint32_t CHashedStorage::findInChain(uint32_t hash, Match matches) const {
  uint32_t steps = 0;
  for (uint32_t entry = m_pBuckets[bucketOf(hash)]; entry; entry = nextInChain(entry)) {
    checkSteps(steps++);
    if (matches(entry)) return entry;
  }
  return 0;
}
