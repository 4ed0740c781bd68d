// The index object: defaults, the skipped folder, the control-byte class and the time base.

#include "test_support.h"

using kurvo_test::TempDir;

namespace {

class IndexObject : public ::testing::Test {
 protected:
  void SetUp() override { index = std::make_unique<CKurvoIndex>(true, dir.path()); }
  TempDir dir;
  std::unique_ptr<CKurvoIndex> index;
};

}  // namespace

TEST_F(IndexObject, DefaultsAfterConstructionAndClear) {
  const auto expectDefaults = [this] {
    EXPECT_EQ(index->UseRanking, 1);
    EXPECT_EQ(index->MinWordLength, 3);
    EXPECT_EQ(index->MaxWordLength, 16);
    EXPECT_EQ(index->IsUpdate, 0);
    EXPECT_EQ(index->TrackAll, 1);
    EXPECT_EQ(index->NumberHandling, 0);
  };
  expectDefaults();
  EXPECT_EQ(index->words->getBucketCount(), 40000u);
  EXPECT_EQ(index->wordLinks, nullptr);
  index->UseRanking = index->IsUpdate = index->TrackAll = 0;
  index->MinWordLength = index->MaxWordLength = index->NumberHandling = 5;
  index->clear();
  expectDefaults();
  EXPECT_EQ(index->words, nullptr);
}

TEST_F(IndexObject, SkippedFolderIsCutBeforeTheFourthSlashFromTheEnd) {
  // dir is ".../a/b/c/store/": the cut falls before "/b".
  const std::string &path = dir.path();
  const std::string above = path.substr(0, path.size() - std::string("/b/c/store/").size());
  EXPECT_EQ(index->skippedFolder, above);
  EXPECT_EQ(index->configurationFolder(), above + "/");
  // Without the trailing '/' the cut falls one level higher, before "/a".
  const std::string bare = path.substr(0, path.size() - 1);
  EXPECT_EQ(CKurvoIndex(true, bare).skippedFolder, bare.substr(0, bare.size() - std::string("/a/b/c/store").size()));
}

TEST_F(IndexObject, ControlClassIsOneToSixEightAndFourteenToThirtyOne) {
  for (int c = 0; c < 256; ++c) {
    const bool control = (c >= 1 && c <= 6) || c == 8 || (c >= 14 && c <= 31);
    EXPECT_EQ(index->controlCharMask[c], control ? 1 : 0) << c;
  }
}

TEST_F(IndexObject, TimeBaseTruncatesTowardZero) {
  const std::pair<double, int32_t> cases[] = {{2082844800.0, 0},
                                              {2082844801.9, 1},
                                              {2082844799.5, 0},
                                              {2082844798.5, -1},
                                              {2082844800.0 + 1700000000.0, 1700000000}};
  for (const auto &[macTime, stored] : cases) {
    index->setTimeBase(macTime);
    EXPECT_EQ(index->TimeBase, stored) << macTime;
  }
}
