// Reading whole files for indexing: read limit, buffer boundaries, last word, counters, status.
#include <string>

#include "analyzer_fixture.h"

using kurvo_test::AnalyzerTest;
using kurvo_test::CapturedMessages;
using Words = std::set<std::string>;

namespace {

TEST_F(AnalyzerTest, FileIsIndexedAndCounted) {
  const std::string path = dataFile("a.txt", "Alpha beta\ngamma\n");
  index->BytesRead = 10.0;
  index->ContentsIndexed = 4;
  EXPECT_TRUE(analyzer->indexFile(path.c_str(), fileNumber));
  EXPECT_EQ(words(), (Words{"alpha", "beta", "gamma"}));
  EXPECT_DOUBLE_EQ(index->BytesRead, 10.0 + 17);
  EXPECT_EQ(index->ContentsIndexed, 5u);
}

TEST_F(AnalyzerTest, MissingFileIsNotIndexedAndNotCounted) {
  EXPECT_FALSE(analyzer->indexFile(data.file("none.txt").c_str(), fileNumber));
  EXPECT_EQ(index->ContentsIndexed, 0u);
  EXPECT_TRUE(words().empty());
}

TEST_F(AnalyzerTest, EmptyFileCountsButIndexesNothing) {
  const std::string path = dataFile("empty.txt", "");
  EXPECT_TRUE(analyzer->indexFile(path.c_str(), fileNumber));
  EXPECT_EQ(index->ContentsIndexed, 1u);
  EXPECT_TRUE(words().empty());
}

TEST_F(AnalyzerTest, LastWordWithoutSeparatorIsLost) {
  const std::string path = dataFile("a.txt", "first second third");
  EXPECT_TRUE(analyzer->indexFile(path.c_str(), fileNumber));
  EXPECT_EQ(words(), (Words{"first", "second"}));
}

TEST_F(AnalyzerTest, ReadStopsAtTheLimitAndDropsTheCutWord) {
  // The limit of 20 bytes falls inside "delta".
  const std::string path = dataFile("a.txt", "alpha beta gamma delta epsilon\n");
  index->MaxPerFileRead = 20;
  EXPECT_TRUE(analyzer->indexFile(path.c_str(), fileNumber));
  EXPECT_EQ(words(), (Words{"alpha", "beta", "gamma"}));
  EXPECT_DOUBLE_EQ(index->BytesRead, 20.0);
}

TEST_F(AnalyzerTest, LimitAboveOneBufferStillStopsOnTime) {
  // 70,000 bytes allowed: one full buffer, then a shortened second read.
  std::string text(69990, ' ');
  text += "tailword   afterlimit\n";
  const std::string path = dataFile("a.txt", text);
  index->MaxPerFileRead = 70000;
  EXPECT_TRUE(analyzer->indexFile(path.c_str(), fileNumber));
  EXPECT_EQ(words(), (Words{"tailword"}));
  EXPECT_DOUBLE_EQ(index->BytesRead, 70000.0);
}

TEST_F(AnalyzerTest, WordAcrossBufferBoundaryKeepsOnlyItsTail) {
  // "boundary" starts five bytes before the end of the first 65,535-byte read.
  std::string text(65535 - 5, ' ');
  text.replace(10, 6, "before");
  text += "boundaryword after\n";
  const std::string path = dataFile("a.txt", text);
  EXPECT_TRUE(analyzer->indexFile(path.c_str(), fileNumber));
  EXPECT_EQ(words(), (Words{"before", "aryword", "after"}));
}

TEST_F(AnalyzerTest, LimitInsideTheFirstWordIndexesNothing) {
  const std::string path = dataFile("a.txt", "abcdefghijkl mno\n");
  index->MaxPerFileRead = 8;
  EXPECT_TRUE(analyzer->indexFile(path.c_str(), fileNumber));
  EXPECT_TRUE(words().empty());
  EXPECT_DOUBLE_EQ(index->BytesRead, 8.0);
}

TEST_F(AnalyzerTest, BytesIndexingStatusOnlyAboveLevelOne) {
  CapturedMessages messages;
  const std::string path = dataFile("a.txt", "some words\n");
  index->ShowStatus = 1;
  analyzer->indexFile(path.c_str(), fileNumber);
  EXPECT_TRUE(messages.statuses.empty());

  index->ShowStatus = 2;
  index->BytesRead = 100.0;
  analyzer->indexFile(path.c_str(), fileNumber);
  ASSERT_EQ(messages.statuses.size(), 1u);
  EXPECT_EQ(messages.statuses[0].key, "BytesIndexing");
  EXPECT_EQ(messages.statuses[0].argument, "111.000000\t" + path);
}

TEST_F(AnalyzerTest, UtfSixteenLikeFileIsIndexedWithoutItsNuls) {
  std::string text;
  for (char c : std::string("Hello World\n")) {
    text.push_back(c);
    text.push_back('\0');
  }
  const std::string path = dataFile("a.txt", text);
  EXPECT_TRUE(analyzer->indexFile(path.c_str(), fileNumber));
  EXPECT_EQ(words(), (Words{"hello", "world"}));
}

}  // namespace
