// The exported functions as a C++ host sees them: results, caught and passed-on errors.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "analyzers/file_analyzer.h"
#include "index/kurvo_index.h"
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
  unsigned int addRecord(const char *name, unsigned int parent) {
    void *files = kidxGetFiles(index);
    unsigned int number = kfsAddFile(files, name);
    kfiSetFileParentID(kfsGetInfo(files, number), parent);
    return number;
  }

  TempDir dir;
  CapturedMessages messages;
  void *index = nullptr;
};

TEST(CreateIndex, OpeningAFolderWithoutHashGivesNull) {
  TempDir dir;
  CapturedMessages messages;
  EXPECT_EQ(kCreateNewIndex(0, dir.path().c_str()), nullptr);
  ASSERT_NE(messages.lastError(), nullptr);
  EXPECT_EQ(messages.lastError()->key, "StorageReadError");
  EXPECT_EQ(messages.lastError()->argument, dir.path());
}

TEST_F(ExportsTest, StoredIndexReopens) {
  unsigned int folder = addRecord("/somewhere", 0);
  kidxStoreStorage(index, dir.path().c_str());
  kidxClearIndex(index);
  index = kCreateNewIndex(0, dir.path().c_str());
  ASSERT_NE(index, nullptr);
  EXPECT_EQ(kfsLookupFile(kidxGetFiles(index), "/SOMEWHERE", 0), folder);
  EXPECT_TRUE(messages.errors.empty());
}

TEST_F(ExportsTest, StoringIntoAMissingFolderIsCaught) {
  kidxStoreStorage(index, (dir.path() + "missing/").c_str());
  ASSERT_NE(messages.lastError(), nullptr);
  EXPECT_EQ(messages.lastError()->key, "StorageReadError");
}

TEST_F(ExportsTest, UnknownAnalyzerWarnsAndReturns) {
  kidxCreateAnalyzers(index);
  kidxSetIncludeCount(index, 2);
  kidxSetIncludePattern(index, 0, "*.xyz", "no-such-analyzer");
  ASSERT_EQ(messages.warnings.size(), 1u);
  EXPECT_EQ(messages.warnings[0].key, "AnalyzerNotFound");
  EXPECT_EQ(messages.warnings[0].argument, "no-such-analyzer");
  EXPECT_STREQ(object()->includePatterns[0], "*.xyz");
  EXPECT_EQ(object()->includeAnalyzers[0], nullptr);

  kidxSetIncludePattern(index, 1, "*.txt", nullptr);  // null means "generic"
  EXPECT_EQ(messages.warnings.size(), 1u);
  EXPECT_EQ(object()->includeAnalyzers[1], object()->analyzerNamed("generic"));
}

TEST_F(ExportsTest, MarkingObsoleteLeavesAnEmptyNameAlone) {
  void *files = kidxGetFiles(index);
  void *empty = kfsGetInfo(files, kfsAddFile(files, ""));
  kfiMarkFileObsolete(empty);
  EXPECT_STREQ(kfiGetFileName(empty), "");

  void *named = kfsGetInfo(files, kfsAddFile(files, "abc"));
  kfiMarkFileObsolete(named);
  EXPECT_EQ(static_cast<unsigned char>(kfiGetFileName(named)[0]), 0xFF);
  EXPECT_STREQ(kfiGetFileName(named) + 1, "bc");
}

TEST_F(ExportsTest, RecordFieldsAndTimeRoundTrip) {
  void *record = kfsGetInfo(kidxGetFiles(index), addRecord("f", 36));
  kfiSetFileTimeLastWritten(record, 2082844800.0 + 1234.75);
  EXPECT_EQ(kfiGetFileTimeLastWritten(record), 2082844800.0 + 1234.0);
  kfiSetFileTimeLastWritten(record, 2082844800.0 - 10.5);
  EXPECT_EQ(kfiGetFileTimeLastWritten(record), 2082844800.0 - 10.0);
  kfiSetFileSize(record, 4000000000u);
  kfiSetFileAttributes(record, 0x8001u);
  EXPECT_EQ(kfiGetFileSize(record), 4000000000u);
  EXPECT_EQ(kfiGetFileAttributes(record), 0x8001u);
  EXPECT_EQ(kfiGetFileParentID(record), 36u);
}

