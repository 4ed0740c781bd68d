// Word cutting of one buffer: classes, length limits, NULs, control bytes and the carry.

#include "test_support.h"

using namespace kurvo_test;
using Words = std::set<std::string>;

namespace {

std::string letters(size_t n) {
  std::string s;
  for (size_t i = 0; i < n; ++i) s.push_back(static_cast<char>('a' + i % 26));
  return s;
}

struct CutCase {
  std::string text;
  int maxLength;
  Words expected;
};

TEST_F(AnalyzerTest, CutsExactlyTheExpectedWords) {
  using namespace std::string_literals;
  const CutCase cases[] = {
      {"Alpha BETA an gamma\n", 16, {"alpha", "beta", "gamma"}},
      {"abcdef abcdefg\n", 5, {"abcdef"}},                            // maximum + 1 taken, + 2 not
      {letters(101) + " " + letters(102) + "\n", 0, {letters(101)}},  // 0 acts as 100
      {"\x01word\x02\n", 16, {}},                                     // framed by control bytes
      {"\x01 word\x02\n", 16, {}},                                    // the control byte seen survives blanks
      {"\x01word x\x02 \n", 16, {"word"}},
      {"w\0o\0r\0d\0 \0n\0e\0x\0t\0\n\0"s, 16, {"word", "next"}},
      {"\0w\0o\0r\0d\0 \0n\0e\0x\0t\0\n"s, 16, {"word", "next"}},
      {"abc\0\0def\n"s, 16, {"abc", "def"}},  // two NULs end a word
      {"alpha beta", 16, {"alpha"}},          // an unfinished word waits for the next buffer
  };
  for (const CutCase &c : cases) {
    SetUp();
    index->MaxWordLength = c.maxLength;
    cut(c.text);
    EXPECT_EQ(words(), c.expected) << c.text;
  }
}

TEST_F(AnalyzerTest, LongUnfinishedWordsAreCarriedShortened) {
  // Up to 1,021 copied characters the set-aside last one is put back; beyond,
  // the word is carried without it, and never more than 1,023 bytes.
  const std::pair<size_t, size_t> cases[] = {{3, 3}, {1022, 1022}, {1023, 1022}, {1024, 1023}, {1500, 1023}};
  for (const auto &[length, carried] : cases) {
    const std::string word = letters(length);
    cut("x " + word);
    EXPECT_EQ(index->partialWord, word.substr(0, carried)) << length;
  }
}

}  // namespace
