// Name matching: the pattern language's results on names and folder paths.
#include <gtest/gtest.h>

#include <string>

#include "index/name_match.h"

namespace {

struct MatchCase {
  const char *name;
  const char *pattern;
  int expected;
};

class NameMatch : public ::testing::Test {
 protected:
};

std::string describe(const MatchCase &c) { return std::string(c.name) + " ~ " + c.pattern; }

TEST_F(NameMatch, TermMatchUsesOnlyTheFirstTerm) {
  const MatchCase cases[] = {
      {"Report.TXT", "*.txt", 1},
      {"a.text", "*.txt|*.text", 0},
      {"a.txt", "*.txt|*.text", 1},
      {"abc", "ab", 0},
      {"abc", "ab|x", 1},
      {"ab", "ab?", 1},
      {"abx", "*?x", 0},  // a star before a wildcard looks for it literally
      {"a?x", "*?x", 1},
      {"notes", "^ *.txt", 1},
      {"a.txt", "^*.txt", 0},
      // Anchored at the start, case-insensitive on both sides.
      {"xreport.txt", "report*", 0},
      {"REPORT", "rep*", 1},
      {"", "*", 1},
      {"", "", 1},
      {"a", "", 0},
      // A term followed by "&" only needs to match a prefix.
      {"abcdef", "abc&x", 1},
      // Trailing spaces before the end of the pattern are skipped.
      {"abc", "abc  ", 1},
  };
  for (const MatchCase &c : cases) EXPECT_EQ(termMatch(c.name, c.pattern), c.expected) << describe(c);
}

TEST_F(NameMatch, FileNameMatchEvaluatesTheWholePattern) {
  const MatchCase cases[] = {
      {"main.c", "*.c&^tmp*", 1},
      {"tmp.c", "*.c&^tmp*", 0},
      {"x", "", 0},
      {"", "", 1},
      {"a.text", "*.txt|*.text", 1},
      {"a.TEXT", "*.txt | *.text", 1},
      // No precedence: (a* or b*) and c*.
      {"cat", "a*|b*&c*", 0},
      {"abc", "a*|b*&c*", 0},
      {"notes", "^*.txt", 1},
      {"notes.txt", "^*.txt", 0},
  };
  for (const MatchCase &c : cases) EXPECT_EQ(fileNameMatch(c.name, c.pattern), c.expected) << describe(c);
}

TEST_F(NameMatch, DirMatchTellsWhetherAFolderCanLeadToThePattern) {
  const MatchCase cases[] = {
      {"/Users/bob", "/Users/*/Documents/*.txt", 1},
      {"/Applications", "/Users/*.txt", 0},
      {"/anything", "*.txt", 1},
      {"/users/BOB/documents/", "/Users/*/Documents/*.txt", 1},
      // The folder itself, without its separator, still owes the pattern a '/'.
      {"/users/BOB/documents", "/Users/*/Documents/*.txt", 0},
      {"/Users/bob/Music", "/Users/*/Documents/*.txt", 0},
      {"C:\\Data\\Sub", "C:\\Data\\*.txt", 1},
      {"", "/x/", 0},
      {"/a", "", 1},
  };
  for (const MatchCase &c : cases) EXPECT_EQ(dirMatch(c.name, c.pattern), c.expected) << describe(c);
}

}  // namespace
