// The index's HTML entity map and htmlChar decoding of character references.

#include "test_support.h"

namespace {

TEST(HtmlEntities, HtmlCharDecodesReferences) {
  kurvo_test::TempDir dir;
  CKurvoIndex index(true, dir.path());
  struct Case {
    const char *reference;
    int byte;
  };
  const Case cases[] = {{"#233", 233},
                        {"#65", 65},
                        {"#321", 65},
                        {"#", 0},
                        {"#12a", 12},
                        {"#x41", 0},
                        {"lt", 60},
                        {"Iuml", 206},
                        {"eacute", 233},
                        {"Eacute", 201},
                        {"nbsp", 32},
                        {"EACUTE", 32},
                        {"", 32},
                        // Long digit runs wrap rather than overflow: 10^20 - 1 is 255 modulo 256.
                        {"#99999999999999999999", 255}};
  for (const Case &c : cases) EXPECT_EQ(index.htmlChar(c.reference), c.byte) << c.reference;
  // Only the listed names: "Iuml" repeats 206 and the c with cedilla is "cedil".
  EXPECT_EQ(index.entities.size(), 67u);
  EXPECT_EQ(index.htmlChar("cedil"), 231);
  EXPECT_EQ(index.htmlChar("ccedil"), 32);
}

}  // namespace
