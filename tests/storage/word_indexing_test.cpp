// Word indexing into the word table and word links, and loading the skip words.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "api/message_keys.h"
#include "index/kurvo_index.h"
#include "storage/byte_io.h"
#include "test_support.h"

using kurvo_test::CapturedMessages;
using kurvo_test::TempDir;
using kurvo_test::throwsKurvo;

namespace {

struct WordState {
  uint32_t currentFile;
  uint16_t counter;
  uint32_t earlierFiles;
};

struct Link {
  uint32_t file;
  uint32_t word;
  unsigned count;
};

class WordIndexing : public ::testing::Test {
 protected:
  void SetUp() override {
    index = std::make_unique<CKurvoIndex>(true, dir.path());
    for (int c = 'a'; c <= 'z'; ++c) {
      index->setValidCharMask(c, true);
      index->setValidCharMask(c - 'a' + 'A', true);
    }
    index->newFileLinks();
    fileA = index->files->addFile("a.txt");
    fileB = index->files->addFile("b.txt");
  }

  WordState state(const char *word) {
    const char *data = index->words->getData(index->words->lookup(word));
    return {load32(data + word_data::kCurrentFile), load16(data + word_data::kCounter),
            load32(data + word_data::kEarlierFiles)};
  }

  // Every (file, word, count) in the word links, in order.
  std::vector<Link> links() {
    std::vector<Link> out;
    uint32_t position = 16;
    for (uint32_t file = index->wordLinks->getFile(position); file != 0;
         file = index->wordLinks->getFile(position)) {
      unsigned char count = 0;
      for (uint32_t word = index->wordLinks->getWord(position, count); word != 0;
           word = index->wordLinks->getWord(position, count))
        out.push_back({file, word, count});
    }
    return out;
  }

  void repeat(const char *word, uint32_t file, int times) {
    for (int i = 0; i < times; ++i) index->indexWord(word, file);
  }

