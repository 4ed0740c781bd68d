// Opening a viewer: finding the file, extracting it from nested archives, reading lines.
#include <unistd.h>

#include "api/message_keys.h"
#include "contents_fixture.h"

namespace contents_test {
namespace {

using kurvo_test::throwsKurvo;

bool exists(const std::string &path) { return access(path.c_str(), F_OK) == 0; }

TEST_F(ContentsTest, UnknownRecordIsAnAssertion) {
  showText("x\n");
  for (uint32_t bogus : {0u, 7u, 1000000u}) {
    EXPECT_TRUE(throwsKurvo([&] { open(bogus); })) << bogus;
    ASSERT_NE(messages.lastError(), nullptr);
    EXPECT_EQ(messages.lastError()->key, "AssertionFailed");
  }
}

TEST_F(ContentsTest, FolderHasNoContents) {
  showText("x\n");
  EXPECT_TRUE(throwsKurvo([&] { open(folder); }));
  EXPECT_EQ(messages.lastError()->key, "NoFileContentsForDir");
}

TEST_F(ContentsTest, PlainFileIsReadInPlaceByTheGenericAnalyzer) {
  FixedTextAnalyzer *generic = showText("shown text\n");
  uint32_t file = addFile("note.txt", "on disk\n");
  auto viewer = open(file);
  EXPECT_STREQ(viewer->contents(), "shown text\n");
  EXPECT_EQ(std::string(viewer->filePath()), folderPath + "/note.txt");
  ASSERT_EQ(generic->paths.size(), 1u);
  EXPECT_EQ(generic->paths[0], folderPath + "/note.txt");
  EXPECT_EQ(generic->seenBytes[0], "on disk\n");
  EXPECT_TRUE(exists(folderPath + "/note.txt"));  // never removed
}

TEST_F(ContentsTest, IncludePatternOnTheNameChoosesTheAnalyzer) {
  FixedTextAnalyzer *generic = showText("generic\n");
  FixedTextAnalyzer *marked = install("marked", new FixedTextAnalyzer(index.get(), "marked\n"));
  index->setIncludeCount(1);
  index->setIncludePattern(0, "*.htm", "marked");
  EXPECT_STREQ(open(addFile("page.htm"))->contents(), "marked\n");
  EXPECT_STREQ(open(addFile("page.txt"))->contents(), "generic\n");
  EXPECT_EQ(generic->paths.size(), 1u);
  EXPECT_EQ(marked->paths.size(), 1u);
}

TEST_F(ContentsTest, NoAnalyzerAtAllIsAnAssertion) {
  uint32_t file = addFile("note.txt");
  EXPECT_TRUE(throwsKurvo([&] { open(file); }));
  EXPECT_EQ(messages.lastError()->key, "AssertionFailed");
}

TEST_F(ContentsTest, MemberOfNestedArchivesIsExtractedLevelByLevel) {
  FixedTextAnalyzer *generic = showText("member text\n");
  FakeArchiveAnalyzer *archive = install("fake", new FakeArchiveAnalyzer(index.get()));
  index->setIncludeCount(2);
  index->setIncludePattern(0, "*.tar", "fake");
  index->setIncludePattern(1, "*.zip", "fake");
  uint32_t tar = addFile("outer.tar", "TAR");
  uint32_t zip = addRecord("inner.zip", tar);
  uint32_t doc = addRecord("doc.txt", zip);

  auto viewer = open(doc);

  ASSERT_EQ(archive->calls.size(), 2u);
  std::string zipTemp = index->temporaryDirectory + "/tmp" + std::to_string(zip) + ".zip";
  std::string docTemp = index->temporaryDirectory + "/tmp" + std::to_string(doc) + ".txt";
  EXPECT_EQ(archive->calls[0].archivePath, folderPath + "/outer.tar");
  EXPECT_EQ(archive->calls[0].memberName, "inner.zip");
  EXPECT_EQ(archive->calls[0].tempPath, zipTemp);
  EXPECT_EQ(archive->calls[0].memberNumber, zip);
  EXPECT_EQ(archive->calls[1].archivePath, zipTemp);
  EXPECT_TRUE(archive->calls[1].archiveExisted);
  EXPECT_EQ(archive->calls[1].memberName, "doc.txt");
  EXPECT_EQ(archive->calls[1].tempPath, docTemp);

  ASSERT_EQ(generic->paths.size(), 1u);
  EXPECT_EQ(generic->paths[0], docTemp);
  EXPECT_EQ(generic->seenBytes[0], "member doc.txt of member inner.zip of TAR");
  EXPECT_EQ(std::string(viewer->filePath()), docTemp);
  EXPECT_FALSE(exists(zipTemp));
  EXPECT_FALSE(exists(docTemp));
  EXPECT_STREQ(viewer->contents(), "member text\n");
}

TEST_F(ContentsTest, MemberWithoutExtensionNamesItsTempFileWhole) {
  showText("x\n");
  FakeArchiveAnalyzer *archive = install("fake", new FakeArchiveAnalyzer(index.get()));
  index->setIncludeCount(1);
  index->setIncludePattern(0, "*.zip", "fake");
  uint32_t zip = addFile("a.zip");
  uint32_t member = addRecord("README", zip);
  open(member);
  ASSERT_EQ(archive->calls.size(), 1u);
  EXPECT_EQ(archive->calls[0].tempPath,
            index->temporaryDirectory + "/tmp" + std::to_string(member) + ".README");
}

TEST_F(ContentsTest, FailedExtractionRaisesAndLeavesNoTempFile) {
  showText("x\n");
  install("good", new FakeArchiveAnalyzer(index.get()));
  install("bad", new FakeArchiveAnalyzer(index.get(), true));
  index->setIncludeCount(2);
  index->setIncludePattern(0, "*.tar", "good");
  index->setIncludePattern(1, "*.zip", "bad");
  uint32_t tar = addFile("outer.tar");
  uint32_t zip = addRecord("inner.zip", tar);
  uint32_t doc = addRecord("doc.txt", zip);
  EXPECT_TRUE(throwsKurvo([&] { open(doc); }));
  EXPECT_EQ(messages.lastError()->key, "ArchiveExtractError");
  EXPECT_FALSE(exists(index->temporaryDirectory + "/tmp" + std::to_string(zip) + ".zip"));
}

TEST_F(ContentsTest, ArchiveWithoutAnalyzerCannotBeExtracted) {
  showText("x\n");
  uint32_t zip = addFile("a.zip");
  uint32_t member = addRecord("b.txt", zip);
  EXPECT_TRUE(throwsKurvo([&] { open(member); }));
  EXPECT_EQ(messages.lastError()->key, "ArchiveExtractError");
  EXPECT_EQ(index->extractToTempFile((folderPath + "/a.zip").c_str(), "b.txt", member), "");
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
  showText("one\ntwo\n\nlast");
  auto viewer = open(addFile("f.txt"));
  EXPECT_STREQ(viewer->nextLine(), "one\n");
  EXPECT_STREQ(viewer->nextLine(), "two\n");
  EXPECT_STREQ(viewer->nextLine(), "\n");
  EXPECT_STREQ(viewer->nextLine(), "last");
  for (int again = 0; again < 2; ++again) {
    EXPECT_TRUE(throwsKurvo([&] { viewer->nextLine(); }));
    EXPECT_EQ(messages.lastError()->key, "EndOfContents");
  }
}

TEST_F(ContentsTest, WithoutDisplayTextEverythingIsEmpty) {
  install("generic", new FixedTextAnalyzer(index.get(), "", true));
  auto viewer = open(addFile("f.txt"));
  ASSERT_NE(viewer->contents(), nullptr);
  EXPECT_STREQ(viewer->contents(), "");
  EXPECT_EQ(viewer->searchBuffer(0u, "*"), 0u);
  EXPECT_FALSE(viewer->containsHit("*"));
  EXPECT_EQ(viewer->tokenLength(0), 0u);
  viewer->convertToOutline("*");
  EXPECT_TRUE(throwsKurvo([&] { viewer->nextLine(); }));
}

}  // namespace
}  // namespace contents_test
