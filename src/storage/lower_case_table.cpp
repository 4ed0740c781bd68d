// The process-wide case-folding table used by every case-insensitive compare.
#include "storage/lower_case_table.h"

namespace {

constexpr std::array<unsigned char, 256> foldedTable() {
  std::array<unsigned char, 256> table{};
  auto fold = [&table](unsigned byte, unsigned value) { table[byte ^ 0x80] = static_cast<unsigned char>(value); };
  // 0x7F is never written and keeps its 0: DEL folds to 0, which also ends
  // the hashed part of a text.
  for (unsigned b = 0; b < 256; ++b)
    if (b != 0x7F) fold(b, b);
  for (unsigned b = 0x41; b <= 0x5A; ++b) fold(b, b + 0x20);
  // Latin-1 capitals; 0xC0 is left out and 0xD7 folds to 0xF7, as the table
  // has always been.
  for (unsigned b = 0xC1; b <= 0xDE; ++b) fold(b, b + 0x20);
  // Windows-1250 capitals in the 0x8A-0x8F and 0xA3-0xAF positions.
  for (unsigned b = 0x8A; b <= 0x8F; ++b) fold(b, b + 0x10);
  fold(0xA3, 0xB3);
  fold(0xA5, 0xB9);
  fold(0xAF, 0xBF);
  return table;
}

}  // namespace

// Filled when the program is compiled, so tables and name matching used
// before any index exists fold as they will afterwards.
std::array<unsigned char, 256> lowerCaseTable = foldedTable();

void mapLowerCaseChars() { lowerCaseTable = foldedTable(); }
