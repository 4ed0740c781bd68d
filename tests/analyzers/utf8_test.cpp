// UTF-8 text: decoding cut at every byte, words including the last and those across reads, display text, content
// detection. Tables laid out by hand:
// clang-format off
#include "analyzers/auto_analyzer.h"
#include "analyzers/utf8_analyzer.h"
#include "analyzers/utf8_decoder.h"
#include "kurvo.h"
#include "test_support.h"

using namespace kurvo_test;

namespace {

std::string decodeInTwo(const std::string &bytes, size_t split, uint64_t *foreign = nullptr) {
  Utf8Decoder decoder;
  std::string out;
  decoder.decode(bytes.data(), split, false, out);
  decoder.decode(bytes.data() + split, bytes.size() - split, true, out);
  if (foreign) *foreign = decoder.foreignCount();
  return out;
}

class Utf8Text : public AnalyzerTest {
 protected:
  void SetUp() override {
    AnalyzerTest::SetUp();
    for (int c = 0xC0; c < 0x100; ++c) index->setValidCharMask(c, c != 0xD7 && c != 0xF7);
    index->MaxWordLength = 16;
    utf8 = index->analyzerNamed("utf8");
  }

  std::set<std::string> wordsOfFile(const std::string &bytes) { return wordsOf("utf8", dataFile("doc.txt", bytes)); }

  std::string display(const std::string &bytes, int width = 0, unsigned long maxLength = 1 << 20) {
    return displayText(*utf8, fileNumber, dataFile("doc.txt", bytes), maxLength, width);
  }

  CFileAnalyzer *utf8 = nullptr;
};

}  // namespace

TEST(Utf8Decoder, DecodesIntoTheCharacterSetWhereverAPieceEnds) {
  const struct {
    std::string bytes, expected;
    uint64_t foreign;
  } cases[] = {
      {"\xC3\x9C" "bermensch caf\xC3\xA9", "\xDC" "bermensch caf\xE9", 0},
      {"caf\xE9 na\xEFve", "caf\xE9 na\xEFve", 0},  // Latin-1 stays Latin-1
      {"it\xE2\x80\x99s \xE2\x82\xAC" "5 \xE2\x80\x94 \xC5\x93uvre", "it\x92s \x80" "5 \x97 \x9C" "uvre", 0},
      {"abc\xCE\xBB" "def \xF0\x9F\x98\x80!", "abc\x1A" "def \x1A!", 2},
      {"\xEF\xBB\xBFstart \xEF\xBB\xBF", "start \x1A", 1},  // a mark only at the start is dropped
      {"\xC0\x80 \xED\xA0\x80 \xF5\x80", "\xC0\x80 \xED\xA0\x80 \xF5\x80", 0},  // overlong, surrogate, past U+10FFFF
      {"end\xE2\x82", "end\xE2\x82", 0},  // cut by the end of the file
      {"\xE2\x82\xE2\x82\xAC", "\xE2\x82\x80", 0},
  };
  for (const auto &c : cases) {
    for (size_t split = 0; split <= c.bytes.size(); ++split) {
      uint64_t foreign = 0;
      EXPECT_EQ(decodeInTwo(c.bytes, split, &foreign), c.expected) << c.bytes << " split at " << split;
      EXPECT_EQ(foreign, c.foreign) << c.bytes;
    }
  }
  EXPECT_EQ(toUtf8("caf\xE9 \x92\x80\x1A", 8), "caf\xC3\xA9 \xE2\x80\x99\xE2\x82\xAC\xEF\xBF\xBD");
}

TEST(Utf8Decoder, TheCInterfaceConvertsBothWaysWithinItsBuffers) {
  char out[16];
  EXPECT_EQ(kTextFromUtf8("r\xC3\xA9sum\xC3\xA9 \xCE\xB1\xCE\xB2", out, sizeof out), 2u);
  EXPECT_STREQ(out, "r\xE9sum\xE9 \x1A\x1A");
  EXPECT_EQ(kTextToUtf8("\xE9\xE9\xE9", out, 6), 6u);
  EXPECT_STREQ(out, "\xC3\xA9\xC3\xA9");  // never a cut character
  EXPECT_EQ(kTextFromUtf8("abc", out, 2), 0u);
  EXPECT_STREQ(out, "a");
}