  TempDir dir;
  CapturedMessages messages;
  std::unique_ptr<CKurvoIndex> index;
  uint32_t fileA = 0;
  uint32_t fileB = 0;
};

TEST_F(WordIndexing, FirstOccurrenceAddsTheWord) {
  uint32_t number = index->indexWord("alpha", fileA);
  EXPECT_EQ(number, index->words->lookup("alpha"));
  EXPECT_EQ(index->WordsIndexed, 1u);
  WordState s = state("alpha");
  EXPECT_EQ(s.currentFile, fileA);
  EXPECT_EQ(s.counter, 0u);
  EXPECT_EQ(s.earlierFiles, 0u);
  EXPECT_TRUE(links().empty());
}

TEST_F(WordIndexing, CountsWithRanking) {
  repeat("alpha", fileA, 3);
  EXPECT_EQ(state("alpha").counter, 2u);
  index->indexWord("alpha", fileB);
  uint32_t alpha = index->words->lookup("alpha");
  auto written = links();
  ASSERT_EQ(written.size(), 1u);
  EXPECT_EQ(written[0].file, fileA);
  EXPECT_EQ(written[0].word, alpha);
  EXPECT_EQ(written[0].count, 2u);
  WordState s = state("alpha");
  EXPECT_EQ(s.currentFile, fileB);
  EXPECT_EQ(s.counter, 0u);
  EXPECT_EQ(s.earlierFiles, 1u);
  EXPECT_EQ(index->WordsIndexed, 1u);
}

TEST_F(WordIndexing, WithoutRankingTheCountHandedOnIsZero) {
  index->UseRanking = 0;
  repeat("alpha", fileA, 3);
  EXPECT_EQ(state("alpha").counter, 0u);
  index->indexWord("alpha", fileB);
  auto written = links();
  ASSERT_EQ(written.size(), 1u);
  EXPECT_EQ(written[0].file, fileA);
  EXPECT_EQ(written[0].count, 0u);
  WordState s = state("alpha");
  EXPECT_EQ(s.currentFile, fileB);
  EXPECT_EQ(s.counter, 0u);
  EXPECT_EQ(s.earlierFiles, 1u);
}

TEST_F(WordIndexing, CountStopsAt255) {
  repeat("alpha", fileA, 256);
  EXPECT_EQ(state("alpha").counter, 255u);
  repeat("alpha", fileA, 10);
  EXPECT_EQ(state("alpha").counter, 255u);
  index->indexWord("alpha", fileB);
  auto written = links();
  ASSERT_EQ(written.size(), 1u);
  EXPECT_EQ(written[0].count, 255u);
}

TEST_F(WordIndexing, WithoutWordLinksNothingIsRecorded) {
  index->emptyIndex();
  delete index->wordLinks;
  index->wordLinks = nullptr;
  EXPECT_TRUE(throwsKurvo([&] { index->indexWord("alpha", fileA); }));
  EXPECT_EQ(messages.errors.back().key, kurvo_keys::kAssertionFailed);
  EXPECT_EQ(index->WordsIndexed, 0u);
}

TEST_F(WordIndexing, WordsOfOneFileFormOneGroup) {
  index->indexWord("alpha", fileA);
  index->indexWord("beta", fileA);
  index->indexWord("alpha", fileB);
  index->indexWord("beta", fileB);
  const uint32_t fileC = index->files->addFile("c.txt");
  index->indexWord("alpha", fileC);
  index->indexWord("beta", fileC);
  auto written = links();
  ASSERT_EQ(written.size(), 4u);
  EXPECT_EQ(written[0].file, fileA);
  EXPECT_EQ(written[1].file, fileA);
  EXPECT_EQ(written[2].file, fileB);
  EXPECT_EQ(written[3].file, fileB);
  EXPECT_EQ(state("beta").earlierFiles, 2u);
}

TEST_F(WordIndexing, SkipWordChangesNothing) {
  const uint32_t skip = index->indexExcludedWord("the");
  index->indexWord("alpha", fileA);
  const uint32_t used = index->words->getUsed();
  const uint32_t linksUsed = index->wordLinks->getUsed();
  EXPECT_EQ(index->indexWord("The", fileA), skip);
  EXPECT_EQ(index->indexWord("the", fileB), skip);
  EXPECT_EQ(index->WordsIndexed, 1u);
  EXPECT_EQ(index->words->lookup("the"), 0u);
  EXPECT_EQ(index->words->getUsed(), used);
  EXPECT_EQ(index->wordLinks->getUsed(), linksUsed);
  EXPECT_EQ(state("alpha").counter, 0u);
}

TEST_F(WordIndexing, ExcludedWordIsAddedOnce) {
  const uint32_t first = index->indexExcludedWord("the");
  EXPECT_NE(first, 0u);
  EXPECT_EQ(index->indexExcludedWord("THE"), first);
  EXPECT_EQ(index->skipWords->getEntryCount(), 1u);
}

class SkipFile : public WordIndexing {
 protected:
  void load(const std::string &contents) {
    index->skipFilePath = dir.file("skip.txt");
    dir.write("skip.txt", contents);
    index->indexExclusions();
  }
  bool skipped(const char *word) { return index->skipWords->lookup(word) != 0; }
};

TEST_F(SkipFile, WordsAreSplitAndLowerCased) {
  load("The AND, of\n\nin-to");
  EXPECT_TRUE(skipped("the"));
  EXPECT_TRUE(skipped("and"));
  EXPECT_TRUE(skipped("of"));
  EXPECT_TRUE(skipped("in"));
  // "to" is a final fragment of two bytes without a separator.
  EXPECT_FALSE(skipped("to"));
  EXPECT_STREQ(index->skipWords->getText(index->skipWords->lookup("the")), "the");
  EXPECT_EQ(index->BytesRead, 18.0);
}

TEST_F(SkipFile, ShortFinalFragmentIsDropped) {
  struct Case {
    const char *contents;
    const char *word;
    bool added;
  };
  const Case cases[] = {
      {"alpha ab", "ab", false}, {"alpha a", "a", false},  {"alpha ab\n", "ab", true},
      {"alpha abc", "abc", true}, {"ab", "ab", false},     {"ab\r\n", "ab", true},
  };
  for (const Case &c : cases) {
    load(c.contents);
    EXPECT_EQ(skipped(c.word), c.added) << c.contents;
  }
}

TEST_F(SkipFile, TrailingCharactersOnlyContinueAWord) {
  index->setValidTrailingMask('\'', true);
  load("'tis don't\n");
  EXPECT_TRUE(skipped("tis"));
  EXPECT_TRUE(skipped("don't"));
  EXPECT_FALSE(skipped("'tis"));
}

TEST_F(SkipFile, TableIsRebuiltEachTime) {
  load("alpha\n");
  load("beta\n");
  EXPECT_FALSE(skipped("alpha"));
  EXPECT_TRUE(skipped("beta"));
}

TEST_F(SkipFile, ReportsItsStartWhenShowingStatus) {
  index->ShowStatus = 1;
  load("alpha\n");
  ASSERT_EQ(messages.statuses.size(), 1u);
  EXPECT_EQ(messages.statuses[0].key, kurvo_keys::kIndexingExcluded);
  EXPECT_EQ(messages.statuses[0].argument, "");
}

TEST_F(SkipFile, DefaultPathIsInTheConfigurationFolder) {
  kurvo_test::writeFile(index->configurationFolder() + "skipfile.txt", "alpha\n");
  index->indexExclusions();
  EXPECT_TRUE(skipped("alpha"));
}

TEST_F(SkipFile, MissingFileRaisesSkipOpenFailWithItsPath) {
  index->skipFilePath = dir.file("nothere.txt");
  EXPECT_TRUE(throwsKurvo([&] { index->indexExclusions(); }));
  ASSERT_EQ(messages.errors.size(), 1u);
  EXPECT_EQ(messages.errors[0].key, kurvo_keys::kSkipOpenFail);
  EXPECT_EQ(messages.errors[0].argument, dir.file("nothere.txt"));
  ASSERT_NE(index->skipWords, nullptr);
  EXPECT_EQ(index->skipWords->getEntryCount(), 0u);
}

TEST_F(SkipFile, MissingDefaultFileNamesTheFullPath) {
  EXPECT_TRUE(throwsKurvo([&] { index->indexExclusions(); }));
  ASSERT_EQ(messages.errors.size(), 1u);
  EXPECT_EQ(messages.errors[0].argument, index->configurationFolder() + "skipfile.txt");
}

TEST_F(SkipFile, WordAcrossTheReadBoundaryIsJoined) {
  // The first read ends inside "hello"; it is carried in front of the next.
  load(std::string(65530, ' ') + "hello world\n");
  EXPECT_TRUE(skipped("hello"));
  EXPECT_TRUE(skipped("world"));
  EXPECT_FALSE(skipped("hel"));
}

TEST_F(SkipFile, CarriedBytesAreReadAgainWhenNothingIsCarriedNext) {
  // Read 1 ends inside "hello" (carry of 5). Read 2 ends on a separator, so
  // the carry length stays 5 and "hello" is read again before read 3.
  std::string contents = std::string(65530, ' ') + "hello";
  contents += " world" + std::string(65530 - 6, ' ');
  contents += "there\n";
  load(contents);
  EXPECT_TRUE(skipped("hello"));
  EXPECT_TRUE(skipped("world"));
  EXPECT_TRUE(skipped("hellothere"));
  EXPECT_FALSE(skipped("there"));
}

TEST_F(SkipFile, BufferCarriesAnUnfinishedWord) {
  char buffer[] = "Alpha BETA gam";
  index->partialWord[0] = 0;
  index->indexExcludeBuffer(buffer, sizeof buffer - 1);
  EXPECT_TRUE(skipped("alpha"));
  EXPECT_TRUE(skipped("beta"));
  EXPECT_FALSE(skipped("gam"));
  EXPECT_STREQ(index->partialWord, "gam");
}

}  // namespace
