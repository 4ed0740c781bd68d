// The index's HTML entity map and htmlChar decoding of character references.
#include <gtest/gtest.h>

#include <memory>

#include "index/kurvo_index.h"
#include "test_support.h"

namespace {

class HtmlEntities : public ::testing::Test {
 protected:
  void SetUp() override { index = std::make_unique<CKurvoIndex>(true, dir.path()); }
  kurvo_test::TempDir dir;
  std::unique_ptr<CKurvoIndex> index;
};

TEST_F(HtmlEntities, MapHoldsExactlyTheListedNames) {
  EXPECT_EQ(index->entities.size(), 67u);
  struct Entry {
    const char *name;
    int byte;
  };
  const Entry expected[] = {
      {"quot", 34},    {"amp", 38},     {"lt", 60},      {"gt", 62},     {"apos", 39},
      {"Agrave", 192}, {"AElig", 198},  {"Ccedil", 199}, {"Icirc", 206}, {"Iuml", 206},
      {"ETH", 208},    {"Ouml", 214},   {"Oslash", 216}, {"THORN", 222}, {"szlig", 223},
      {"agrave", 224}, {"aelig", 230},  {"cedil", 231},  {"egrave", 232}, {"eacute", 233},
      {"eth", 240},    {"ouml", 246},   {"oslash", 248}, {"thorn", 254}, {"yuml", 255},
  };
  for (const Entry &e : expected) {
    auto it = index->entities.find(e.name);
    ASSERT_NE(it, index->entities.end()) << e.name;
    EXPECT_EQ(it->second, e.byte) << e.name;
  }
}

TEST_F(HtmlEntities, GapsAndUsualSpellingsAreAbsent) {
  for (const char *name : {"ccedil", "nbsp", "times", "divide", "copy", "AMP"})
    EXPECT_EQ(index->entities.count(name), 0u) << name;
  for (const auto &entry : index->entities) {
    EXPECT_NE(entry.second, 207) << entry.first;
    EXPECT_NE(entry.second, 215) << entry.first;
    EXPECT_NE(entry.second, 247) << entry.first;
  }
}

TEST_F(HtmlEntities, HtmlCharDecodesReferences) {
  struct Case {
    const char *reference;
    int byte;
  };
  const Case cases[] = {
      {"#233", 233}, {"#65", 65},   {"#321", 65},  {"#", 0},        {"#12a", 12},
      {"#x41", 0},   {"lt", 60},    {"Iuml", 206}, {"eacute", 233}, {"Eacute", 201},
      {"nbsp", 32},  {"EACUTE", 32}, {"", 32},
      // Long digit runs wrap rather than overflow: 10^20 - 1 is 255 modulo 256.
      {"#99999999999999999999", 255},
  };
  for (const Case &c : cases)
    EXPECT_EQ(index->htmlChar(c.reference), c.byte) << c.reference;
}

}  // namespace