TEST_F(Utf8Text, EveryWordIsFoundIncludingTheLastAndThoseAcrossReads) {
  const std::string pad(65535 - 4, ' ');
  const struct {
    std::string bytes;
    std::set<std::string> expected;
  } cases[] = {
      {"lastword", {"lastword"}},
      {"dashword\n", {"dashword"}},
      {"\xC3\x9C" "bermensch R\xC3\xA9sum\xC3\xA9 na\xC3\xAFve", {"\xFC" "bermensch", "r\xE9sum\xE9", "na\xEFve"}},
      {"caf\xE9 caf\xC3\xA9", {"caf\xE9"}},
      {"abc\xCE\xBB" "def \xE6\x97\xA5\xE6\x9C\xAC", {"abc", "def"}},
      {pad + "boundary word", {"boundary", "word"}},
      {pad + "xx" "\xC3\xA9t\xC3\xA9 word", {"xx\xE9t\xE9", "word"}},
      // Up to one character past the longest length is kept, as elsewhere.
      {"seventeenletters1 eighteenletters123 ok", {"seventeenletters1"}},
  };
  for (const auto &c : cases) EXPECT_EQ(wordsOfFile(c.bytes), c.expected) << c.bytes.substr(c.bytes.size() > 40 ? c.bytes.size() - 40 : 0);
  EXPECT_EQ(index->FilesWithForeignText, 0u);
  wordsOfFile("abc\xCE\xBB" "def");
  EXPECT_EQ(index->FilesWithForeignText, 1u);
  // A word running into the read limit may be cut short: it is left out.
  SetUp();
  index->MaxPerFileRead = 1024;
  utf8->indexFile(dataFile("doc.txt", std::string(1010, ' ') + "kept cutwordxyz").c_str(), fileNumber);
  EXPECT_EQ(words(), (std::set<std::string>{"kept"}));
}

TEST_F(Utf8Text, DisplayKeepsTheFileItsLinesAndTabs) {
  const struct {
    std::string bytes;
    int width;
    std::string expected;
  } cases[] = {
      {"dashword\n", 0, "dashword\n"},
      {"a\tb\r\nc\rd\n\ne", 0, "a\tb\nc\nd\n\ne"},
      {"caf\xC3\xA9 \xCE\xBB \x01\x7F!", 0, "caf\xE9 \x1A   !"},
      {"one two three four five", 9, "one two\nthree\nfour five"},
  };
  for (const auto &c : cases) EXPECT_EQ(display(c.bytes, c.width), c.expected) << c.bytes;
  const std::string big(70000, 'x');
  EXPECT_EQ(display(big + "\xC3\xA9"), big + "\xE9");
  EXPECT_EQ(display("abcdef", 0, 4), "abcd");
}

TEST_F(Utf8Text, ContentDecidesForNamesNoPatternKnows) {
  std::string tarHead(512, '\0');
  tarHead.replace(257, 5, "ustar");
  const struct {
    std::string head;
    const char *kind;
  } cases[] = {
      {"PK\x03\x04rest", "zip"},   {"\x1F\x8B\x08", "gzip"},        {tarHead, "tar"},
      {"%PDF-1.4\n", "pdf"},        {"junk\n%PDF-1.7", "pdf"},       {"{\\rtf1\\ansi", "rtf"},
      {"From a@b Mon\n", "mbox"},   {"  <!DOCTYPE html>", "html"},   {"<HTML><body>", "html"},
      {"root:x:0:0:/bin/sh\n", "utf8"}, {"caf\xC3\xA9\n", "utf8"},   {"caf\xE9\n", "utf8"},
      {"", "utf8"},                 {std::string("a\0b", 3), nullptr}, {"\x01\x02\x03\x04xyz", nullptr},
  };
  for (const auto &c : cases) {
    const char *kind = CAutoAnalyzer::kindOf(reinterpret_cast<const unsigned char *>(c.head.data()), c.head.size());
    EXPECT_STREQ(kind, c.kind) << c.head;
  }
  // Text goes to "utf8"; a file that is neither is recorded without words.
  CFileAnalyzer *automatic = index->analyzerNamed("auto");
  EXPECT_TRUE(automatic->indexFile(dataFile("passwd", "nologin here\n").c_str(), fileNumber));
  EXPECT_TRUE(automatic->indexFile(dataFile("blob", std::string("nul\0bytes", 9)).c_str(), fileNumber));
  EXPECT_EQ(words(), (std::set<std::string>{"nologin", "here"}));
  EXPECT_EQ(displayText(*automatic, 0, dataFile("blob", std::string("nul\0b", 5)), 100), "");
}
