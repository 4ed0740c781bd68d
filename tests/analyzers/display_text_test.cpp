// Display text of one buffer: line ends, blanks, provisional runs, high-bit bytes, wrapping.

#include "test_support.h"

using namespace kurvo_test;

namespace {

struct StripCase {
  const char *name;
  std::string source;
  int wrapWidth;
  std::string expected;
};

// Masks of AnalyzerTest plus '*' and 0x80-0x9F as non-alpha bytes that are
// not shown, and '-' as a non-alpha byte that is shown.
class DisplayTest : public AnalyzerTest {
 protected:
  void SetUp() override {
    AnalyzerTest::SetUp();
    index->setNonAlphaCharMask('*', true);
    index->setValidViewableMask('*', false);
    index->setNonAlphaCharMask('-', true);
    for (int c = 0x80; c <= 0x9F; ++c) index->setNonAlphaCharMask(c, true);
  }

  std::string strip(std::string source, int wrapWidth = 0, unsigned long outputSize = 4096) {
    std::vector<char> output(outputSize + 1, 'X');
    int state = 0;
    const unsigned long written =
        analyzer->stripBuffer(source.data(), source.size(), output.data(), outputSize, wrapWidth, true, true, &state);
    EXPECT_EQ(output[written], '\0');
    return std::string(output.data(), written);
  }
};

TEST_F(DisplayTest, StripsEachSourceToTheExpectedText) {
  using namespace std::string_literals;
  // The last space written ends up as a line feed (the first byte when there
  // is no space at all), so most sources end in " end".
  // clang-format off
  const StripCase cases[] = {
      {"CrLfIsOneLineFeed", "ab\r\ncd end", 0, "ab\ncd\nend"},
      {"LoneCrIsOneLineFeed", "ab\rcd end", 0, "ab\ncd\nend"},
      {"LoneLfIsOneLineFeed", "ab\ncd end", 0, "ab\ncd\nend"},
      {"Byte227IsOneLineFeed", "ab\xE3" "cd end", 0, "ab \ncd\nend"},
      {"CrAtBufferEndIsALineFeed", "ab cd\r", 0, "ab\ncd\n"},
      {"BlankRunsBecomeOneSpace", "ab \t  cd\t\tef", 0, "ab cd\nef"},
      {"NoSpaceMeansFirstByteBecomesLineFeed", "abcd", 0, "\nbcd"},
      {"ProvisionalRunTakenBack", "ab **** cd", 0, "ab\ncd"},
      {"NonAlphaAfterLineFeedCountsAsText", "ab\n** cd", 0, "ab\n**\ncd"},
      {"ShownNonAlphaStays", "ab -- cd", 0, "ab --\ncd"},
      {"NonAlphaInTextStays", "ab c** d", 0, "ab c**\nd"},
      {"LettersAfterAProvisionalRunKeepItOpen", "ab **cd ef", 0, "ab\n**cdef"},
      {"ThreeHighBitBytesShown", "ab \x81\x82\x83" "cd", 0, "ab\n\x81\x82\x83" "cd"},
      {"FourHighBitBytesFiltered", "ab \x81\x82\x83\x84" "cd", 0, "ab\ncd"},
      {"NulBehindShownCharacterSkipped", "a\0b\0 \0c\0d\0"s, 0, "ab\ncd"},
      {"WrapAtLastSpace", "aaaa bbbb cccc dddd", 10, "aaaa bbbb\ncccc\ndddd"},
      {"WrapWithoutSpaceBreaksFirstByte", "abcdefgh", 4, "\nbcdefgh"},
      {"Empty", "", 0, ""}};
  // clang-format on
  for (const StripCase &c : cases) EXPECT_EQ(strip(c.source, c.wrapWidth), c.expected) << c.name;
}

}  // namespace
