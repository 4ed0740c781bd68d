// Per-word file lists, the blocks queries read, in a memory file.
#pragma once

#include <cstdint>
#include <cstdio>

#include "storage/link_region.h"

// After a reserved zero word at offset 16, list blocks: (E + 1) entries of a
// u32 file number (plus a count byte when counts are on), filled from the top
// slot down with the top slot left 0, then a u32 next-list position.
// What removeFile writes over a file number: below every real one (the
// smallest is 36), so lists still read to their zero top entries.
constexpr uint32_t kRemovedFileNumber = 1;
constexpr uint32_t kFirstBlock = 20;

class CFileLinks : public CLinkRegion {
 public:
  CFileLinks(const std::string &path, uint32_t initialSize, uint32_t increment, int32_t counts)
      : CLinkRegion(path, initialSize, increment, counts) {}
  CFileLinks(const std::string &path, FILE *stream) : CLinkRegion(path, stream) {}

  uint32_t getSpace(uint32_t size) { return getNewSpace(size); }
  // Whether any list block lies past the reserved word.
  bool holdsBlocks() const { return getUsed() > kFirstBlock; }
  // Raises "AssertionFailed" when position is not addressable.
  void addFile(uint32_t position, uint32_t fileNumber, unsigned char count);
  // addFile in two steps, for writes made on another thread: the check (and
  // making the region writable), then the write itself.
  void checkEntry(uint32_t position) { writableRange(position, entrySize()); }
  void putCheckedFile(uint32_t position, uint32_t fileNumber, unsigned char count) const {
    writeEntry(getPointer(position), fileNumber, count);
  }
  const char *entryAddress(uint32_t position) const { return getPointer(position); }
  // File number and count at position (255 without counts; 0 and 0 when not
  // addressable); position += entry size.
  uint32_t getFile(uint32_t &position, unsigned char &count) const { return readEntry(position, count); }
  // The next-list word at position. Raises "AssertionFailed" when it is not
  // addressable.
  uint32_t getNextList(uint32_t position) const;
  void setNextList(uint32_t position, uint32_t value);
  // Replaces every occurrence of fileNumber met stepping by the entry size
  // from offset 0 with 1.
  void removeFile(uint32_t fileNumber);

 private:
  char *writableRange(uint32_t position, uint32_t size);
};
