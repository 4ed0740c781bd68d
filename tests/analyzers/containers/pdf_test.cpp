// PDFs made by pdflatex, ps2pdf and LibreOffice and written byte by byte: the text of their content streams.
// Tables laid out by hand:
// clang-format off
#include <zlib.h>

#include "analyzers/containers/pdf_text.h"
#include "test_support.h"

using namespace kurvo_test;

namespace {

std::string deflated(const std::string &text) {
  uLongf size = compressBound(static_cast<uLong>(text.size()));
  std::string out(size, '\0');
  compress(reinterpret_cast<Bytef *>(&out[0]), &size, reinterpret_cast<const Bytef *>(text.data()),
           static_cast<uLong>(text.size()));
  out.resize(size);
  return out;
}

// One object per stream, each announced as FlateDecode; eol follows "stream".
std::string pdfOf(const std::vector<std::string> &streams, const std::string &eol = "\n") {
  std::string pdf = "%PDF-1.4\n";
  for (const std::string &data : streams) {
    pdf += "4 0 obj\n<</Length " + std::to_string(data.size()) + "/Filter/FlateDecode>>\nstream" + eol + data +
           "\nendstream\nendobj\n";
  }
  return pdf + "trailer\n<</Root 1 0 R>>\n%%EOF\n";
}

std::string text(const std::string &content, int lineWidth = 10000) {
  std::string input = content + '\0';
  std::string out(content.size() + 1, '\0');
  out.resize(clearText(input.data(), static_cast<uint32_t>(content.size()), &out[0],
                       static_cast<uint32_t>(out.size()), lineWidth));
  return out;
}

class Pdf : public ::testing::Test {
 protected:
  void SetUp() override {
    index = startFullBuild(tmp);
    for (int c = 0xC0; c < 0x100; ++c) index->setValidCharMask(c, c != 0xD7 && c != 0xF7);
    pdf = index->analyzerNamed("pdf");
  }

  std::set<std::string> wordsOf(const std::string &path) {
    const uint32_t record = index->files->addFile("doc.pdf");
    EXPECT_TRUE(pdf->indexFile(path.c_str(), record));
    return wordSet(*index->words);
  }
  std::string shown(const std::string &path, unsigned long maxLength = 1 << 20) {
    return displayText(*pdf, 1, path, maxLength);
  }

  std::string file(const std::string &bytes) {
    tmp.write("x.pdf", bytes);
    return tmp.file("x.pdf");
  }

  TempDir tmp;
  std::unique_ptr<CKurvoIndex> index;
  CFileAnalyzer *pdf = nullptr;
};

}  // namespace

TEST(PdfText, OperatorsGiveLinesBlanksAndStrings) {
  const struct {
    const char *content;
    int width;
    std::string expected;
  } cases[] = {
      {"BT\n(Hello) Tj 0 -14 TD (World) Tj\nET\n", 10000, "Hello\nWorld\n"},
      // A move below one unit is a blank; exactly one, or none, is nothing.
      {"BT\n(a) Tj 0 0.5 TD (b) Tj 0 1 TD (c) Tj 0 0 TD (d) Tj\nET\n", 10000, "a bcd\n"},
      // TJ kerning before a string: above 1000 a TAB, above 100 a blank.
      {"BT\n[(A) -250 (B)] TJ\nET\n", 10000, "A B\n"},
      {"BT\n[(A) -30 (B)] TJ\nET\n", 10000, "AB\n"},
      {"BT\n[(A) -1200 (B)] TJ\nET\n", 10000, "A\tB\n"},
      {"BT\n[(A)-250(B)]TJ\nET\n", 10000, "A B\n"},
      // Strings placed by more than one Tm each are words of their own.
      {"BT\n1 0 0 1 9 9 Tm 1 0 0 1 9 9 Tm (a) Tj 1 0 0 1 9 9 Tm 1 0 0 1 9 9 Tm (b) Tj\nET\n", 10000, " a b\n"},
      {"BT\n1 0 0 1 9 9 Tm (a) Tj 1 0 0 1 9 9 Tm (b) Tj\nET\n", 10000, "ab\n"},
      {"BT\n<48656C6C6F> Tj\nET\n", 10000, "Hello\n"},
      {"BT\n<4> Tj\nET\n", 10000, "@\n"},
      // A blank inside a hex string pairs with the digit after it.
      {"BT\n<48 69> Tj\nET\n", 10000, "H\n"},
      // Blocks open and close only on operators standing alone.
      {"BT(Hello) Tj\nET\n", 10000, ""},
      {"BT\n(a) Tj ETX (b) Tj\nET\n", 10000, "ab\n"},
      {"(outside) Tj\nBT\n(in) Tj\nET\n(after) Tj\n", 10000, "in\n"},
      // The first unescaped ")" ends a string; escapes are kept as they stand.
      {"BT\n(a(b)c) Tj\nET\n", 10000, "a(b\n"},
      {"BT\n(\\(x\\) \\101 a\\\\b \\n) Tj\nET\n", 10000, "(x) 101 a\\b n\n"},
      {"BT\n(a\x01\tb caf\xe9\x7f\x85) Tj\nET\n", 10000, "ab caf\xe9\n"},
      // Long lines break at their last blank; an ET at the very end of the
      // data, with nothing after it, is not seen.
      {"BT\n(one two three four five six seven) Tj\nET\n", 20, "one two three four\nfive six seven\n"},
      {"BT\n(abcdefghijklmnopqrstuvwxyz end) Tj\nET\n", 20, "\nbcdefghijklmnopqrstuvwxyz end\n"},
      {"BT\n(a) Tj\nET", 10000, "a"},
      {"BT\n(open", 10000, "open"},
  };
  for (const auto &c : cases) EXPECT_EQ(text(c.content, c.width), c.expected) << c.content;
}

