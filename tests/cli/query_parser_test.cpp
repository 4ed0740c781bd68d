// The query language: how texts parse, what the viewer is given, and errors.
// Tables laid out by hand:
// clang-format off
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

TEST(QueryParser, TextsParseToTrees) {
  const std::pair<const char *, const char *> cases[] = {
      {"Apple", "apple"}, {"apple pear", "AND(apple,pear)"}, {"apple&pear", "AND(apple,pear)"},
      {"a1 | b1 c1", "OR(a1,AND(b1,c1))"}, {"a1 b1 | c1", "OR(AND(a1,b1),c1)"},
      {"((a1 | b1)) c1", "AND(OR(a1,b1),c1)"},
      // "+" requires, as every word does; "-" excludes.
      {"apple +pear", "AND(apple,pear)"}, {"+apple -pear", "AND(apple,NOT(pear))"},
      {"apple -(pear | plum)", "AND(apple,NOT(OR(pear,plum)))"},
      // A term the indexer cuts in several is those words in sequence.
      {"e-mail", "NEAR(e<0mail)"}, {"foo_bar don't", "AND(NEAR(foo<0bar),NEAR(don<0t))"},
      {"-e-mail x1", "AND(NOT(NEAR(e<0mail)),x1)"}, {"c++ x1", "AND(c,x1)"},
      {"col*r ?at", "AND(col*r,?at)"}, {"memory <3 leak", "NEAR(memory<3leak)"}, {"a1 < b1", "NEAR(a1<b1)"},
      {"a1 <2 b1 <4 c1", "NEAR(a1<2b1<4c1)"}, {"x1 a1 <2 b1", "AND(x1,NEAR(a1<2b1))"},
      {"memory <19 leak", "NEAR(memory<19leak)"},
      {"\xC9T\xC9", "\xE9t\xE9"}, {"word, other.", "AND(word,other)"},
  };
  for (const auto &[query, tree] : cases) EXPECT_EQ(parsed(query), tree) << query;
}

TEST(QueryParser, BadQueriesAreRejected) {
  for (const char *query : {"   ", "-apple", "apple | -pear", "(apple", "apple)", "()", "apple |", "(a1 b1) <3 c1",
                            "a1 <3", "a1 <99999999 b1", "e-mail <2 x1"})
    EXPECT_THROW(parsed(query), QueryError) << query;
}

TEST(QueryParser, PartsTheIndexNeverHoldsAreDropped) {
  const std::pair<const char *, const char *> cases[] = {
      {"e-mail", "mail"}, {"state-of-the-art", "NEAR(state<1the<0art)"}, {"don't stop", "AND(don,stop)"},
      {"foo_bar", "NEAR(foo<0bar)"}, {"x-y", "y"}};
  for (const auto &[query, tree] : cases) {
    QueryNode node = parseQuery(query, defaultWordCharacters());
    dropUnindexedParts(node, 3);
    EXPECT_EQ(shape(node), tree) << query;
  }
}

TEST(QueryParser, ExtraWordCharactersKeepTermsWhole) {
  WordCharacters chars = defaultWordCharacters();
  chars['_'] = true;
  EXPECT_EQ(shape(parseQuery("snake_case", chars)), "snake_case");
}

TEST(QueryParser, ViewerTextMarksExclusionsWithPlus) {
  const std::pair<const char *, const char *> cases[] = {
      {"apple -(pear | plum)", "apple +(pear | plum)"}, {"(a1 | b1) c1", "(a1 | b1) c1"},
      {"Memory <3 LEAK", "memory <3 leak"}, {"a1 < b1", "a1 < b1"}, {"in*x", "in*x"},
      // Distances the viewer cannot read leave the terms marked on their own.
      {"a1 <19 b1", "a1 b1"}, {"e-mail", "e mail"}, {"a1 <10 b1", "a1 <10 b1"}};
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
