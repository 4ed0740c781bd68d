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
      {"ab abc abcd", "ab?", {"ab", "abc"}, 5},
      {"ab abc abcd", "ab*", {"ab", "abc", "abcd"}, 5},
      {"abc abcbd", "a*bd", {"abcbd"}, 5},  // the star tries each later match
      {"ab abc", "ab", {"ab"}, 5},          // the term covers the whole word
      {"abc ac", "a*?", {}, 5},             // "*" then "?" looks for a literal "?"
      {"One TWO", "two Two", {"TWO"}, 5},   // text folded, query as it stands
      // Proximity: "a" is marked only with a "b" among the next N + 1 words.
      {"a x x x b", "a <3 b", {"a", "b"}, 5},
      {"a x x x x b", "a <3 b", {"b"}, 5},
      // "<9" carries no number: the default distance applies.
      {"a x b", "a <9 b", {"a", "b"}, 1},
      {"a x x b", "a <9 b", {"b"}, 1},
      // The 9 ends a number: "<19" is a distance of 1.
      {"a x b", "a <19 b", {"a", "b"}, 5},
      {"a x x b", "a <19 b", {"b"}, 5},
      // Proximity needs a later word: a "b" before the "a" does not count.
      {"b a", "a <3 b", {"b"}, 5},
  };
  for (const auto &c : cases) {
    auto viewer = view(c.text, c.defaultDistance);
    EXPECT_EQ(hits(*viewer, c.query), c.expected) << '"' << c.query << "\" in \"" << c.text << '"';
  }
}

TEST_F(HitSearchTest, PositionsCountFromOneWithZeroForNone) {
  auto viewer = view("one two one");
  EXPECT_EQ(viewer->searchBuffer(0u, "one"), 1u);
  EXPECT_EQ(viewer->searchBuffer(3u, "one"), 9u);
  EXPECT_EQ(viewer->searchBuffer(9u, "one"), 0u);
  EXPECT_EQ(viewer->searchBuffer(500u, "one"), 0u);
  EXPECT_TRUE(viewer->containsHit("two"));
  EXPECT_FALSE(viewer->containsHit("+two"));
}

TEST_F(HitSearchTest, WordSearchGivesTheNulForNoneAndGoesBackwards) {
  auto viewer = view("one two");
  char *t = const_cast<char *>(viewer->contents());
  EXPECT_EQ(viewer->searchBuffer(t, "six", 0, false), t + 7);
  EXPECT_EQ(viewer->searchBuffer(t + 7, "one", 0, true), t);
}

TEST_F(HitSearchTest, TokenLengthFromInsideAWordIsItsRest) {
  auto viewer = view("one, twelve");
  EXPECT_EQ(viewer->tokenLength(3), 0u);  // ','
  EXPECT_EQ(viewer->tokenLength(6), 5u);
  EXPECT_EQ(viewer->tokenLength(99), 0u);
}

struct OutlineCase {
  const char *text;
  const char *query;
  const char *expected;
  int maxWordLength;
};

TEST_F(HitSearchTest, OutlineKeepsTheLinesWithHitsOnce) {
  const OutlineCase cases[] = {
      {"alpha beta\ngamma delta\nbeta again\nlast beta", "beta", "alpha beta\nbeta again\nlast beta", 16},
      {"beta beta beta\nzeta\n", "beta", "beta beta beta\n", 16},
      {"first\nsecond\n", "*", "first\nsecond\n", 16},
      // Hits outside the word lengths (3 to the maximum) do not count; a
      // maximum of 0 is taken as it stands.
      {"ab x\nabc y\n", "ab*", "abc y\n", 16},
      {"abcd\nabcde\n", "abcd*", "abcd\n", 4},
      {"abc\ndef\n", "*", "", 0},
      {"ab\nabc\n", "+abc", "", 16},
  };
  for (const auto &c : cases) {
    index->MaxWordLength = c.maxWordLength;
    auto viewer = view(c.text);
    viewer->convertToOutline(c.query);
    EXPECT_STREQ(viewer->contents(), c.expected) << c.query << " in " << c.text;
  }
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
