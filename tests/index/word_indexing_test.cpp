// Word indexing into the word table and word links, and loading the skip words.

#include <cstring>

#include "test_support.h"

using namespace kurvo_test;

namespace {

class WordIndexing : public ::testing::Test {
 protected:
  void SetUp() override {
    index.reset();  // its files are made afresh
    index = std::make_unique<CKurvoIndex>(true, dir.path());
    for (int c = 'a'; c <= 'z'; ++c) {
      index->setValidCharMask(c, true);
      index->setValidCharMask(c - 'a' + 'A', true);
    }
  }
  void start(int ranking) {
    index->UseRanking = ranking;
    index->newFileLinks();
    fileA = index->files->addFile("a.txt");
    fileB = index->files->addFile("b.txt");
  }
  void repeat(const char *word, uint32_t file, int times) {
    for (int i = 0; i < times; ++i) index->indexWord(word, file);
  }
  const char *data(const char *word) { return index->words->getData(index->words->lookup(word)); }

  // The word links after their header.
  std::string links() const { return std::string(index->wordLinks->getPointer(16), index->wordLinks->getUsed() - 16); }

  void loadSkipFile(const std::string &contents) {
    index->skipFilePath = dir.file("skip.txt");
    dir.write("skip.txt", contents);
    index->indexExclusions();
  }
  bool skipped(const char *word) { return index->skipWords->lookup(word) != 0; }

  TempDir dir;
  CapturedMessages messages;
  std::unique_ptr<CKurvoIndex> index;
  uint32_t fileA = 0;
  uint32_t fileB = 0;
};

}  // namespace

TEST_F(WordIndexing, ThreeTimesInAOnceInBWithAndWithoutRanking) {
  struct Case {
    int ranking, times;
    unsigned counterInA, handedOn;
  };
  // Without ranking the links carry no count bytes.
  const Case cases[] = {{1, 3, 2, 2}, {0, 3, 0, 0}, {1, 256, 255, 255}, {1, 300, 255, 255}};
  for (const Case &c : cases) {
    SCOPED_TRACE(c.times + 1000 * c.ranking);
    SetUp();
    start(c.ranking);
    repeat("alpha", fileA, c.times);
    EXPECT_EQ(load16(data("alpha") + word_data::kCounter), c.counterInA);
    EXPECT_TRUE(links().empty());
    index->indexWord("Alpha", fileB);
    std::string link = wordBytes({fileA, index->words->lookup("alpha")});
    if (c.ranking) link += static_cast<char>(c.handedOn);
    EXPECT_EQ(links(), link);
    // The whole entry in front of the text: next in bucket, current file,
    // counter, two spare bytes, list position, earlier files.
    const char *text = index->words->getText(index->words->lookup("alpha"));
    EXPECT_EQ(std::string(text - 20, 20), wordBytes({0, fileB}) + std::string(8, '\0') + wordBytes({1}));
    EXPECT_EQ(index->WordsIndexed, 1u);
  }
}

// n occurrences at once leave the word data and links n single ones leave,
// from a new word, a word of another file, or counters below, at and past 255.
TEST_F(WordIndexing, OccurrencesAtOnceAreThoseOneByOne) {
  for (int ranking : {0, 1}) {
    for (uint16_t counter : {0, 200, 255, 300, 65535}) {
      for (uint32_t times : {1u, 2u, 55u, 56u, 300u}) {
        std::string state[2];
        for (int atOnce : {0, 1}) {
          SetUp();
          start(ranking);
          index->indexWord("alpha", fileB);
          index->indexWord("beta", fileA);
          store16(index->words->foundData(index->words->lookup("alpha")) + word_data::kCounter, counter);
          // alpha in its file, then in another; beta in its own; gamma new.
          for (const auto &[word, file] :
               {std::pair{"alpha", fileB}, {"alpha", fileA}, {"beta", fileA}, {"gamma", fileB}}) {
            const uint32_t hash = textHash(word), length = static_cast<uint32_t>(std::strlen(word));
            if (atOnce)
              index->indexWord(word, file, hash, length, times);
            else
              for (uint32_t i = 0; i < times; ++i) index->indexWord(word, file, hash, length);
          }
          for (const char *word : {"alpha", "beta", "gamma"}) state[atOnce] += std::string(data(word) - 4, 20);
          state[atOnce] += links();
        }
        EXPECT_EQ(state[1], state[0]) << ranking << " " << counter << " " << times;
      }
    }
  }
}

TEST_F(WordIndexing, SkipWordChangesNothing) {
  start(1);
  const uint32_t skip = index->indexExcludedWord("the");
  EXPECT_EQ(index->indexExcludedWord("THE"), skip);
  index->indexWord("alpha", fileA);
  const uint32_t used = index->words->getUsed();
  EXPECT_EQ(index->indexWord("The", fileA), skip);
  EXPECT_EQ(index->indexWord("the", fileB), skip);
  EXPECT_EQ(index->WordsIndexed, 1u);
  EXPECT_EQ(index->words->getUsed(), used);
  EXPECT_TRUE(links().empty());
}

TEST_F(WordIndexing, SkipFileWordsAreSplitLowerCasedAndShortFinalFragmentsDropped) {
  index->setValidTrailingMask('\'', true);
  struct Case {
    const char *contents;
    std::vector<const char *> skippedWords, notSkipped;
  };
  // A final fragment of one or two bytes is dropped; the table is rebuilt each time.
  // clang-format off
  const Case cases[] = {
      {"The AND, of\n\nin-to 'tis don't\n", {"the", "and", "of", "in", "to", "tis", "don't"}, {"'tis"}},
      {"alpha ab", {"alpha"}, {"ab"}}, {"alpha a", {"alpha"}, {"a"}}, {"ab", {}, {"ab"}}, {"alpha ab\n", {"ab"}, {}},
      {"alpha abc", {"abc"}, {}}, {"ab\r\n", {"ab"}, {"alpha"}}};
  // clang-format on
  for (const Case &c : cases) {
    loadSkipFile(c.contents);
    for (const char *word : c.skippedWords) EXPECT_TRUE(skipped(word)) << c.contents << word;
    for (const char *word : c.notSkipped) EXPECT_FALSE(skipped(word)) << c.contents << word;
  }
  EXPECT_STREQ(index->skipWords->getText(index->skipWords->lookup("AB")), "ab");
}

TEST_F(WordIndexing, SkipFileCarriesAWordAcrossTheReadBoundary) {
  // Read 1 ends inside "hello" and carries it in front of read 2. Read 2 ends
  // on a separator, so the carry length stays 5 and "hello" is read again
  // before read 3.
  std::string contents = std::string(65530, ' ') + "hello";
  contents += " world" + std::string(65530 - 6, ' ') + "there\n";
  loadSkipFile(contents);
  EXPECT_TRUE(skipped("hello"));
  EXPECT_TRUE(skipped("world"));
  EXPECT_TRUE(skipped("hellothere"));
  EXPECT_FALSE(skipped("hel"));
  EXPECT_FALSE(skipped("there"));
}
