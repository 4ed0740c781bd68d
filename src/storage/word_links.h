// Word-file links in file order, written while indexing and read by compression.
#pragma once

#include <cstdint>
#include <cstdio>

#include "storage/link_region.h"

// Groups, one per file: u32 file number, entries (u32 word number, plus a
// count byte when counts are on), and an end entry of word 0 (count 0) before
// the next group. The last group has no end entry.
class CWordLinks : public CLinkRegion {
 public:
  CWordLinks(const std::string &path, uint32_t initialSize, uint32_t increment, int32_t counts)
      : CLinkRegion(path, initialSize, increment, counts) {}
  CWordLinks(const std::string &path, FILE *stream) : CLinkRegion(path, stream) {}

  // Groups start at every change of file, so one file's words must be added
  // together.
  void addWord(uint32_t fileNumber, uint32_t wordNumber, unsigned char count);
  // File number at position (0 when not addressable); position += 4.
  uint32_t getFile(uint32_t &position) const;
  // Word number at position and its count (255 without counts; 0 and 0 when
  // not addressable); position += entry size. Word 0 ends a group.
  uint32_t getWord(uint32_t &position, unsigned char &count) const { return readEntry(position, count); }

 private:
  uint32_t m_nCurrentFile = 0;
  uint32_t m_nCurrentGroup = 0;
};
