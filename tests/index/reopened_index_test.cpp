// A reopened index is mapped read-only; walking a tree into it must not fault.

#include "test_support.h"

using namespace kurvo_test;

TEST(ReopenedIndex, WalkingTheSameTreeAgainRewritesKnownRecords) {
  TempDir tmp;
  const std::string tree = scratchRoot(tmp) + "tree";
  writeFile(tree + "/sub/one.txt", "alpha beta\n");
  {
    auto index = startFullBuild(tmp);
    const uint32_t top = addTopFolder(*index, tree);
    index->indexDirectory(tree.c_str(), top);
    index->compressLinks();
    index->storeStorage(tmp.path());
  }
  CKurvoIndex reopened(false, tmp.path());
  ASSERT_FALSE(reopened.files->isWritable());
  configureIndex(reopened);
  // No analyzer: this walk only rewrites records (words need a word-link list).
  reopened.setIncludeCount(0);
  const uint32_t top = reopened.files->lookupFile(tree.c_str(), 0);
  ASSERT_NE(top, 0u);
  reopened.indexDirectory(tree.c_str(), top);
  // Both records were found again by name and parent, none added.
  EXPECT_EQ(recordsByPath(*reopened.files).size(), 3u);
}
