// Query word matching: the wildcard table and the cases where the masks make '*' or '?' ordinary.

#include "test_support.h"

using namespace kurvo_test;

namespace {

struct MatchCase {
  const char *pattern;
  const char *word;
  int result;
};

class WordMatch : public ::testing::Test {
 protected:
  void SetUp() override {
    index = std::make_unique<CKurvoIndex>(true, tmp.path());
    setWordMasks(*index);
  }

  TempDir tmp;
  std::unique_ptr<CKurvoIndex> index;
};

void expectCases(const CKurvoIndex &index, const std::vector<MatchCase> &cases) {
  for (const MatchCase &c : cases)
    EXPECT_EQ(index.doesWordMatch(c.word, c.pattern), c.result)
        << "pattern '" << c.pattern << "' word '" << c.word << "'";
}

}  // namespace

TEST_F(WordMatch, WildcardsFollowTheirRules) {
  expectCases(*index, {{"*", "anything", 1},    {"*", "", 1},       {"", "", 1},       {"", "abc", 0},
                       {"ab*", "ab", 1},        {"ab*", "abc", 1},  {"a*c", "ac", 1},  {"a*c", "abbc", 1},
                       {"a*c", "abcd", 0},      {"a?c", "abc", 1},  {"a?c", "ac", 0},  {"ab?", "ab", 1},
                       {"ab?", "abc", 1},       {"ab?", "abcd", 0}, {"a*?", "ab", 0},  {"A*", "abc", 0},
                       {"a*b*c", "axxbyyc", 1}, {"a**", "a*", 1},   {"ab??", "ab", 1}, {"*c", "abcabc", 1}});
}

TEST_F(WordMatch, AWildcardInTheWordMasksIsAnOrdinaryByte) {
  struct Case {
    char wildcard;
    std::vector<MatchCase> cases;
  };
  const Case cases[] = {{'*', {{"ab*", "ab*", 1}, {"ab*", "ab", 0}, {"ab*", "abc", 0}, {"a?*", "ab*", 1}}},
                        {'?', {{"a?c", "abc", 0}, {"a?c", "a?c", 1}, {"ab?", "ab", 0}, {"a*c", "abc", 1}}}};
  for (const Case &c : cases) {
    for (bool trailing : {false, true}) {
      SCOPED_TRACE(std::string(1, c.wildcard) + (trailing ? " trailing" : " word"));
      setWordMasks(*index);
      if (trailing)
        index->setValidTrailingMask(c.wildcard, true);
      else
        index->setValidCharMask(c.wildcard, true);
      expectCases(*index, c.cases);
    }
  }
}
