// An index's life in its storage folder: emptying, storing, reopening, skip file.

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
