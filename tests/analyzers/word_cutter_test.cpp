// Word cutting of one buffer: classes, length limits, NULs, control bytes and the carry.
#include <string>
#include <vector>

#include "analyzer_fixture.h"

using kurvo_test::AnalyzerTest;
using Words = std::set<std::string>;

namespace {

struct CutCase {
  const char *name;
  std::string text;
  int minLength;
  int maxLength;
  Words expected;
};

std::string letters(size_t n) {
  std::string s;
  for (size_t i = 0; i < n; ++i) s.push_back(static_cast<char>('a' + i % 26));
  return s;
}

const std::vector<CutCase> &cutCases() {
  using namespace std::string_literals;
  static const std::vector<CutCase> cases = {
      {"PlainWordsLowerCased", "Alpha BETA gamma\n", 3, 16, {"alpha", "beta", "gamma"}},
      {"ShortWordsDropped", "a an ant\n", 3, 16, {"ant"}},
      {"MaximumPlusOneTaken", "abcdef abcdefg\n", 3, 5, {"abcdef"}},
      {"MaximumZeroIsHundred", letters(101) + " " + letters(102) + "\n", 3, 0, {letters(101)}},
      {"ControlFramedWordDropped", "\x01word\x02\n", 3, 16, {}},
      {"SpaceFramedWordKept", " word \n", 3, 16, {"word"}},
      {"ControlBeforeOnlyKept", "\x01word \n", 3, 16, {"word"}},
      {"ControlAfterOnlyKept", " word\x02\n", 3, 16, {"word"}},
      {"ControlSeenSurvivesBlanks", "\x01 word\x02\n", 3, 16, {}},
      {"NulAfterEachCharacter", "w\0o\0r\0d\0 \0n\0e\0x\0t\0\n\0"s, 3, 16, {"word", "next"}},
      {"NulBeforeEachCharacter", "\0w\0o\0r\0d\0 \0n\0e\0x\0t\0\n"s, 3, 16, {"word", "next"}},
      {"TwoNulsEndAWord", "abc\0\0def\n"s, 3, 16, {"abc", "def"}},
      {"UnfinishedWordNotIndexed", "alpha beta", 3, 16, {"alpha"}},
  };
  return cases;
}

class WordCutterCases : public AnalyzerTest, public ::testing::WithParamInterface<CutCase> {};

TEST_P(WordCutterCases, IndexesExactlyTheExpectedWords) {
  const CutCase &c = GetParam();
  index->MinWordLength = c.minLength;
  index->MaxWordLength = c.maxLength;
  cut(c.text);
  EXPECT_EQ(words(), c.expected);
}

INSTANTIATE_TEST_SUITE_P(WordCutter, WordCutterCases, ::testing::ValuesIn(cutCases()),
                         [](const auto &info) { return std::string(info.param.name); });

TEST_F(AnalyzerTest, TrailingBytesOnlyContinueAWord) {
  index->setValidTrailingMask('\'', true);
  cut("don't 'quote' '''\n");
  EXPECT_EQ(words(), (Words{"don't", "quote'"}));
}

TEST_F(AnalyzerTest, UnfinishedWordIsLeftInTheCarryOverBuffer) {
  cut("alpha Bet");
  EXPECT_STREQ(index->partialWord, "bet");
}

struct CarryCase {
  size_t wordLength;
  size_t carriedLength;
};

class CarryCases : public AnalyzerTest, public ::testing::WithParamInterface<CarryCase> {};

// Up to 1,021 copied characters the set-aside last one is put back; beyond,
// the word is carried without it, and never more than 1,023 bytes.
TEST_P(CarryCases, LongWordsAreCarriedShortened) {
  const std::string word = letters(GetParam().wordLength);
  cut("x " + word);
  const std::string carried = index->partialWord;
  EXPECT_EQ(carried.size(), GetParam().carriedLength);
  EXPECT_EQ(carried, word.substr(0, carried.size()));
}

INSTANTIATE_TEST_SUITE_P(WordCutter, CarryCases,
                         ::testing::Values(CarryCase{1, 1}, CarryCase{5, 5}, CarryCase{1022, 1022},
                                           CarryCase{1023, 1022}, CarryCase{1024, 1023},
                                           CarryCase{1500, 1023}),
                         [](const auto &info) {
                           return "Length" + std::to_string(info.param.wordLength) + "Carries" +
                                  std::to_string(info.param.carriedLength);
                         });

// Records the characters the hook sees and turns '#' into a letter.
class HookedAnalyzer : public CFileAnalyzer {
 public:
  explicit HookedAnalyzer(CKurvoIndex *index) : CFileAnalyzer(index) { m_bHooks = 1; }
  bool checkIndexCharacter(char *current, char **read, char **, char **, char **,
                           unsigned long) override {
    seen.push_back(*current);
    if (*current == '#') *current = 'q';
    if (*current == '~') {
      ++*read;  // consumes the tilde
      return true;
    }
    return false;
  }
  std::string seen;
};

TEST_F(AnalyzerTest, HookSeesEveryCharacterAndMayReplaceOrConsumeIt) {
  HookedAnalyzer hooked(index.get());
  std::string text = "ab#c~d x\n";
  hooked.indexBuffer(text.data(), text.size(), fileNumber, true);
  EXPECT_EQ(hooked.seen, "ab#c~d x\n");
  EXPECT_EQ(words(), (Words{"abqcd"}));
}

}  // namespace
