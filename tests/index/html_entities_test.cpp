// The index's HTML entity map and htmlChar decoding of character references.

#include "test_support.h"

namespace {

TEST(HtmlEntities, HtmlCharDecodesReferences) {
  kurvo_test::TempDir dir;
  CKurvoIndex index(true, dir.path());
  // Long digit runs wrap rather than overflow: 10^20 - 1 is 255 modulo 256.
  // clang-format off
  const std::pair<const char *, int> cases[] = {
      {"#233", 233}, {"#65", 65}, {"#321", 65}, {"#", 0}, {"#12a", 12}, {"#x41", 0}, {"lt", 60}, {"Iuml", 206},
      {"eacute", 233}, {"Eacute", 201}, {"nbsp", 32}, {"EACUTE", 32}, {"", 32}, {"#99999999999999999999", 255},
      // Only the listed names: "Iuml" repeats 206 and the c with cedilla is "cedil".
      {"cedil", 231}, {"ccedil", 32}};
  // clang-format on
  for (const auto &[reference, byte] : cases) EXPECT_EQ(index.htmlChar(reference), byte) << reference;
  EXPECT_EQ(index.entities.size(), 67u);
}

}  // namespace