TEST(PdfText, NumbersBeforeAnOperatorAreReadBackwards) {
  const struct {
    const char *history;
    int index;
    float expected;
  } cases[] = {
      {"     0 -12 TD  ", 9, 12.0f},   // the sign stops the walk
      {"    [(A) -250 (", 13, 250.0f},  // blanks before the position are passed over
      {"         1.5   ", 14, 1.5f},
      {"          .25  ", 14, 0.25f},
      {"12345678901234x", 14, -1.0f},
      {"1234          5", 13, 234.0f},  // the first byte is never taken
      {"         1.2.3 ", 14, 1.2f},
      {"        .  .   ", 14, -1.0f},
  };
  for (const auto &c : cases) EXPECT_FLOAT_EQ(extractNumber(c.history, c.index), c.expected) << c.history;
}

TEST_F(Pdf, DocumentsFromRealToolsGiveTheTextOfTheirStrings) {
  const struct {
    const char *file;
    std::set<std::string> present, absent;
    std::vector<std::string> displayed;
  } cases[] = {
      // pdflatex: Td moves are not TD, so lines run together; kerning makes
      // the blanks, a wide gap a TAB; the escape "\351" leaves its digits.
      {"report-pdflatex.pdf",
       {"garden", "reportthe", "tomatoes", "ripened", "zucchini", "enormous", "weharvested", "pumpkins",
        "october", "carrots", "kilogramsbeans", "kilogramscaf351", "breakfast"},
       {"report", "harvested", "kilograms", "cafe", "type1", "fontfile"},
       {"1\tGarden reportThe tomatoes ripened early this year, and the zucchini grew enormous. "
        "Weharvested pumpkins in October.Carrots\t12 kilogramsBeans\t7 kilogramsCaf351 au lait for breakfast.1\n"}},
      // ps2pdf: Latin-1 bytes as they are; lines set with ' run together.
      {"invoice-ps2pdf.pdf",
       {"invoice", "harbour", "officeanchors", "ropes", "delivered", "monday", "caf\xe9", "cr\xe8me", "crew",
        "second", "lighthouse", "maintenance"},
       {"anchors", "office"},
       {"Invoice for the harbour officeAnchors and ropes delivered on Monday.Caf\xe9 cr\xe8me served to the crew.\n",
        "Second page: lighthouse maintenance\n"}},
      // LibreOffice writes glyph numbers of its embedded fonts: no words.
      {"minutes-libreoffice.pdf", {}, {"rowing", "regatta", "minutes"}, {}},
      // Encrypted streams do not inflate.
      {"invoice-encrypted.pdf", {}, {"invoice", "harbour"}, {}},
  };
  for (const auto &c : cases) {
    SCOPED_TRACE(c.file);
    SetUp();
    const std::string path = std::string(KURVO_TEST_DATA) + "/pdf/" + c.file;
    const std::set<std::string> words = wordsOf(path);
    for (const std::string &word : c.present) EXPECT_EQ(words.count(word), 1u) << word;
    for (const std::string &word : c.absent) EXPECT_EQ(words.count(word), 0u) << word;
    EXPECT_TRUE(!c.present.empty() || words.empty());
    const std::string display = shown(path);
    for (const std::string &part : c.displayed) EXPECT_NE(display.find(part), std::string::npos) << display;
    EXPECT_TRUE(!c.displayed.empty() || display.find_first_not_of('\n') == std::string::npos) << display;
  }
}

