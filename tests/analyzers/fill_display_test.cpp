// Display text of whole files: errors, stripping, the length limit and halting.
#include <chrono>
#include <thread>

#include "test_support.h"

using namespace kurvo_test;

namespace {

class FillDisplayTest : public AnalyzerTest {
 protected:
  std::string display(CFileAnalyzer &a, const std::string &path, unsigned long maxLength = 1 << 20) {
    char *block = a.fillDisplayBuffer(path.c_str(), fileNumber, maxLength, 0, true);
    EXPECT_NE(block, nullptr);
    std::string text = block ? block : "";
    std::free(block);
    return text;
  }
};

TEST_F(FillDisplayTest, TextIsStrippedAndCutAtMaxLength) {
  const std::string path = dataFile("a.txt", "hello  big\tworld\n");
  EXPECT_EQ(display(*analyzer, path), "hello big\nworld\n");
  EXPECT_EQ(display(*analyzer, path, 7), "hello b");
  EXPECT_EQ(display(*analyzer, path, 0), "");
  CapturedMessages messages;
  const std::string missing = data.file("none.txt");
  EXPECT_EQ(raised(messages, [&] { analyzer->fillDisplayBuffer(missing.c_str(), 0, 100, 0, true); }),
            (Message{"CannotOpenContentsFile", missing}));
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

TEST_F(FillDisplayTest, DecodingStatusAnsweredZeroHaltsAfterTheBuffer) {
  std::string text;
  for (int i = 0; i < 14000; ++i) text += "abcd ";
  const std::string path = dataFile("a.txt", text);
  for (int answer : {0, 1}) {
    CapturedMessages messages;
    messages.statusAnswer = answer;
    SlowAnalyzer slow(index.get());
    // Each buffer ends its own last line.
    const std::string shown = display(slow, path);
    EXPECT_EQ(shown.size(), answer ? 70000u : 65535u);
    EXPECT_EQ(shown[65534], '\n');
    ASSERT_GE(messages.statuses.size(), 1u);
    EXPECT_EQ(messages.statuses[0].key, "DecodingGeneric");
    EXPECT_EQ(messages.statuses[0].argument, path);
    EXPECT_TRUE(messages.errors.empty());
  }
}

}  // namespace
