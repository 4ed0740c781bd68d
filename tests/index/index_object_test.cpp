// The index object: where its skipped folder and configuration folder lie.
#include "test_support.h"

TEST(IndexObject, SkippedFolderIsCutBeforeTheFourthSlashFromTheEnd) {
  // The storage folder is ".../a/b/c/store/": the cut falls before "/b".
  kurvo_test::TempDir dir;
  const std::string &path = dir.path();
  const std::string above = path.substr(0, path.size() - std::string("/b/c/store/").size());
  EXPECT_EQ(CKurvoIndex(true, path).skippedFolder, above);
  EXPECT_EQ(CKurvoIndex(true, path).configurationFolder(), above + "/");
  // Without the trailing '/' the cut falls one level higher, before "/a".
  const std::string bare = path.substr(0, path.size() - 1);
  EXPECT_EQ(CKurvoIndex(true, bare).skippedFolder, bare.substr(0, bare.size() - std::string("/a/b/c/store").size()));
}
