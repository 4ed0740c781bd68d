// The process-wide case-folding table, as compiled in: Windows-1250 capitals and DEL.
// Tables laid out by hand:
// clang-format off
#include <gtest/gtest.h>

#include "storage/lower_case_table.h"

TEST(LowerCaseTable, FoldsAsciiAndWindows1250CapitalsAndDelToZero) {
  for (unsigned c = 0; c < 256; ++c) {
    unsigned expected = c;
    if (c == 0x7F) expected = 0;  // so DEL ends a hashed text
    else if (c >= 'A' && c <= 'Z') expected = c + 0x20;
    else if (c >= 0xC1 && c <= 0xDE) expected = c + 0x20;
    else if (c >= 0x8A && c <= 0x8F) expected = c + 0x10;
    else if (c == 0xA3) expected = 0xB3;
    else if (c == 0xA5) expected = 0xB9;
    else if (c == 0xAF) expected = 0xBF;
    EXPECT_EQ(lowerCase(static_cast<unsigned char>(c)), expected) << std::hex << c;
  }
  // Indexed by the byte taken as signed, plus 128.
  EXPECT_EQ(lowerCaseTable[0], 0x80u);
  EXPECT_EQ(lowerCaseTable[128 + 'Q'], static_cast<unsigned>('q'));
  EXPECT_EQ(lowerCaseTable[0xC1 - 128], 0xE1u);
}
