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

TEST_F(HtmlEntities, MapHoldsTheListedNamesOnly) {
  EXPECT_EQ(index->entities.size(), 67u);
  const std::pair<const char *, int> present[] = {
      {"quot", 34}, {"apos", 39}, {"Iuml", 206}, {"szlig", 223}, {"cedil", 231}, {"yuml", 255}};
  for (const auto &[name, byte] : present) {
    ASSERT_EQ(index->entities.count(name), 1u) << name;
    EXPECT_EQ(index->entities.at(name), byte) << name;
  }
  for (const char *name : {"ccedil", "nbsp", "AMP"}) EXPECT_EQ(index->entities.count(name), 0u) << name;
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
