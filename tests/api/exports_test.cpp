// The exported functions as a C++ host sees them: errors caught at the boundary or passed on, and the viewer's.

#include "kurvo.h"
#include "test_support.h"

namespace {

using namespace kurvo_test;

class ExportsTest : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_NE(index = kCreateNewIndex(1, dir.path().c_str()), nullptr); }
  void TearDown() override {
    if (index) kidxClearIndex(index);
  }

  CKurvoIndex *object() const { return static_cast<CKurvoIndex *>(index); }

  // A record under a folder record, as the walk would make it.
  unsigned int addRecord(const std::string &name, unsigned int parent) {
    void *files = kidxGetFiles(index);
    unsigned int number = kfsAddFile(files, name.c_str());
    kfiSetFileParentID(kfsGetInfo(files, number), parent);
    return number;
  }

  TempDir dir;
  CapturedMessages messages;
  void *index = nullptr;
};

TEST_F(ExportsTest, ErrorsAreCaughtOrPassedOn) {
  kidxStoreStorage(index, (dir.path() + "missing/").c_str());  // caught
  ASSERT_NE(messages.lastError(), nullptr);
  EXPECT_EQ(messages.lastError()->key, "StorageReadError");

  kidxCreateAnalyzers(index);
  kidxSetIncludeCount(index, 1);
  kidxSetIncludePattern(index, 0, "*.xyz", "no-such-analyzer");  // the warning's throw is caught
  EXPECT_EQ(messages.warnings, (std::vector<Message>{{"AnalyzerNotFound", "no-such-analyzer"}}));
  EXPECT_STREQ(object()->includePatterns[0], "*.xyz");

  kidxEmptyIndex(index);
  kidxNewFileLinks(index);
  EXPECT_EQ(raised(messages, [&] { kflGetNextList(kidxGetLinks(index), 0x7FFFFFF0u); }).key,
            "AssertionFailed");  // passed on
}

// An analyzer with nothing to show, so that the viewer holds no text at all.
class NothingToShow : public CFileAnalyzer {
 public:
  using CFileAnalyzer::CFileAnalyzer;
  char *fillDisplayBuffer(const char *, unsigned long, unsigned long, int, bool) override { return nullptr; }
};

TEST_F(ExportsTest, ViewerErrors) {
  object()->analyzers["generic"] = new NothingToShow(object());
  unsigned int folder = addRecord(dir.path() + "docs", 0);
  EXPECT_EQ(kidxGetFileContents(index, folder, 1000, 0, false, 5), nullptr);
  EXPECT_EQ(messages.lastError()->key, "NoFileContentsForDir");
  EXPECT_EQ(kidxGetFileContents(index, 12345, 1000, 0, false, 5), nullptr);
  EXPECT_EQ(messages.lastError()->key, "AssertionFailed");

  // Contents are never null, and running past the end reaches the host.
  void *viewer = kidxGetFileContents(index, addRecord("f.txt", folder), 1000, 0, false, 5);
  ASSERT_NE(viewer, nullptr);
  ASSERT_NE(kfcContents(viewer), nullptr);
  EXPECT_STREQ(kfcContents(viewer), "");
  EXPECT_EQ(kfcSearchBuffer(viewer, 0, "*"), 0u);
  EXPECT_FALSE(kfcContainsHit(viewer, "*"));
  kfcConvertToOutline(viewer, "*");
  EXPECT_STREQ(kfcContents(viewer), "");
  EXPECT_EQ(raised(messages, [&] { kfcNext(viewer); }).key, "EndOfContents");
  kfcDeleteContentsObject(viewer);
  kfcDeleteContentsObject(nullptr);
}

}  // namespace
