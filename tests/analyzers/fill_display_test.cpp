// Display text of whole files: errors, cutting, buffers, carry-over and halting.
#include <chrono>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>

#include "analyzer_fixture.h"

using kurvo_test::AnalyzerTest;
using kurvo_test::CapturedMessages;
using kurvo_test::throwsKurvo;

namespace {

class FillDisplayTest : public AnalyzerTest {
 protected:
  std::string display(CFileAnalyzer &a, const std::string &path, unsigned long maxLength = 1 << 20,
                      int wrapWidth = 0) {
    char *block = a.fillDisplayBuffer(path.c_str(), fileNumber, maxLength, wrapWidth, true);
    EXPECT_NE(block, nullptr);
    std::string text = block ? block : "";
    std::free(block);
    return text;
  }
  std::string display(const std::string &path, unsigned long maxLength = 1 << 20) {
    return display(*analyzer, path, maxLength);
  }
};

TEST_F(FillDisplayTest, MissingFileRaisesCannotOpenContentsFile) {
  CapturedMessages messages;
  const std::string path = data.file("none.txt");
  EXPECT_TRUE(throwsKurvo([&] { analyzer->fillDisplayBuffer(path.c_str(), 0, 100, 0, true); }));
  ASSERT_NE(messages.lastError(), nullptr);
  EXPECT_EQ(messages.lastError()->key, "CannotOpenContentsFile");
  EXPECT_EQ(messages.lastError()->argument, path);
}

TEST_F(FillDisplayTest, UnallocatableBlockRaisesNoMemory) {
  CapturedMessages messages;
  const std::string path = dataFile("a.txt", "text\n");
  EXPECT_TRUE(throwsKurvo([&] { analyzer->fillDisplayBuffer(path.c_str(), 0, ULONG_MAX, 0, true); }));
  ASSERT_NE(messages.lastError(), nullptr);
  EXPECT_EQ(messages.lastError()->key, "NoMemory");
  EXPECT_EQ(messages.lastError()->argument, "");
}

TEST_F(FillDisplayTest, EmptyFileGivesEmptyBlock) {
  char *block = analyzer->fillDisplayBuffer(dataFile("e.txt", "").c_str(), 0, 100, 0, true);
  ASSERT_NE(block, nullptr);
  EXPECT_EQ(block[0], '\0');
  std::free(block);
}

TEST_F(FillDisplayTest, TextIsStrippedAndCutAtMaxLength) {
  const std::string path = dataFile("a.txt", "hello  big\tworld\n");
  EXPECT_EQ(display(path), "hello big\nworld\n");
  EXPECT_EQ(display(path, 7), "hello b");
  EXPECT_EQ(display(path, 0), "");
}

TEST_F(FillDisplayTest, WrapWidthIsPassedOn) {
  const std::string path = dataFile("a.txt", "aaaa bbbb cccc dddd");
  EXPECT_EQ(display(*analyzer, path, 100, 10), "aaaa bbbb\ncccc\ndddd");
}

TEST_F(FillDisplayTest, EachBufferEndsItsOwnLastLine) {
  std::string text;
  for (int i = 0; i < 14000; ++i) text += "abcd ";
  const std::string shown = display(dataFile("a.txt", text));
  ASSERT_EQ(shown.size(), 70000u);
  EXPECT_EQ(shown[65534], '\n');
  EXPECT_EQ(shown[69999], '\n');
  EXPECT_EQ(shown.substr(65530, 10), "abcd\nabcd ");
}

// Carries the last byte of every buffer, as markup hooks carry unfinished tags.
class LastByteCarrier : public CFileAnalyzer {
 public:
  LastByteCarrier(CKurvoIndex *index) : CFileAnalyzer(index) { m_bHooks = 1; }
  bool checkStripCharacter(unsigned char *current, char **, unsigned long *remaining, char, bool,
                           int *) override {
    if (*remaining != 0) return false;
    m_pIndex->partialWord[0] = static_cast<char>(*current);
    m_pIndex->partialWord[1] = '\0';
    return true;
  }
};

TEST_F(FillDisplayTest, CarryOverBufferGoesInFrontOfTheNextBuffer) {
  std::string text = std::string(65530, 'x') + " abcd" + "efgh ijkl\n";
  LastByteCarrier carrier(index.get());
  // The carried "d" joins "efgh"; the final line feed is carried and never shown.
  EXPECT_EQ(display(carrier, dataFile("a.txt", text)),
            std::string(65530, 'x') + "\nabc" + "defgh\nijkl");
}

// Takes over a second for its first buffer, so a status is due after it.
class SlowAnalyzer : public CFileAnalyzer {
 public:
  using CFileAnalyzer::CFileAnalyzer;
  void convertRawBuffer(char *, unsigned long) override {
    if (m_bSlept) return;
    m_bSlept = true;
    std::this_thread::sleep_for(std::chrono::milliseconds(1100));
  }

 private:
  bool m_bSlept = false;
};

std::string twoBuffers() {
  std::string text;
  for (int i = 0; i < 14000; ++i) text += "abcd ";
  return text;
}

TEST_F(FillDisplayTest, DecodingStatusAnsweredZeroHaltsAfterTheBuffer) {
  CapturedMessages messages;
  messages.statusAnswer = 0;
  const std::string path = dataFile("a.txt", twoBuffers());
  SlowAnalyzer slow(index.get());
  const std::string shown = display(slow, path);
  EXPECT_EQ(shown.size(), 65535u);
  ASSERT_EQ(messages.statuses.size(), 1u);
  EXPECT_EQ(messages.statuses[0].key, "DecodingGeneric");
  EXPECT_EQ(messages.statuses[0].argument, path);
  EXPECT_TRUE(messages.errors.empty());
}

TEST_F(FillDisplayTest, DecodingStatusAnsweredOneGoesOn) {
  CapturedMessages messages;
  const std::string path = dataFile("a.txt", twoBuffers());
  SlowAnalyzer slow(index.get());
  EXPECT_EQ(display(slow, path).size(), 70000u);
  ASSERT_GE(messages.statuses.size(), 1u);
  EXPECT_EQ(messages.statuses[0].key, "DecodingGeneric");
}

}  // namespace
