// The exported functions as a C++ host sees them: results, caught and passed-on errors.

#include "kurvo.h"
#include "test_support.h"

namespace {

using kurvo_test::CapturedMessages;
using kurvo_test::TempDir;
using kurvo_test::throwsKurvo;

class ExportsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    index = kCreateNewIndex(1, dir.path().c_str());
    ASSERT_NE(index, nullptr);
  }
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

TEST_F(ExportsTest, CaughtAndPassedOnErrors) {
  kidxStoreStorage(index, (dir.path() + "missing/").c_str());  // caught
  ASSERT_NE(messages.lastError(), nullptr);
  EXPECT_EQ(messages.lastError()->key, "StorageReadError");

  kidxSetUseRanking(index, 0);
  kidxEmptyIndex(index);
  kidxNewFileLinks(index);
  EXPECT_TRUE(throwsKurvo([&] { kflGetNextList(kidxGetLinks(index), 0x7FFFFFF0u); }));
  EXPECT_EQ(messages.lastError()->key, "AssertionFailed");
}

TEST_F(ExportsTest, UnknownAnalyzerWarnsAndReturns) {
  kidxCreateAnalyzers(index);
  kidxSetIncludeCount(index, 1);
  kidxSetIncludePattern(index, 0, "*.xyz", "no-such-analyzer");  // the warning's throw is caught
  ASSERT_EQ(messages.warnings.size(), 1u);
  EXPECT_EQ(messages.warnings[0].argument, "no-such-analyzer");
  EXPECT_STREQ(object()->includePatterns[0], "*.xyz");
}

TEST_F(ExportsTest, RecordEdgeCases) {
  void *files = kidxGetFiles(index);
  void *empty = kfsGetInfo(files, kfsAddFile(files, ""));
  kfiMarkFileObsolete(empty);  // an empty name is left alone
  EXPECT_STREQ(kfiGetFileName(empty), "");
  void *record = kfsGetInfo(files, kfsAddFile(files, "abc"));
  kfiMarkFileObsolete(record);
  EXPECT_STREQ(kfiGetFileName(record),
               "\xFF"
               "bc");

  // Times keep whole seconds, before the 1970 epoch too.
  kfiSetFileTimeLastWritten(record, 2082844800.0 + 1234.75);
  EXPECT_EQ(kfiGetFileTimeLastWritten(record), 2082844800.0 + 1234.0);
  kfiSetFileTimeLastWritten(record, 2082844800.0 - 10.5);
  EXPECT_EQ(kfiGetFileTimeLastWritten(record), 2082844800.0 - 10.0);
  kidxSetTimeBase(index, 2082844801.9);
  EXPECT_EQ(object()->TimeBase, 1);
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
  EXPECT_TRUE(throwsKurvo([&] { kfcNext(viewer); }));
  EXPECT_EQ(messages.lastError()->key, "EndOfContents");
  kfcDeleteContentsObject(viewer);
  kfcDeleteContentsObject(nullptr);
}

}  // namespace
