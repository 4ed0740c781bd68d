// The memory file and saved description shared by both kinds of link lists.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

#include "storage/file_memory.h"

constexpr uint32_t kLinksMagic = 12360001;

// A link entry is a u32 number followed, when counts are on (ranking), by a
// count byte: occurrences of the word in the file minus one, at most 255.
class CLinkRegion : public CFileMemory {
 public:
  // Description: the magic, then the counts flag.
  bool read(FILE *stream);
  bool store(FILE *stream);

  uint32_t entrySize() const { return m_bCounts ? 5 : 4; }
  bool hasCounts() const { return m_bCounts != 0; }

 protected:
  CLinkRegion(const std::string &path, uint32_t initialSize, uint32_t increment, int32_t counts)
      : CFileMemory(path, initialSize, increment), m_bCounts(counts) {}
  // Raises "StorageReadError" with path when the file or the description
  // cannot be read.
  CLinkRegion(const std::string &path, FILE *stream);

  // Reads the entry at position (number and count; count 255 without counts,
  // 0 and 0 when not addressable) and moves position past it.
  uint32_t readEntry(uint32_t &position, unsigned char &count) const;
  // Writes number (and count, when counts are on) at an addressable p.
  void writeEntry(char *p, uint32_t number, unsigned char count) const;

  int32_t m_bCounts = 0;
};
