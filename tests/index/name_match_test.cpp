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

using NameMatch = ::testing::Test;

std::string describe(const MatchCase &c) { return std::string(c.name) + " ~ " + c.pattern; }

TEST_F(NameMatch, TermMatchUsesOnlyTheFirstTerm) {
  // A star before a wildcard looks for it literally; terms are anchored at the start and
  // case-insensitive on both sides; a term followed by "&" only needs to match a prefix;
  // trailing spaces before the end of the pattern are skipped.
  // clang-format off
  const MatchCase cases[] = {
      {"Report.TXT", "*.txt", 1}, {"a.text", "*.txt|*.text", 0}, {"a.txt", "*.txt|*.text", 1}, {"abc", "ab", 0},
      {"abc", "ab|x", 1}, {"ab", "ab?", 1}, {"abx", "*?x", 0}, {"a?x", "*?x", 1}, {"notes", "^ *.txt", 1},
      {"a.txt", "^*.txt", 0}, {"xreport.txt", "report*", 0}, {"REPORT", "rep*", 1}, {"", "*", 1}, {"", "", 1},
      {"a", "", 0}, {"abcdef", "abc&x", 1}, {"abc", "abc  ", 1}};
  // clang-format on
  for (const MatchCase &c : cases) EXPECT_EQ(termMatch(c.name, c.pattern), c.expected) << describe(c);
}

TEST_F(NameMatch, FileNameMatchEvaluatesTheWholePattern) {
  // No precedence: "a*|b*&c*" is (a* or b*) and c*.
  // clang-format off
  const MatchCase cases[] = {
      {"main.c", "*.c&^tmp*", 1}, {"tmp.c", "*.c&^tmp*", 0}, {"x", "", 0}, {"", "", 1}, {"a.text", "*.txt|*.text", 1},
      {"a.TEXT", "*.txt | *.text", 1}, {"cat", "a*|b*&c*", 0}, {"abc", "a*|b*&c*", 0}, {"notes", "^*.txt", 1},
      {"notes.txt", "^*.txt", 0}};
  // clang-format on
  for (const MatchCase &c : cases) EXPECT_EQ(fileNameMatch(c.name, c.pattern), c.expected) << describe(c);
}

TEST_F(NameMatch, DirMatchTellsWhetherAFolderCanLeadToThePattern) {
  // The folder itself, without its separator, still owes the pattern a '/'.
  // clang-format off
  const MatchCase cases[] = {
      {"/Users/bob", "/Users/*/Documents/*.txt", 1}, {"/Applications", "/Users/*.txt", 0}, {"/anything", "*.txt", 1},
      {"/users/BOB/documents/", "/Users/*/Documents/*.txt", 1}, {"/users/BOB/documents", "/Users/*/Documents/*.txt", 0},
      {"/Users/bob/Music", "/Users/*/Documents/*.txt", 0}, {"C:\\Data\\Sub", "C:\\Data\\*.txt", 1}, {"", "/x/", 0},
      {"/a", "", 1}};
  // clang-format on
  for (const MatchCase &c : cases) EXPECT_EQ(dirMatch(c.name, c.pattern), c.expected) << describe(c);
}

}  // namespace

// Plain globs take a faster road; on every name and pattern built from an
// alphabet of separators, case pairs (ASCII and Latin-1) and DEL, both roads
// must agree.
TEST(NameMatchPlainGlobs, AgreeWithTheBacktrackingMatcher) {
  const char alphabet[] = {'/', '.', 'a', 'A', 'o', '\xC1', '\xE1', '\x7F', '*'};
  uint32_t state = 12345;
  auto next = [&state](uint32_t bound) {
    state = state * 1103515245u + 12345u;
    return (state >> 16) % bound;
  };
  for (int round = 0; round < 20000; ++round) {
    std::string name, pattern;
    for (uint32_t i = next(8); i > 0; --i) name += alphabet[next(sizeof alphabet - 1)];
    for (uint32_t i = next(6); i > 0; --i) pattern += alphabet[next(sizeof alphabet)];
    ASSERT_EQ(termMatch(name.c_str(), pattern.c_str()), backtrackingTermMatch(name.c_str(), pattern.c_str()))
        << '"' << name << "\" ~ \"" << pattern << '"';
  }
  for (const char *pattern : {"*/*.o", "*/.git", "*/node_modules", "*.txt", "*/README*", "*/a*b*c"})
    for (const char *name : {"/x/y.o", "/x/y.O", "y.o", "/x/.git", "/x/.git/z", "/x/README.md", "/q/aXbYc", "/q/acb"})
      EXPECT_EQ(termMatch(name, pattern), backtrackingTermMatch(name, pattern)) << name << " ~ " << pattern;
}
