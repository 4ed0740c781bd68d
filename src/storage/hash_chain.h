// Walking and extending the bucket chains of the two hashed tables.
#pragma once

#include <cstdint>

#include "storage/file_memory.h"

// Both tables keep a next-in-bucket word prefixSize bytes before each entry's
// text; a chain runs from its bucket head through those words to 0.
class CHashChain {
 public:
  CHashChain(const CFileMemory &memory, uint32_t prefixSize) : m_memory(memory), m_prefix(prefixSize) {}

  // The next-in-bucket word of the entry at textOffset. Raises
  // "AssertionFailed" when the entry is not addressable.
  uint32_t next(uint32_t textOffset) const;
  // Appends textOffset behind the last entry of the chain that starts at head.
  void append(uint32_t &head, uint32_t textOffset) const;
  // Raises "AssertionFailed" once a walk has taken more steps than the region
  // can hold entries, so a damaged (cyclic) chain cannot hang a lookup.
  void checkSteps(uint32_t steps) const;

 private:
  char *nextWord(uint32_t textOffset) const;

  const CFileMemory &m_memory;
  uint32_t m_prefix;
};
