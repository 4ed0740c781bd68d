// The query language: how texts parse, what the viewer is given, and errors.
#include <gtest/gtest.h>

#include <utility>

#include "query_parser.h"

using namespace kurvo_cli;

namespace {

// A compact picture of a parse tree: AND(a,b), OR(..), NOT(..), NEAR(a<3b).
std::string shape(const QueryNode &n) {
  std::string out;
  switch (n.kind) {
    case QueryKind::Term: return n.text;
    case QueryKind::Exclude: return "NOT(" + shape(n.children[0]) + ")";
    case QueryKind::Near:
      out = "NEAR(";
      for (size_t i = 0; i < n.children.size(); ++i) {
        if (i) out += "<" + (n.distances[i - 1] < 0 ? std::string() : std::to_string(n.distances[i - 1]));
        out += n.children[i].text;
      }
      return out + ")";
    case QueryKind::And:
    case QueryKind::Or:
      out = n.kind == QueryKind::And ? "AND(" : "OR(";
      for (size_t i = 0; i < n.children.size(); ++i) out += (i ? "," : "") + shape(n.children[i]);
      return out + ")";
  }
  return out;
}

std::string parsed(const std::string &text) { return shape(parseQuery(text, defaultWordCharacters())); }

struct ParseCase {
  const char *query;
  const char *tree;
};

class ParsesTo : public ::testing::TestWithParam<ParseCase> {};

TEST_P(ParsesTo, Tree) { EXPECT_EQ(parsed(GetParam().query), GetParam().tree) << GetParam().query; }

INSTANTIATE_TEST_SUITE_P(
    QueryParser, ParsesTo,
    ::testing::Values(ParseCase{"Apple", "apple"}, ParseCase{"apple pear", "AND(apple,pear)"},
                      ParseCase{"apple&pear", "AND(apple,pear)"},
                      ParseCase{"a1 | b1 c1", "OR(a1,AND(b1,c1))"}, ParseCase{"a1 b1 | c1", "OR(AND(a1,b1),c1)"},
                      ParseCase{"((a1 | b1)) c1", "AND(OR(a1,b1),c1)"},
                      ParseCase{"apple +pear", "AND(apple,NOT(pear))"},
                      ParseCase{"apple -(pear | plum)", "AND(apple,NOT(OR(pear,plum)))"},
                      ParseCase{"e-mail", "AND(e,mail)"},
                      ParseCase{"col*r ?at", "AND(col*r,?at)"}, ParseCase{"memory <3 leak", "NEAR(memory<3leak)"},
                      ParseCase{"a1 < b1", "NEAR(a1<b1)"},
                      ParseCase{"a1 <2 b1 <4 c1", "NEAR(a1<2b1<4c1)"}, ParseCase{"x1 a1 <2 b1", "AND(x1,NEAR(a1<2b1))"},
                      ParseCase{"\xC9T\xC9", "\xE9t\xE9"}, ParseCase{"word, other.", "AND(word,other)"}));

class Rejects : public ::testing::TestWithParam<const char *> {};

TEST_P(Rejects, WithQueryError) { EXPECT_THROW(parsed(GetParam()), QueryError) << GetParam(); }

INSTANTIATE_TEST_SUITE_P(QueryParser, Rejects,
                         ::testing::Values("   ", "-apple", "apple | -pear", "(apple", "apple)", "()",
                                           "apple |", "(a1 b1) <3 c1", "a1 <3", "a1 <99999999 b1"));

TEST(QueryParser, ExtraWordCharactersKeepTermsWhole) {
  WordCharacters chars = defaultWordCharacters();
  chars['_'] = true;
  EXPECT_EQ(shape(parseQuery("snake_case", chars)), "snake_case");
}

TEST(QueryParser, ViewerTextMarksExclusionsWithPlus) {
  const std::pair<const char *, const char *> cases[] = {
      {"apple -(pear | plum)", "apple +(pear | plum)"}, {"(a1 | b1) c1", "(a1 | b1) c1"},
      {"Memory <3 LEAK", "memory <3 leak"}, {"a1 < b1", "a1 < b1"}, {"in*x", "in*x"}};
  for (const auto &[query, viewer] : cases)
    EXPECT_EQ(viewerQuery(parseQuery(query, defaultWordCharacters())), viewer) << query;
}

TEST(QueryParser, PositiveTermsLeaveOutExclusions) {
  QueryNode q = parseQuery("a1 (b1 | c1) -d1 e1 <2 f1", defaultWordCharacters());
  EXPECT_EQ(positiveTerms(q), (std::vector<std::string>{"a1", "b1", "c1", "e1", "f1"}));
}

TEST(QueryParser, FoldCaseFollowsTheIndexTable) {
  EXPECT_EQ(foldCase("ABC\xC0\xC1\xDE\xDF\xA3\x8A"), "abc\xC0\xE1\xFE\xDF\xB3\x9A");
}

}  // namespace
