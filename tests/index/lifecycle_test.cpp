// Index lifecycle: starting afresh, collecting links, storing and reopening.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "api/message_keys.h"
#include "index/kurvo_index.h"
#include "storage/byte_io.h"
#include "storage/file_storage.h"
#include "test_support.h"

using kurvo_test::CapturedMessages;
using kurvo_test::TempDir;
using kurvo_test::throwsKurvo;

namespace {

class Lifecycle : public ::testing::Test {
 protected:
  void SetUp() override {
    index = std::make_unique<CKurvoIndex>(true, dir.path());
    for (int c = 'a'; c <= 'z'; ++c) {
      index->setValidCharMask(c, true);
      index->setValidCharMask(c - 'a' + 'A', true);
    }
  }
  // Adds a record named name under parent and returns its number.
  uint32_t addRecord(const char *name, uint32_t parent) {
    uint32_t number = index->files->addFile(name);
    file_record::setParent(index->files->getData(number), parent);
    return number;
  }
  TempDir dir;
  CapturedMessages messages;
  std::unique_ptr<CKurvoIndex> index;
};

TEST_F(Lifecycle, EmptyIndexStartsAfreshButKeepsSkipWords) {
  index->indexExcludedWord("the");
  index->newFileLinks();
  uint32_t folder = addRecord("/docs", 0);
  index->indexWord("alpha", folder);
  index->IsUpdate = 1;
  index->WordsIndexed = 7;
  index->DirectoriesRead = 3;
  index->ContentsIndexed = 2;
  index->FilesIndexed = 5;
  index->BytesRead = 99.0;

  index->emptyIndex();
  EXPECT_EQ(index->IsUpdate, 0);
  EXPECT_EQ(index->WordsIndexed, 0u);
  EXPECT_EQ(index->DirectoriesRead, 0u);
  EXPECT_EQ(index->ContentsIndexed, 0u);
  EXPECT_EQ(index->FilesIndexed, 0u);
  EXPECT_EQ(index->BytesRead, 0.0);
  EXPECT_EQ(index->links, nullptr);
  ASSERT_NE(index->files, nullptr);
  ASSERT_NE(index->words, nullptr);
  EXPECT_EQ(index->words->lookup("alpha"), 0u);
  EXPECT_EQ(index->files->getFirst(), 0u);
  EXPECT_NE(index->wordLinks, nullptr);
  // The first progress report of the run is due at once.
  EXPECT_LT(index->lastStatusTime, std::time(nullptr));
  EXPECT_GT(index->lastStatusTime, 0);

  // The rebuilt index still skips the word without rereading the skip file.
  ASSERT_NE(index->skipWords, nullptr);
  uint32_t skipEntry = index->skipWords->lookup("the");
  ASSERT_NE(skipEntry, 0u);
  index->newFileLinks();
  uint32_t file = addRecord("/docs", 0);
  EXPECT_EQ(index->indexWord("the", file), skipEntry);
  EXPECT_EQ(index->words->lookup("the"), 0u);
  EXPECT_EQ(index->WordsIndexed, 0u);
}

TEST_F(Lifecycle, NewFileLinksReservesTheFirstWordAndMakesWordLinks) {
  index->emptyIndex();
  index->newFileLinks();
  ASSERT_NE(index->links, nullptr);
  ASSERT_NE(index->wordLinks, nullptr);
  EXPECT_EQ(index->links->getUsed(), 20u);
  EXPECT_EQ(index->wordLinks->getUsed(), 16u);
  EXPECT_TRUE(index->links->hasCounts());
  EXPECT_TRUE(index->wordLinks->hasCounts());
}

TEST_F(Lifecycle, LinksFollowTheRankingSetting) {
  index->UseRanking = 0;
  index->newFileLinks();
  EXPECT_FALSE(index->links->hasCounts());
  EXPECT_FALSE(index->wordLinks->hasCounts());
}

TEST_F(Lifecycle, StoreMakesTablesReadOnlyAndEnableWriteUndoesIt) {
  index->enableWrite(true);
  index->storeStorage(dir.path());
  EXPECT_FALSE(index->words->isWritable());
  EXPECT_FALSE(index->files->isWritable());
  EXPECT_FALSE(index->skipWords->isWritable());
  EXPECT_FALSE(index->links->isWritable());
  index->enableWrite(true);
  EXPECT_TRUE(index->words->isWritable());
  EXPECT_TRUE(index->files->isWritable());
  EXPECT_TRUE(index->skipWords->isWritable());
  EXPECT_TRUE(index->links->isWritable());
}

TEST_F(Lifecycle, StoringTwiceWritesTheSameSummary) {
  index->storeStorage(dir.path());
  std::string first = dir.read("hash");
  index->storeStorage(dir.path());
  EXPECT_FALSE(first.empty());
  EXPECT_EQ(dir.read("hash"), first);
}

TEST_F(Lifecycle, StoringIntoAMissingFolderRaisesStorageReadError) {
  const std::string missing = dir.path() + "missing/";
  EXPECT_TRUE(throwsKurvo([&] { index->storeStorage(missing); }));
  ASSERT_EQ(messages.errors.size(), 1u);
  EXPECT_EQ(messages.errors[0].key, kurvo_keys::kStorageReadError);
  EXPECT_EQ(messages.errors[0].argument, missing);
  EXPECT_FALSE(index->words->isWritable());
}

TEST_F(Lifecycle, StoredIndexReopensWithEveryWordAndRecord) {
  index->indexExcludedWord("and");
  index->newFileLinks();
  const uint32_t folder = addRecord("/docs", 0);
  const uint32_t first = addRecord("one.txt", folder);
  const uint32_t second = addRecord("two.txt", folder);
  const std::vector<std::string> firstWords = {"alpha", "beta", "gamma", "alpha"};
  const std::vector<std::string> secondWords = {"beta", "delta", "and"};
  for (const std::string &w : firstWords) index->indexWord(w.c_str(), first);
  for (const std::string &w : secondWords) index->indexWord(w.c_str(), second);
  const uint32_t betaNumber = index->words->lookup("beta");
  const uint32_t linksUsed = index->links->getUsed();
  index->storeStorage(dir.path());
  index.reset();

  CKurvoIndex reopened(false, dir.path());
  for (const char *w : {"alpha", "beta", "gamma", "delta"})
    EXPECT_NE(reopened.words->lookup(w), 0u) << w;
  EXPECT_EQ(reopened.words->lookup("and"), 0u);
  EXPECT_NE(reopened.skipWords->lookup("and"), 0u);
  EXPECT_EQ(reopened.words->lookup("beta"), betaNumber);
  EXPECT_EQ(reopened.files->lookupFile("/docs", 0), folder);
  EXPECT_EQ(reopened.files->lookupFile("one.txt", folder), first);
  EXPECT_EQ(reopened.files->lookupFile("TWO.TXT", folder), second);
  EXPECT_EQ(reopened.links->getUsed(), linksUsed);
  EXPECT_TRUE(reopened.links->hasCounts());

  const char *beta = reopened.words->getData(betaNumber);
  EXPECT_EQ(load32(beta + word_data::kCurrentFile), second);
  EXPECT_EQ(load32(beta + word_data::kEarlierFiles), 1u);
}

TEST_F(Lifecycle, ReopenedIndexTakesMoreWords) {
  index->newFileLinks();
  const uint32_t first = addRecord("one.txt", 0);
  index->indexWord("alpha", first);
  index->storeStorage(dir.path());
  index.reset();

  CKurvoIndex reopened(false, dir.path());
  reopened.wordLinks = new CWordLinks(dir.file("temp"), 65535, 1048575, 1);
  const uint32_t second = reopened.files->addFile("two.txt");
  reopened.indexWord("alpha", second);
  reopened.indexWord("beta", second);
  const char *alpha = reopened.words->getData(reopened.words->lookup("alpha"));
  EXPECT_EQ(load32(alpha + word_data::kCurrentFile), second);
  EXPECT_EQ(load32(alpha + word_data::kEarlierFiles), 1u);
  EXPECT_NE(reopened.words->lookup("beta"), 0u);
}

}  // namespace
