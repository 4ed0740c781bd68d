// Opening a viewer: finding the file, extracting it from nested archives, reading lines.
#include <unistd.h>

#include "contents_fixture.h"

namespace contents_test {
namespace {

using kurvo_test::throwsKurvo;

bool exists(const std::string &path) { return access(path.c_str(), F_OK) == 0; }

TEST_F(ContentsTest, RecordsWithoutContents) {
  EXPECT_TRUE(throwsKurvo([&] { open(addFile("note.txt")); }));  // no analyzer at all
  EXPECT_EQ(messages.lastError()->key, "AssertionFailed");
  showText("x\n");
  EXPECT_TRUE(throwsKurvo([&] { open(folder); }));
  EXPECT_EQ(messages.lastError()->key, "NoFileContentsForDir");
}

TEST_F(ContentsTest, PlainFileIsReadInPlaceByTheAnalyzerItsNameChooses) {
  FixedTextAnalyzer *generic = showText("generic\n");
  install("marked", new FixedTextAnalyzer(index.get(), "marked\n"));
  index->setIncludeCount(1);
  index->setIncludePattern(0, "*.htm", "marked");
  EXPECT_STREQ(open(addFile("page.htm"))->contents(), "marked\n");

  auto viewer = open(addFile("note.txt", "on disk\n"));
  EXPECT_STREQ(viewer->contents(), "generic\n");
  EXPECT_EQ(std::string(viewer->filePath()), folderPath + "/note.txt");
  ASSERT_EQ(generic->seenBytes.size(), 1u);
  EXPECT_EQ(generic->seenBytes[0], "on disk\n");
  EXPECT_TRUE(exists(folderPath + "/note.txt"));  // never removed
}

TEST_F(ContentsTest, MemberOfNestedArchivesIsExtractedLevelByLevel) {
  FixedTextAnalyzer *generic = showText("member text\n");
  FakeArchiveAnalyzer *archive = install("fake", new FakeArchiveAnalyzer(index.get()));
  index->setIncludeCount(2);
  index->setIncludePattern(0, "*.tar", "fake");
  index->setIncludePattern(1, "*.zip", "fake");
  uint32_t tar = addFile("outer.tar", "TAR");
  uint32_t zip = addRecord("inner.zip", tar);
  uint32_t doc = addRecord("README", zip);  // no extension: the temp file takes the whole name

  auto viewer = open(doc);

  ASSERT_EQ(archive->calls.size(), 2u);
  std::string zipTemp = index->temporaryDirectory + "/tmp" + std::to_string(zip) + ".zip";
  std::string docTemp = index->temporaryDirectory + "/tmp" + std::to_string(doc) + ".README";
  EXPECT_EQ(archive->calls[0].archivePath, folderPath + "/outer.tar");
  EXPECT_EQ(archive->calls[0].tempPath, zipTemp);
  EXPECT_EQ(archive->calls[0].memberNumber, zip);
  EXPECT_EQ(archive->calls[1].archivePath, zipTemp);
  EXPECT_TRUE(archive->calls[1].archiveExisted);
  EXPECT_EQ(archive->calls[1].tempPath, docTemp);
  EXPECT_EQ(generic->seenBytes.at(0), "member README of member inner.zip of TAR");
  EXPECT_EQ(std::string(viewer->filePath()), docTemp);
  EXPECT_FALSE(exists(zipTemp));
  EXPECT_FALSE(exists(docTemp));
  EXPECT_STREQ(viewer->contents(), "member text\n");
}

TEST_F(ContentsTest, FailedExtractionRaisesAndLeavesNoTempFile) {
  showText("x\n");
  install("good", new FakeArchiveAnalyzer(index.get()));
  install("bad", new FakeArchiveAnalyzer(index.get(), true));
  index->setIncludeCount(2);
  index->setIncludePattern(0, "*.tar", "good");
  index->setIncludePattern(1, "*.zip", "bad");
  uint32_t zip = addRecord("inner.zip", addFile("outer.tar"));
  EXPECT_TRUE(throwsKurvo([&] { open(addRecord("doc.txt", zip)); }));
  EXPECT_EQ(messages.lastError()->key, "ArchiveExtractError");
  EXPECT_FALSE(exists(index->temporaryDirectory + "/tmp" + std::to_string(zip) + ".zip"));

  // A container no analyzer claims cannot be opened either.
  uint32_t member = addRecord("b.txt", addFile("a.gz"));
  EXPECT_TRUE(throwsKurvo([&] { open(member); }));
  EXPECT_EQ(messages.lastError()->key, "ArchiveExtractError");
}

// A chain of records from the folder down: folder, file, then members.
TEST_F(ContentsTest, ChainsLongerThanAHundredRecordsAreRefused) {
  showText("x\n");
  uint32_t last = addFile("deep.zip");
  for (int level = 0; level < 98; ++level) last = addRecord("m.zip", last);
  // 100 records from the folder to here: deep enough, but not too deep.
  EXPECT_TRUE(throwsKurvo([&] { open(last); }));
  EXPECT_EQ(messages.lastError()->key, "ArchiveExtractError");
  last = addRecord("m.zip", last);
  EXPECT_TRUE(throwsKurvo([&] { open(last); }));
  EXPECT_EQ(messages.lastError()->key, "ArchivesNestedTooDeep");
}

TEST_F(ContentsTest, CircularParentsEndAsTooDeep) {
  showText("x\n");
  uint32_t a = addFile("a.zip");
  uint32_t b = addRecord("b.zip", a);
  file_record::setParent(index->files->getData(a), b);
  EXPECT_TRUE(throwsKurvo([&] { open(b); }));
  EXPECT_EQ(messages.lastError()->key, "ArchivesNestedTooDeep");
}

TEST_F(ContentsTest, LinesComeWithTheirLineFeedsUntilTheEnd) {
  showText("one\n\nlast");
  auto viewer = open(addFile("f.txt"));
  EXPECT_STREQ(viewer->nextLine(), "one\n");
  EXPECT_STREQ(viewer->nextLine(), "\n");
  EXPECT_STREQ(viewer->nextLine(), "last");
  for (int again = 0; again < 2; ++again) {
    EXPECT_TRUE(throwsKurvo([&] { viewer->nextLine(); }));
    EXPECT_EQ(messages.lastError()->key, "EndOfContents");
  }
}

}  // namespace
}  // namespace contents_test
