// Reading whole files for indexing: read limit, buffer boundaries, the last word, NULs, counters.

#include "test_support.h"

using namespace kurvo_test;
using Words = std::set<std::string>;

namespace {

struct FileCase {
  std::string text;
  int32_t readLimit;
  Words expected;
  double bytesRead;
};

std::string utf16Like(const std::string &text) {
  std::string out;
  for (char c : text) out += std::string(1, c) + '\0';
  return out;
}

TEST_F(AnalyzerTest, IndexesTheFileAsReadInBuffers) {
  const std::string boundary = std::string(10, ' ') + "before" + std::string(65535 - 21, ' ');
  const FileCase cases[] = {{"Alpha beta\ngamma\n", 1 << 20, {"alpha", "beta", "gamma"}, 17},
                            {"", 1 << 20, {}, 0},
                            // Without a final separator the last word is lost.
                            {"first second third", 1 << 20, {"first", "second"}, 18},
                            // The read limit falls inside "delta", which is dropped.
                            {"alpha beta gamma delta epsilon\n", 20, {"alpha", "beta", "gamma"}, 20},
                            {"abcdefghijkl mno\n", 8, {}, 8},
                            {std::string(69990, ' ') + "tailword   afterlimit\n", 70000, {"tailword"}, 70000},
                            // "boundary" starts five bytes before the end of the first 65,535-byte read.
                            {boundary + "boundaryword after\n", 1 << 20, {"before", "aryword", "after"}, 65535 + 14},
                            {utf16Like("Hello World\n"), 1 << 20, {"hello", "world"}, 24}};
  for (const FileCase &c : cases) {
    SetUp();
    index->MaxPerFileRead = c.readLimit;
    EXPECT_TRUE(analyzer->indexFile(dataFile("a.txt", c.text).c_str(), fileNumber));
    EXPECT_EQ(words(), c.expected) << c.text.substr(0, 40);
    EXPECT_DOUBLE_EQ(index->BytesRead, c.bytesRead);
    EXPECT_EQ(index->ContentsIndexed, 1u);
  }
  EXPECT_FALSE(analyzer->indexFile(data.file("none.txt").c_str(), fileNumber));
  EXPECT_EQ(index->ContentsIndexed, 1u);
}

TEST_F(AnalyzerTest, BytesIndexingStatusOnlyAboveLevelOne) {
  CapturedMessages messages;
  const std::string path = dataFile("a.txt", "some words\n");
  index->ShowStatus = 1;
  analyzer->indexFile(path.c_str(), fileNumber);
  EXPECT_TRUE(messages.statuses.empty());
  index->ShowStatus = 2;
  analyzer->indexFile(path.c_str(), fileNumber);
  EXPECT_EQ(messages.statuses, (std::vector<Message>{{"BytesIndexing", "22.000000\t" + path}}));
}

}  // namespace
