// Which words a query marks, hit positions, word lengths and outlines.
#include "contents_fixture.h"

namespace contents_test {
namespace {

class HitSearchTest : public ContentsTest {
 protected:
  std::unique_ptr<CFileContents> view(const std::string &text, int defaultDistance = 5) {
    showText(text);
    return open(addFile("f" + std::to_string(++m_files) + ".txt"), defaultDistance);
  }

  // Every marked word in order, stepping over each hit word as a host would.
  static std::vector<std::string> hits(CFileContents &viewer, const char *query) {
    std::vector<std::string> found;
    uint32_t offset = 0;
    while (uint32_t at = viewer.searchBuffer(offset, query)) {
      uint32_t length = viewer.tokenLength(at - 1);
      found.push_back(std::string(viewer.contents() + at - 1, length));
      offset = at - 1 + (length ? length : 1);
    }
    return found;
  }

 private:
  int m_files = 0;
};

using Words = std::vector<std::string>;

struct HitCase {
  const char *text;
  const char *query;
  Words expected;
  int defaultDistance;
};

TEST_F(HitSearchTest, QueriesMarkTheseWords) {
  const HitCase cases[] = {
      {"one two three", "*", {"one", "two", "three"}, 5},
      {"one two three", "+one +two", {}, 5},
      {"one two three", "+one three", {"three"}, 5},
      {"one two three", "+(one two) three", {"three"}, 5},
      {"one two three", "(one) & two", {"one", "two"}, 5},
      {"ab abc abcd", "ab?", {"ab", "abc"}, 5},
      {"ab abc abcd", "ab*", {"ab", "abc", "abcd"}, 5},
      {"abc ac abcd xabc", "a*c", {"abc", "ac"}, 5},
      {"abc ac", "a*?", {}, 5},  // "*" then "?" looks for a literal "?"
      {"One TWO", "two", {"TWO"}, 5},
      {"One TWO", "Two", {}, 5},  // query bytes are not folded
      // Proximity: "a" is marked only with a "b" among the next N + 1 words.
      {"a x x x b", "a <3 b", {"a", "b"}, 5},
      {"a x x x x b", "a <3 b", {"b"}, 5},
      // "<9" carries no number: the default distance applies.
      {"a x b", "a <9 b", {"a", "b"}, 1},
      {"a x x b", "a <9 b", {"b"}, 1},
      {"a x x x x x b", "a < b", {"a", "b"}, 5},
      // The 9 ends a number: "<19" is a distance of 1.
      {"a x b", "a <19 b", {"a", "b"}, 5},
      {"a x x b", "a <19 b", {"b"}, 5},
      {"a x x x x x x x x x x b", "a <10 b", {"a", "b"}, 0},
      // Proximity needs a later word: a "b" before the "a" does not count.
      {"b a", "a <3 b", {"b"}, 5},
      {"a b", "+a <3 b", {"b"}, 5},
  };
  for (const auto &c : cases) {
    auto viewer = view(c.text, c.defaultDistance);
    EXPECT_EQ(hits(*viewer, c.query), c.expected) << '"' << c.query << "\" in \"" << c.text << '"';
  }
}

struct MatchCase {
  const char *word;
  const char *term;
  bool expected;
};

TEST_F(HitSearchTest, TermMatching) {
  const MatchCase cases[] = {
      {"ab", "ab?", true},     // a trailing "?" may match nothing
      {"abc", "ab?", true},
      {"abcd", "ab?", false},
      {"ab", "ab??", true},
      {"abc", "ab", false},    // the term must cover the whole word
      {"ab", "abc", false},
      {"ABC", "abc", true},    // text folded, term as it stands
      {"abc", "*", true},
      {"abc", "a*", true},
      {"abc", "*c", true},
      {"abc", "*b", false},
      {"abcbd", "a*bd", true},  // the star tries each later match
      {"abc", "?bc", true},
      {"abc def", "abc", true},  // the word ends at the blank
  };
  auto viewer = view("x");
  for (const auto &c : cases)
    EXPECT_EQ(viewer->isMatch(c.word, c.term, true), c.expected) << c.word << " ~ " << c.term;
}

TEST_F(HitSearchTest, PositionsCountFromOne) {
  auto viewer = view("one two one");
  EXPECT_EQ(viewer->searchBuffer(0u, "one"), 1u);
  EXPECT_EQ(viewer->searchBuffer(0u, "two"), 5u);
  EXPECT_EQ(viewer->searchBuffer(3u, "one"), 9u);
  EXPECT_EQ(viewer->searchBuffer(9u, "one"), 0u);
  EXPECT_EQ(viewer->searchBuffer(0u, "three"), 0u);
  EXPECT_EQ(viewer->searchBuffer(11u, "one"), 0u);
  EXPECT_EQ(viewer->searchBuffer(500u, "one"), 0u);
  EXPECT_TRUE(viewer->containsHit("two"));
  EXPECT_FALSE(viewer->containsHit("three"));
  EXPECT_FALSE(viewer->containsHit("+two"));
}

TEST_F(HitSearchTest, WordSearchReturnsTheNulWhenNothingMatches) {
  auto viewer = view("one two");
  char *text = const_cast<char *>(viewer->contents());
  EXPECT_EQ(viewer->searchBuffer(text, "two", 0, false), text + 4);
  EXPECT_EQ(viewer->searchBuffer(text, "six", 0, false), text + 7);
  // A distance of N examines N + 1 words, then runs to the end.
  EXPECT_EQ(viewer->searchBuffer(text, "two", 1, false), text + 4);
  EXPECT_EQ(viewer->searchBuffer(text, "two", 0, false), text + 4);
  auto longer = view("a b c d e");
  char *t = const_cast<char *>(longer->contents());
  EXPECT_EQ(longer->searchBuffer(t, "d", 2, false), t + 9);
  EXPECT_EQ(longer->searchBuffer(t, "c", 2, false), t + 4);
}

TEST_F(HitSearchTest, BackwardSearchFindsEarlierWords) {
  auto viewer = view("one two three");
  char *text = const_cast<char *>(viewer->contents());
  EXPECT_EQ(viewer->searchBuffer(text + 13, "two", 0, true), text + 4);
  EXPECT_EQ(viewer->searchBuffer(text + 13, "one", 0, true), text);
}

TEST_F(HitSearchTest, TokenLength) {
  auto viewer = view("one, twelve");
  EXPECT_EQ(viewer->tokenLength(0), 3u);
  EXPECT_EQ(viewer->tokenLength(3), 0u);  // ','
  EXPECT_EQ(viewer->tokenLength(4), 0u);  // ' '
  EXPECT_EQ(viewer->tokenLength(5), 6u);
  EXPECT_EQ(viewer->tokenLength(6), 5u);  // from inside a word: its rest
  EXPECT_EQ(viewer->tokenLength(11), 0u);
  EXPECT_EQ(viewer->tokenLength(99), 0u);
}

struct OutlineCase {
  const char *text;
  const char *query;
  const char *expected;
};

TEST_F(HitSearchTest, OutlineKeepsTheLinesWithHitsOnce) {
  const OutlineCase cases[] = {
      {"alpha beta\ngamma delta\nbeta again\nnone here\nlast beta", "beta",
       "alpha beta\nbeta again\nlast beta"},
      {"beta beta beta\nzeta\n", "beta", "beta beta beta\n"},
      {"nothing\n", "beta", ""},
      {"first\nsecond\n", "*", "first\nsecond\n"},
      // Hits shorter than the minimum word length (3) do not count.
      {"ab x\nabc y\n", "ab*", "abc y\n"},
      {"ab\nabc\n", "+abc", ""},
  };
  for (const auto &c : cases) {
    auto viewer = view(c.text);
    viewer->convertToOutline(c.query);
    EXPECT_STREQ(viewer->contents(), c.expected) << c.query << " in " << c.text;
  }
}

TEST_F(HitSearchTest, OutlineTakesTheMaximumLengthAsItStands) {
  index->MaxWordLength = 0;  // not read as 100 here
  auto viewer = view("abc\ndef\n");
  viewer->convertToOutline("*");
  EXPECT_STREQ(viewer->contents(), "");
  index->MaxWordLength = 4;
  auto other = view("abcd\nabcde\n");
  other->convertToOutline("abcd*");
  EXPECT_STREQ(other->contents(), "abcd\n");
}

TEST_F(HitSearchTest, OutlineLeavesTheReadPositionAlone) {
  auto viewer = view("one\ntwo\nthree\nfour\n");
  EXPECT_STREQ(viewer->nextLine(), "one\n");
  viewer->convertToOutline("three");
  EXPECT_STREQ(viewer->contents(), "three\n");
  // Reading goes on four bytes into the block, inside the outline's line.
  EXPECT_STREQ(viewer->nextLine(), "e\n");
}

}  // namespace
}  // namespace contents_test
