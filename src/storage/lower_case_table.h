// The process-wide case-folding table used by every case-insensitive compare.
#pragma once

// 256 entries indexed by the byte taken as a signed 8-bit value plus 128, so
// that a plain signed char indexes it directly; for a byte b that slot is
// b ^ 0x80.
extern unsigned char lowerCaseTable[256];

// Fills lowerCaseTable: ASCII letters, 0xC1-0xDE, 0x8A-0x8F and three
// Windows-1250 capitals fold to lower case; 0x7F folds to 0.
void mapLowerCaseChars();

// The folded value of byte c.
inline unsigned char lowerCase(unsigned char c) {
  return lowerCaseTable[c ^ 0x80];
}
