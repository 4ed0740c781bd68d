// An index's life in its storage folder: where it lies, emptying, storing, reopening, the skip file.

#include <algorithm>

#include "test_support.h"

using namespace kurvo_test;

TEST(Lifecycle, EmptyIndexKeepsSkipWordsAndDropsLinksUntilNewFileLinks) {
  TempDir tmp;
  auto index = startFullBuild(tmp, "the\n");
  index->indexWord("alpha", index->files->addFile("x"));
  index->FilesIndexed = index->ContentsIndexed = index->DirectoriesRead = 7;
  index->BytesRead = 9.0;
  index->IsUpdate = 1;
  index->emptyIndex();
  EXPECT_EQ(index->links, nullptr);
  EXPECT_EQ(index->words->getFirst(), 0u);
  EXPECT_EQ(
      index->WordsIndexed + index->FilesIndexed + index->ContentsIndexed + index->DirectoriesRead + index->IsUpdate,
      0u);
  EXPECT_EQ(index->BytesRead, 0.0);
  index->newFileLinks();
  EXPECT_NE(index->indexWord("the", index->files->addFile("y")), 0u);
  EXPECT_EQ(index->words->lookup("the"), 0u) << "still a skip word";
}

// Storing twice writes the same summary; a missing storage folder, a summary
// of the other byte order, no summary at all and no skip file are refused.
TEST(Lifecycle, StoringTwiceAndTheRefusals) {
  TempDir tmp;
  CapturedMessages messages;
  auto index = startFullBuild(tmp);
  index->indexWord("alpha", index->files->addFile("x"));
  index->storeStorage(tmp.path());
  const std::string first = tmp.read("hash");
  index->storeStorage(tmp.path());
  EXPECT_EQ(tmp.read("hash"), first);
  EXPECT_FALSE(index->files->isWritable());
  const std::string missing = tmp.path() + "nowhere/";
  EXPECT_EQ(raised(messages, [&] { index->storeStorage(missing); }), (Message{"StorageReadError", missing}));

  // Every word of the summary file as the other byte order writes it.
  std::string hash = first;
  for (size_t i = 0; i + 4 <= hash.size(); i += 4) std::reverse(hash.begin() + i, hash.begin() + i + 4);
  tmp.write("hash", hash);
  EXPECT_EQ(raised(messages, [&] { CKurvoIndex(false, tmp.path()); }), (Message{"StorageByteOrder", tmp.path()}));
  std::filesystem::remove(tmp.file("hash"));
  EXPECT_EQ(raised(messages, [&] { CKurvoIndex(false, tmp.path()); }), (Message{"StorageReadError", tmp.path()}));

  // Without a skip-file setting the file is looked for three folders above
  // the storage folder.
  CKurvoIndex fresh(true, tmp.path());
  EXPECT_EQ(raised(messages, [&] { fresh.indexExclusions(); }),
            (Message{"SkipOpenFail", fresh.configurationFolder() + "skipfile.txt"}));
  ASSERT_NE(fresh.skipWords, nullptr);
  EXPECT_EQ(fresh.skipWords->getFirst(), 0u);
}

TEST(Lifecycle, SkippedFolderIsCutBeforeTheFourthSlashFromTheEnd) {
  // The storage folder is ".../a/b/c/store/": the cut falls before "/b".
  TempDir dir;
  const std::string &path = dir.path();
  const std::string above = path.substr(0, path.size() - std::string("/b/c/store/").size());
  EXPECT_EQ(CKurvoIndex(true, path).skippedFolder, above);
  EXPECT_EQ(CKurvoIndex(true, path).configurationFolder(), above + "/");
  // Without the trailing '/' the cut falls one level higher, before "/a".
  const std::string bare = path.substr(0, path.size() - 1);
  EXPECT_EQ(CKurvoIndex(true, bare).skippedFolder, bare.substr(0, bare.size() - std::string("/a/b/c/store").size()));
}

// A reopened index is mapped read-only; walking a tree into it must not fault.
TEST(Lifecycle, AReopenedIndexWalkingTheSameTreeAgainRewritesKnownRecords) {
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
