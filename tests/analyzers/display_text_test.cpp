// Display text of one buffer: line ends, blanks, provisional runs, high-bit bytes, wrapping.
#include <string>
#include <vector>

#include "analyzer_fixture.h"

using kurvo_test::AnalyzerTest;

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
    const unsigned long written = analyzer->stripBuffer(
        source.data(), source.size(), output.data(), outputSize, wrapWidth, true, true, &state);
    EXPECT_EQ(output[written], '\0');
    return std::string(output.data(), written);
  }
};

const std::vector<StripCase> &stripCases() {
  using namespace std::string_literals;
  // The last space written ends up as a line feed (the first byte when there
  // is no space at all), so most sources end in " end".
  static const std::vector<StripCase> cases = {
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
  };
  return cases;
}

class StripCases : public DisplayTest, public ::testing::WithParamInterface<StripCase> {};

TEST_P(StripCases, GivesTheExpectedText) {
  const StripCase &c = GetParam();
  EXPECT_EQ(strip(c.source, c.wrapWidth), c.expected);
}

INSTANTIATE_TEST_SUITE_P(DisplayText, StripCases, ::testing::ValuesIn(stripCases()),
                         [](const auto &info) { return std::string(info.param.name); });

TEST_F(DisplayTest, EmptySourceGivesEmptyText) { EXPECT_EQ(strip(""), ""); }

TEST_F(DisplayTest, OutputStopsOneByteShortOfItsSize) {
  const std::string text = strip("abcdefghij", 0, 5);
  EXPECT_EQ(text.size(), 4u);
}

TEST_F(DisplayTest, ZeroOutputSizeWritesNothing) {
  std::string source = "abc";
  char output = 'X';
  int state = 0;
  EXPECT_EQ(analyzer->stripBuffer(source.data(), source.size(), &output, 0, 0, true, true, &state),
            0u);
  EXPECT_EQ(output, 'X');
}

// Drops every 'x' through the hook and counts the state it is handed.
class XDropper : public CFileAnalyzer {
 public:
  explicit XDropper(CKurvoIndex *index) : CFileAnalyzer(index) { m_bHooks = 1; }
  bool checkStripCharacter(unsigned char *current, char **, unsigned long *, char, bool,
                           int *state) override {
    ++*state;
    return *current == 'x';
  }
};

TEST_F(DisplayTest, HookConsumesCharacters) {
  XDropper dropper(index.get());
  std::string source = "axbx cx d";
  char output[64];
  int state = 0;
  const unsigned long written =
      dropper.stripBuffer(source.data(), source.size(), output, sizeof output, 0, true, true, &state);
  EXPECT_EQ(std::string(output, written), "ab c\nd");
  EXPECT_EQ(state, 9);
}

}  // namespace