TEST_F(ExportsTest, SettersStoreTheirValues) {
  kidxSetTimeBase(index, 2082844801.9);
  EXPECT_EQ(object()->TimeBase, 1);
  kidxSetBytesRead(index, 12.5);
  kidxSetFilesIndexed(index, 7);
  EXPECT_EQ(kidxGetBytesRead(index), 12.5);
  EXPECT_EQ(kidxGetFilesIndexed(index), 7u);
  kidxSetTemporaryDirectory(index, "/tmp/x");
  kidxSetSkipFilePath(index, "/tmp/skip");
  EXPECT_EQ(object()->temporaryDirectory, "/tmp/x");
  EXPECT_EQ(object()->skipFilePath, "/tmp/skip");
  kidxSetValidCharMask(index, 'q', true);
  kidxSetNonAlphaCharMask(index, '-', false);
  EXPECT_EQ(object()->validCharMask['q'], 1);
  EXPECT_EQ(object()->nonAlphaCharMask['-'], 0);
}

TEST_F(ExportsTest, FileCursorWidensTheRank) {
  kidxSetUseRanking(index, 1);
  kidxEmptyIndex(index);
  kidxNewFileLinks(index);
  CFileLinks *links = object()->links;
  ASSERT_NE(links, nullptr);
  uint32_t at = links->getSpace(10);
  links->addFile(at, 36, 200);
  unsigned int cursor[2] = {at, 99};
  EXPECT_EQ(kflGetFile(links, cursor), 36u);
  EXPECT_EQ(cursor[0], at + 5);
  EXPECT_EQ(cursor[1], 200u);
}

TEST_F(ExportsTest, ViewerOnAFolderIsNull) {
  kidxCreateAnalyzers(index);
  unsigned int folder = addRecord((dir.path() + "docs").c_str(), 0);
  EXPECT_EQ(kidxGetFileContents(index, folder, 1000, 0, false, 5), nullptr);
  EXPECT_EQ(messages.lastError()->key, "NoFileContentsForDir");
  EXPECT_EQ(kidxGetFileContents(index, 12345, 1000, 0, false, 5), nullptr);
  EXPECT_EQ(messages.lastError()->key, "AssertionFailed");
}

// An analyzer with nothing to show, so that the viewer holds no text at all.
class NothingToShow : public CFileAnalyzer {
 public:
  using CFileAnalyzer::CFileAnalyzer;
  char *fillDisplayBuffer(const char *, unsigned long, unsigned long, int, bool) override {
    return nullptr;
  }
};

TEST_F(ExportsTest, ContentsAreNeverNullAndTheEndIsNotCaught) {
  object()->analyzers["generic"] = new NothingToShow(object());
  unsigned int folder = addRecord((dir.path() + "docs").c_str(), 0);
  void *viewer = kidxGetFileContents(index, addRecord("f.txt", folder), 1000, 0, false, 5);
  ASSERT_NE(viewer, nullptr);
  ASSERT_NE(kfcContents(viewer), nullptr);
  EXPECT_STREQ(kfcContents(viewer), "");
  EXPECT_EQ(kfcSearchBuffer(viewer, 0, "*"), 0u);
  EXPECT_TRUE(throwsKurvo([&] { kfcNext(viewer); }));
  EXPECT_EQ(messages.lastError()->key, "EndOfContents");
  kfcDeleteContentsObject(viewer);
  kfcDeleteContentsObject(nullptr);
}

TEST_F(ExportsTest, TableFunctionsPassErrorsOn) {
  kidxSetUseRanking(index, 0);
  kidxEmptyIndex(index);
  kidxNewFileLinks(index);
  // Reading a next-list word outside the table is an assertion the host sees.
  EXPECT_TRUE(throwsKurvo([&] { kflGetNextList(kidxGetLinks(index), 0x7FFFFFF0u); }));
  EXPECT_EQ(messages.lastError()->key, "AssertionFailed");
}

TEST(ProcessWide, DeleteCharFreesLibraryBlocks) {
  kDeleteChar(std::malloc(16));
  kDeleteChar(nullptr);
  EXPECT_EQ(kFileNameMatch("main.c", "*.c&^tmp*"), 1);
  EXPECT_EQ(kFileNameMatch("tmp.c", "*.c&^tmp*"), 0);
}

}  // namespace