TEST_F(Pdf, StreamsAreFoundCutAndInflatedByTheirRules) {
  const std::string hello = deflated("BT\n(hello world) Tj\nET\n");
  const std::string padding(70000, 'x');
  const struct {
    const char *name;
    std::string bytes;
    std::string expected;
  } cases[] = {
      {"no stream at all", "%PDF-1.4\nBT\n(plain) Tj\nET\n", ""},
      {"line feed", pdfOf({hello}), "hello world\n"},
      {"CR LF", pdfOf({hello}, "\r\n"), "hello world\n"},
      {"CR", pdfOf({hello}, "\r"), "hello world\n"},
      {"two streams", pdfOf({hello, deflated("BT\n(again) Tj\nET\n")}), "hello world\nagain\n"},
      {"stored, not deflated", pdfOf({"BT\n(plain) Tj\nET\n", hello}), "hello world\n"},
      {"damaged stream", pdfOf({hello.substr(0, 2) + "garbage" + hello.substr(9)}), ""},
      {"no endstream", pdfOf({}) + "<</Filter/FlateDecode>>\nstream\n" + hello, ""},
      // Every token is found across the ends of 65,535-byte reads.
      {"across reads", "%PDF-1.4\n" + padding.substr(0, 65535 - 9 - 5) + pdfOf({hello}).substr(9), "hello world\n"},
  };
  for (const auto &c : cases) {
    SCOPED_TRACE(c.name);
    for (size_t shift = 0; shift < (std::string(c.name) == "across reads" ? 14u : 1u); ++shift) {
      const std::string path = file(std::string(shift, ' ') + c.bytes);
      EXPECT_EQ(shown(path), c.expected) << shift;
    }
  }
}

TEST_F(Pdf, IndexingCountsTheFileAndClearsTheStatus) {
  CapturedMessages messages;
  const std::string path = file("%PDF-1.4 nothing here\n");
  const uint32_t before = index->ContentsIndexed;
  EXPECT_TRUE(pdf->indexFile(path.c_str(), index->files->addFile("doc.pdf")));
  EXPECT_EQ(index->ContentsIndexed, before + 1);
  ASSERT_FALSE(messages.statuses.empty());
  EXPECT_EQ(messages.statuses.back().key, "");
  EXPECT_FALSE(pdf->indexFile(tmp.file("missing.pdf").c_str(), 1));
  EXPECT_EQ(index->ContentsIndexed, before + 1);
}

TEST_F(Pdf, DisplayStopsExactlyAtItsSize) {
  const std::string path = file(pdfOf({deflated("BT\n(hello world) Tj\nET\n"), deflated("BT\n(more) Tj\nET\n")}));
  EXPECT_EQ(shown(path, 5), "hello");
  EXPECT_EQ(shown(path, 12), "hello world\n");
  EXPECT_EQ(shown(path, 14), "hello world\nmo");
}

TEST_F(Pdf, InflationStopsAtItsBoundsAndSaysSoOnce) {
  CapturedMessages messages;
  index->PdfStreamLimit = 1 << 20;
  index->PdfFileLimit = 3 << 20;
  const std::string bomb =
      deflated("BT\n(alpha) Tj\nET\n" + std::string(3 << 20, ' ') + "BT\n(omega) Tj\nET\n");
  const std::string small = deflated("BT\n(beta) Tj\nET\n" + std::string(900 << 10, ' '));
  const std::string path = file(pdfOf({bomb, bomb, small, small, small, deflated("BT\n(gamma) Tj\nET\n")}));
  const std::set<std::string> words = wordsOf(path);
  EXPECT_EQ(words, (std::set<std::string>{"alpha", "beta"}));
  int said = 0;
  for (const Message &m : messages.statuses) said += m.key == "PdfTooLarge" && m.argument == path;
  EXPECT_EQ(said, 1);
}

TEST_F(Pdf, BrokenFilesEndQuietly) {
  const std::string report = readFile(std::string(KURVO_TEST_DATA) + "/pdf/report-pdflatex.pdf");
  std::string garbage;
  for (int i = 0; i < 100000; ++i) garbage += static_cast<char>((i * 7919 + i / 13) & 0xFF);
  const std::string inputs[] = {report.substr(0, report.size() / 2), report.substr(0, 1200),
                                "FlateDecode stream\n", "FlateDecode stream\nendstream", "FlateDecode stream",
                                garbage, "FlateDecode stream\n" + garbage, ""};
  for (const std::string &bytes : inputs) {
    const std::string path = file(bytes);
    wordsOf(path);
    shown(path);
  }
}
