// A hashed table of strings, each with a fixed-size data area, in a memory file.
#pragma once

#include <cstdint>
#include <cstdio>

#include "storage/file_memory.h"

// Magic words of the saved descriptions.
constexpr uint32_t kTextStorageMagic = 12350001;
constexpr uint32_t kHashEntriesMagic = 12340001;

// Writes the shared bucket-array record: magic, count, count bucket heads.
bool storeHashEntries(FILE *stream, uint32_t count, const uint32_t *buckets);
// Reads that record; sets count and returns a new[]-allocated array, or null.
uint32_t *readHashEntries(FILE *stream, uint32_t &count);
// The bucket of text: h = h * 33 + folded signed byte, stopping at a 0 fold.
uint32_t hashText(const char *text, uint32_t bucketCount);

// Entry layout: u32 next-in-bucket, data area, text with its NUL. An entry is
// known by its text offset; 0 means none.
class CTextStorage : public CFileMemory {
 public:
  CTextStorage(const std::string &path, uint32_t initialSize, uint32_t increment,
               uint32_t dataSize, uint32_t bucketCount);
  // Opens the memory file and reads the saved description from stream.
  // Raises "StorageReadError" with path when the description is bad.
  CTextStorage(const std::string &path, FILE *stream);
  ~CTextStorage() override;

  bool read(FILE *stream);
  bool store(FILE *stream);

  uint32_t getHash(const char *text) const;
  uint32_t addText(const char *text);
  uint32_t lookup(const char *text);
  void addHash(const char *text, uint32_t textOffset);
  void reHash();

  uint32_t getFirst() const;
  uint32_t getNext(uint32_t textOffset) const;
  char *getText(uint32_t textOffset) const;
  char *getData(uint32_t textOffset) const;

  uint32_t getPrefixSize() const { return m_nPrefixSize; }
  uint32_t getBucketCount() const { return m_nBucketCount; }
  uint32_t getEntryCount() const { return m_nEntryCount; }

 private:
  uint32_t m_nPrefixSize = 4;
  uint32_t *m_pBuckets = nullptr;
  uint32_t m_nBucketCount = 0;
  uint32_t m_nEntryCount = 0;
};

// Offsets of the word table's 16-byte data area.
namespace word_data {
constexpr uint32_t kCurrentFile = 0;   // u32: last file the word was seen in
constexpr uint32_t kCounter = 4;       // u16: occurrences there minus one, max 255
constexpr uint32_t kReserved = 6;      // u16: zero
constexpr uint32_t kListPosition = 8;  // u32: top of the newest file-list block
constexpr uint32_t kEarlierFiles = 12; // u32: files before the current one
constexpr uint32_t kSize = 16;
}  // namespace word_data
