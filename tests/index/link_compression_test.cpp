// Link compression: block layout, chaining across runs, counts, status texts and clean-up after errors.

#include "report/message_keys.h"
#include "test_support.h"

using namespace kurvo_test;

namespace {

class LinkCompression : public ::testing::Test {
 protected:
  void open(int ranking) {
    index = std::make_unique<CKurvoIndex>(true, tmp.path());
    setWordMasks(*index);
    index->UseRanking = ranking;
    index->emptyIndex();
    index->newFileLinks();
  }
  // The word links of a later run, as pruning makes them.
  void nextRun() { index->wordLinks = new CWordLinks(tmp.path() + "temp", 65535, 1048575, index->UseRanking); }
  void see(const char *word, uint32_t file, int times = 1) {
    for (int i = 0; i < times; ++i) index->indexWord(word, file);
  }
  WordFiles filesOf(const char *word) { return readWordFiles(*index, index->words->lookup(word)); }
  uint32_t listPosition(const char *word) {
    return load32(index->words->getData(index->words->lookup(word)) + word_data::kListPosition);
  }

  CapturedMessages messages;
  TempDir tmp;
  std::unique_ptr<CKurvoIndex> index;
};

using Block = std::vector<FileLink>;

}  // namespace

TEST_F(LinkCompression, EachRunChainsANewBlockInFront) {
  open(0);
  see("word", 100);
  see("word", 200);
  see("old", 100);
  see("old", 200);
  index->compressLinks();
  // Two slots and a next-list word per block: the pair for 100 in slot 0.
  EXPECT_EQ(index->links->getUsed(), 44u);
  EXPECT_EQ(listPosition("word"), 20u);
  EXPECT_EQ(index->links->getNextList(28), 0u);
  EXPECT_EQ(filesOf("word"), (WordFiles{200, 0, {{{100, 255}}}}));
  EXPECT_TRUE(!index->wordLinks && !std::filesystem::exists(tmp.path() + "temp"));

  nextRun();
  see("word", 300);
  index->compressLinks();
  // Three slots at 44..55: the pair for 200 in slot 1, slot 0 never read.
  EXPECT_EQ(listPosition("word"), 48u);
  EXPECT_EQ(index->links->getNextList(56), 20u);
  EXPECT_EQ(filesOf("word"), (WordFiles{300, 0, {{{200, 255}}, {{100, 255}}}}));
  // A word not seen in the later run gets an empty block.
  EXPECT_EQ(filesOf("old").blocks, (std::vector<Block>{{}, {{100, 255}}}));
}

// Beyond the classic layout: a later run's block holds only that run's files.
TEST_F(LinkCompression, SizedBlocksHoldTheRunsFilesOnly) {
  open(0);
  index->SizedListBlocks = 1;
  see("word", 100);
  see("word", 200);
  see("old", 100);
  see("old", 200);
  index->compressLinks();
  EXPECT_EQ(index->links->getUsed(), 44u);  // the first run's blocks are the classic ones
  nextRun();
  see("word", 300);
  index->compressLinks();
  // One slot and the top slot at 44..51, the next-list word at 52; none for "old".
  EXPECT_EQ(index->links->getUsed(), 56u);
  EXPECT_EQ(listPosition("word"), 44u);
  EXPECT_EQ(index->links->getNextList(52), 20u);
  EXPECT_EQ(filesOf("word").blocks, (std::vector<Block>{{{200, 255}}, {{100, 255}}}));
  EXPECT_EQ(filesOf("old").blocks, (std::vector<Block>{{{100, 255}}}));
}

TEST_F(LinkCompression, CountsTravelWithTheirFiles) {
  open(1);
  see("word", 100, 3);
  see("word", 200);
  see("word", 300, 2);
  see("many", 100, 300);
  see("many", 200);
  index->compressLinks();
  EXPECT_EQ(filesOf("word"), (WordFiles{300, 1, {{{200, 0}, {100, 2}}}}));
  EXPECT_EQ(filesOf("many").blocks, (std::vector<Block>{{{100, 255}}}));
  // Five-byte entries: (E + 1) * 5 + 4 per block.
  EXPECT_EQ(index->links->getUsed(), 20u + 19u + 14u);
}

TEST_F(LinkCompression, ReportsEveryWordWhenFewWordsWereIndexed) {
  open(0);
  for (const char *word : {"one", "two", "three"}) see(word, 100);
  for (const char *word : {"one", "two", "three"}) see(word, 200);
  index->ShowStatus = 1;
  index->compressLinks();
  EXPECT_EQ(messages.statuses, (std::vector<Message>{{kurvo_keys::kCountingCompress, "0"},
                                                     {kurvo_keys::kCountingCompress, "5"},
                                                     {kurvo_keys::kCountingCompress, "10"},
                                                     {kurvo_keys::kCompLinksFmt, "0\t50000"},
                                                     {kurvo_keys::kDone, ""}}));
}

TEST_F(LinkCompression, AnErrorDropsTheTablesAndIsRaisedAgain) {
  open(1);
  see("word", 100);
  see("word", 200);
  // A block too large for one allocation.
  store32(index->words->getData(index->words->lookup("word")) + word_data::kEarlierFiles, 300000);
  EXPECT_TRUE(throwsKurvo([&] { index->compressLinks(); }));
  ASSERT_NE(messages.lastError(), nullptr);
  EXPECT_EQ(messages.lastError()->key, kurvo_keys::kGetHugeSpace);
  EXPECT_TRUE(!index->links && !index->wordLinks && !index->files && !index->words && index->skipWords);
  EXPECT_FALSE(std::filesystem::exists(tmp.path() + "temp"));
}
