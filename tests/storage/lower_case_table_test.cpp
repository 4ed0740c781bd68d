// The process-wide case-folding table and its Windows-1250 capitals.
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "storage/lower_case_table.h"

namespace {

struct Fold {
  unsigned from;
  unsigned to;
};

const std::vector<Fold> kFolds = {
    {'Q', 'q'},   {'A', 'a'},   {'Z', 'z'},   {'q', 'q'},   {'@', '@'},   {'[', '['},
    {0x00, 0x00}, {0x7F, 0x00},  // DEL folds to 0 and so ends a hashed text
    {0xC0, 0xC0}, {0xC1, 0xE1}, {0xDE, 0xFE}, {0xDF, 0xDF}, {0xD7, 0xF7}, {0xE1, 0xE1},
    {0x8A, 0x9A}, {0x8F, 0x9F}, {0x89, 0x89}, {0x90, 0x90}, {0x9A, 0x9A},
    {0xA3, 0xB3}, {0xA5, 0xB9}, {0xAF, 0xBF}, {0xA4, 0xA4}, {0xB3, 0xB3}, {0xFF, 0xFF},
};

class LowerCaseTable : public ::testing::Test {
 protected:
  void SetUp() override { mapLowerCaseChars(); }
};

}  // namespace

TEST_F(LowerCaseTable, FoldsListedBytes) {
  for (const Fold &f : kFolds) {
    EXPECT_EQ(lowerCase(static_cast<unsigned char>(f.from)), f.to) << std::hex << f.from;
  }
}

TEST_F(LowerCaseTable, IsIndexedBySignedBytePlus128) {
  // Entry 0 belongs to byte 0x80, entry 128 to byte 0, entry 255 to byte 0x7F.
  EXPECT_EQ(lowerCaseTable[0], 0x80u);
  EXPECT_EQ(lowerCaseTable[128], 0x00u);
  EXPECT_EQ(lowerCaseTable[128 + 'Q'], static_cast<unsigned>('q'));
  EXPECT_EQ(lowerCaseTable[255], 0x00u);
  EXPECT_EQ(lowerCaseTable[0xC1 - 128], 0xE1u);
}

TEST_F(LowerCaseTable, EveryOtherByteFoldsToItself) {
  for (unsigned c = 0; c < 256; ++c) {
    unsigned expected = c;
    if (c == 0x7F) expected = 0;
    else if (c >= 'A' && c <= 'Z') expected = c + 0x20;
    else if (c >= 0xC1 && c <= 0xDE) expected = c + 0x20;
    else if (c >= 0x8A && c <= 0x8F) expected = c + 0x10;
    else if (c == 0xA3) expected = 0xB3;
    else if (c == 0xA5) expected = 0xB9;
    else if (c == 0xAF) expected = 0xBF;
    EXPECT_EQ(lowerCase(static_cast<unsigned char>(c)), expected) << std::hex << c;
  }
}

TEST_F(LowerCaseTable, RefillingGivesTheSameTable) {
  unsigned char before[256];
  std::copy(lowerCaseTable, lowerCaseTable + 256, before);
  mapLowerCaseChars();
  EXPECT_TRUE(std::equal(before, before + 256, lowerCaseTable));
}
