// A hashed table of strings, each with a fixed-size data area, in a memory file.
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstring>

#include "storage/hashed_storage.h"

// Magic word of the saved description.
constexpr uint32_t kTextStorageMagic = 12350001;

// Entry layout: u32 next-in-bucket, data area, text with its NUL. An entry is
// known by its text offset; 0 means none.
class CTextStorage : public CHashedStorage {
 public:
  CTextStorage(const std::string &path, uint32_t initialSize, uint32_t increment, uint32_t dataSize,
               uint32_t bucketCount);
  // Opens the memory file and reads the saved description from stream.
  // Raises "StorageReadError" with path when either cannot be read.
  CTextStorage(const std::string &path, FILE *stream);

  bool read(FILE *stream);
  bool store(FILE *stream);

  // Adds an entry without looking for an existing one; callers lookup first.
  // hash is textHash(text), which a caller may have at hand already.
  uint32_t addText(const char *text, uint32_t hash);
  uint32_t addText(const char *text) { return addText(text, textHash(text)); }
  // The first entry whose text equals text ignoring ASCII case, or 0.
  uint32_t lookup(const char *text, uint32_t hash) { return lookup(text, hash, std::strlen(text)); }
  uint32_t lookup(const char *text) { return lookup(text, textHash(text)); }
  // The same with strlen(text) at hand.
  uint32_t lookup(const char *text, uint32_t hash, size_t length);
  void addHash(const char *text, uint32_t textOffset);
  // Doubles the bucket count until it holds the entry count and relinks
  // every entry in storage order.
  void reHash();
  // The entry's data area (text address - prefix size + 4), or null.
  char *getData(uint32_t textOffset) const;
  // The data area of an entry that lookup or addText of this table just
  // returned, whose text needs no second check.
  char *foundData(uint32_t textOffset) const { return getPointer(textOffset - m_nPrefixSize + 4); }
  // The data area of an entry the index itself recorded (a word number in
  // the word links): only its bounds are checked, not its text. Null when
  // the area does not lie within the used part.
  char *recordedData(uint32_t textOffset) const {
    if (textOffset < m_nPrefixSize || !getRange(textOffset - m_nPrefixSize + 4, m_nPrefixSize - 4)) return nullptr;
    return getPointer(textOffset - m_nPrefixSize + 4);
  }

  uint32_t getEntryCount() const { return m_nEntryCount; }

 private:
  uint32_t m_nEntryCount = 0;
};

// Offsets of the word table's 16-byte data area.
namespace word_data {
constexpr uint32_t kCurrentFile = 0;    // u32: last file the word was seen in
constexpr uint32_t kCounter = 4;        // u16: occurrences there minus one, max 255
constexpr uint32_t kReserved = 6;       // u16: zero
constexpr uint32_t kListPosition = 8;   // u32: top of the newest file-list block
constexpr uint32_t kEarlierFiles = 12;  // u32: files before the current one
constexpr uint32_t kSize = 16;
}  // namespace word_data
