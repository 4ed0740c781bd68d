// The index object: construction, defaults, character classes, time base and progress.
#include <gtest/gtest.h>

#include <memory>

#include "api/message_keys.h"
#include "index/kurvo_index.h"
#include "test_support.h"

using kurvo_test::CapturedMessages;
using kurvo_test::TempDir;
using kurvo_test::throwsKurvo;

namespace {

class IndexObject : public ::testing::Test {
 protected:
  void SetUp() override { index = std::make_unique<CKurvoIndex>(true, dir.path()); }
  TempDir dir;
  std::unique_ptr<CKurvoIndex> index;
};

TEST_F(IndexObject, DefaultsAfterConstruction) {
  EXPECT_EQ(index->UseRanking, 1);
  EXPECT_EQ(index->MinWordLength, 3);
  EXPECT_EQ(index->MaxWordLength, 16);
  EXPECT_EQ(index->IsUpdate, 0);
  EXPECT_EQ(index->TrackAll, 1);
  EXPECT_EQ(index->NumberHandling, 0);
  EXPECT_EQ(index->includePatterns, nullptr);
  EXPECT_EQ(index->includeAnalyzers, nullptr);
  EXPECT_EQ(index->excludePatterns, nullptr);
  EXPECT_TRUE(index->analyzers.empty());
  EXPECT_TRUE(index->temporaryDirectory.empty());
  EXPECT_TRUE(index->skipFilePath.empty());
  EXPECT_EQ(index->storagePath, dir.path());
  EXPECT_EQ(index->partialWord[0], 0);
}

TEST_F(IndexObject, CreateBuildsTheFourTablesButNoWordLinks) {
  EXPECT_NE(index->files, nullptr);
  EXPECT_NE(index->words, nullptr);
  EXPECT_NE(index->skipWords, nullptr);
  EXPECT_NE(index->links, nullptr);
  EXPECT_EQ(index->wordLinks, nullptr);
  EXPECT_EQ(index->words->getBucketCount(), 40000u);
  EXPECT_EQ(index->skipWords->getBucketCount(), 1000u);
  EXPECT_EQ(index->files->getBucketCount(), 1000u);
}

TEST_F(IndexObject, SkippedFolderIsCutBeforeTheFourthSlashFromTheEnd) {
  // dir is ".../a/b/c/store/": the cut falls before "/b".
  const std::string &path = dir.path();
  const std::string above = path.substr(0, path.size() - std::string("/b/c/store/").size());
  EXPECT_EQ(index->skippedFolder, above);
  EXPECT_EQ(index->configurationFolder(), above + "/");
}

TEST_F(IndexObject, StoragePathWithoutTrailingSlashCutsOneLevelHigher) {
  // ".../a/b/c/store" (no final '/') is cut before "/a".
  std::string path = dir.path();
  path.pop_back();
  CKurvoIndex other(true, path);
  const std::string expected = path.substr(0, path.size() - std::string("/a/b/c/store").size());
  EXPECT_EQ(other.skippedFolder, expected);
}

TEST_F(IndexObject, ControlClassIsOneToSixEightAndFourteenToThirtyOne) {
  for (int c : {1, 2, 6, 8, 14, 31}) EXPECT_EQ(index->controlCharMask[c], 1) << c;
  for (int c : {0, 7, 9, 10, 11, 12, 13, 32, 127, 255}) EXPECT_EQ(index->controlCharMask[c], 0) << c;
}

TEST_F(IndexObject, HostMasksStartEmptyAndStoreBooleans) {
  for (int c = 0; c < 256; ++c) {
    ASSERT_EQ(index->validCharMask[c], 0);
    ASSERT_EQ(index->validTrailingMask[c], 0);
    ASSERT_EQ(index->validViewableMask[c], 0);
    ASSERT_EQ(index->nonAlphaCharMask[c], 0);
  }
  index->setValidCharMask('a', true);
  index->setValidTrailingMask('-', true);
  index->setValidViewableMask(200, true);
  index->setNonAlphaCharMask('1', true);
  EXPECT_EQ(index->validCharMask['a'], 1);
  EXPECT_EQ(index->validTrailingMask['-'], 1);
  EXPECT_EQ(index->validViewableMask[200], 1);
  EXPECT_EQ(index->nonAlphaCharMask['1'], 1);
  index->setValidCharMask('a', false);
  EXPECT_EQ(index->validCharMask['a'], 0);
}

TEST_F(IndexObject, TimeBaseTruncatesTowardZero) {
  struct Case {
    double macTime;
    int32_t stored;
  };
  const Case cases[] = {
      {2082844800.0, 0},
      {2082844801.9, 1},
      {2082844799.5, 0},
      {2082844798.5, -1},
      {2082844800.0 + 1700000000.0, 1700000000},
  };
  for (const Case &c : cases) {
    index->setTimeBase(c.macTime);
    EXPECT_EQ(index->TimeBase, c.stored) << c.macTime;
  }
}

TEST_F(IndexObject, ClearDropsTablesAndResetsSettings) {
  index->createAnalyzers();
  index->setExcludeCount(1);
  index->setExcludePattern(0, "*.o");
  index->UseRanking = 0;
  index->MinWordLength = 5;
  index->MaxWordLength = 30;
  index->IsUpdate = 1;
  index->TrackAll = 0;
  index->NumberHandling = 4;
  index->ShowStatus = 1;
  index->clear();
  EXPECT_EQ(index->files, nullptr);
  EXPECT_EQ(index->words, nullptr);
  EXPECT_EQ(index->skipWords, nullptr);
  EXPECT_EQ(index->links, nullptr);
  EXPECT_EQ(index->wordLinks, nullptr);
  EXPECT_TRUE(index->analyzers.empty());
  EXPECT_EQ(index->excludePatterns, nullptr);
  EXPECT_EQ(index->UseRanking, 1);
  EXPECT_EQ(index->MinWordLength, 3);
  EXPECT_EQ(index->MaxWordLength, 16);
  EXPECT_EQ(index->IsUpdate, 0);
  EXPECT_EQ(index->TrackAll, 1);
  EXPECT_EQ(index->NumberHandling, 0);
  // Only the six named settings are reset.
  EXPECT_EQ(index->ShowStatus, 1);
}

TEST_F(IndexObject, FreeMemFilesDropsEveryTable) {
  index->newFileLinks();
  index->freeMemFiles();
  EXPECT_EQ(index->files, nullptr);
  EXPECT_EQ(index->words, nullptr);
  EXPECT_EQ(index->skipWords, nullptr);
  EXPECT_EQ(index->links, nullptr);
  EXPECT_EQ(index->wordLinks, nullptr);
}

TEST(IndexOpen, MissingHashRaisesStorageReadErrorWithThePath) {
  TempDir dir;
  CapturedMessages messages;
  EXPECT_TRUE(throwsKurvo([&] { CKurvoIndex index(false, dir.path()); }));
  ASSERT_EQ(messages.errors.size(), 1u);
  EXPECT_EQ(messages.errors[0].key, kurvo_keys::kStorageReadError);
  EXPECT_EQ(messages.errors[0].argument, dir.path());
}

class Progress : public IndexObject {
 protected:
  CapturedMessages messages;
};

TEST_F(Progress, SilentWithoutShowStatus) {
  index->ShowStatus = 0;
  index->lastStatusTime = 0;
  index->reportProgress(kurvo_keys::kIndexingFile, "x");
  EXPECT_TRUE(messages.statuses.empty());
}

TEST_F(Progress, ReportsWhenDueAndRemembersTheTime) {
  index->ShowStatus = 1;
  index->lastStatusTime = 0;
  index->reportProgress(kurvo_keys::kIndexingFile, "/some/file");
  ASSERT_EQ(messages.statuses.size(), 1u);
  EXPECT_EQ(messages.statuses[0].key, kurvo_keys::kIndexingFile);
  EXPECT_EQ(messages.statuses[0].argument, "/some/file");
  EXPECT_NE(index->lastStatusTime, 0);
}

TEST_F(Progress, NothingWhileTheLastReportIsRecent) {
  index->ShowStatus = 1;
  index->lastStatusTime = std::time(nullptr) + 3600;
  index->reportProgress(kurvo_keys::kIndexingFile, "x");
  EXPECT_TRUE(messages.statuses.empty());
}

TEST_F(Progress, HostAnsweringZeroHalts) {
  index->ShowStatus = 1;
  index->lastStatusTime = 0;
  messages.statusAnswer = 0;
  EXPECT_TRUE(throwsKurvo([&] { index->reportProgress(kurvo_keys::kIndexingFile, "x"); }));
  ASSERT_EQ(messages.errors.size(), 1u);
  EXPECT_EQ(messages.errors[0].key, kurvo_keys::kHaltRequested);
  EXPECT_EQ(messages.errors[0].argument, "");
  EXPECT_EQ(index->lastStatusTime, 0);
}

}  // namespace
