// The process-wide case-folding table used by every case-insensitive compare.
#pragma once

#include <array>

// 256 entries indexed by the byte taken as a signed 8-bit value plus 128, so
// that a plain signed char indexes it directly; for a byte b that slot is
// b ^ 0x80.
extern std::array<unsigned char, 256> lowerCaseTable;

// Fills lowerCaseTable again (it holds these contents from the start):
// ASCII letters, 0xC1-0xDE, 0x8A-0x8F and three
// Windows-1250 capitals fold to lower case; 0x7F folds to 0.
void mapLowerCaseChars();

// The folded value of byte c.
inline unsigned char lowerCase(unsigned char c) { return lowerCaseTable[c ^ 0x80]; }
