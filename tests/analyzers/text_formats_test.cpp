// HTML, RTF, Mac Roman and DOS OEM: documents made by real tools and the formats' edge cases, as words and display
// text. Tables laid out by hand:
// clang-format off
#include "test_support.h"

using namespace kurvo_test;

namespace {

// Words: ASCII letters and digits and the Latin-1 letters; everything from
// '!' up is shown except DEL.
class TextFormats : public AnalyzerTest {
 protected:
  void SetUp() override {
    AnalyzerTest::SetUp();
    for (int c = 0x80; c < 256; ++c) {
      index->setValidCharMask(c, c >= 0xC0 && c != 0xD7 && c != 0xF7);
      index->setValidViewableMask(c, true);
    }
  }
  std::string displayOf(const std::string &name, const std::string &path, bool displayFlag = true) {
    return displayText(*index->analyzerNamed(name), 1, path, 1 << 20, 0, displayFlag);
  }
};

std::string document(const std::string &name) { return std::string(KURVO_TEST_DATA) + "/" + name; }

// Latin-1 bytes written as escapes keep the table readable.
struct DocumentCase {
  const char *analyzer;
  const char *file;
  std::set<std::string> wordsPresent;
  std::set<std::string> wordsAbsent;
  std::vector<std::string> shown;      // each appears in the display text
  std::vector<std::string> notShown;   // none does
};

const DocumentCase kDocuments[] = {
    // A page with a script, a style block, references and UTF-8 (two-byte
    // sequences decode to Latin-1). Named references index as word ends;
    // tags and scripts are indexed like text but never shown.
    {"html", "html/cafe.html",
     {"caf\xe9", "cr\xe8me", "br\xfbl\xe9" "e", "croissant", "baguette", "fra\xee" "che", "th\xe9",
      "chocolat", "tartine", "secretvariable", "charset", "caf"},
     {"abc", "na\xefve"},
     {"Le caf\xe9 na\xefve & tartine <b> ", "\nCr\xe8me br\xfbl\xe9" "e, 3 ", "\ncroissant", "\nbaguette",
      "\nfra\xee" "che", "body { font-family: sans-serif; }"},
     {"secretvariable", "hidden", "<p>", "<li>", "&amp;"}},
    {"html", "html/garden-libreoffice.html",
     {"garden", "notes", "tomato", "caf\xe9", "d\xe9j\xe0", "gr\xfc\xdf" "e", "stra\xdf" "e", "na\xefve",
      "fa\xe7" "ade", "pumpkin", "zucchini", "libreoffice"},
     {},
     {"Caf\xe9 au lait for breakfast", "Gr\xfc\xdf" "e from the Stra\xdf" "e", "Pumpkin"},
     {"<p", "generator"}},
    // LibreOffice's RTF: font and colour tables, style sheet, list table,
    // a picture and \u escapes. Indexing keeps every group; display drops them.
    {"rtf", "rtf/garden-libreoffice.rtf",
     {"garden", "tomato", "caf\xe9", "d\xe9j\xe0", "gr\xfc\xdf" "e", "stra\xdf" "e", "na\xefve",
      "fa\xe7" "ade", "pumpkin", "zucchini", "liberation"},
     {"u8226"},
     {"Caf\xe9 au lait for breakfast, d\xe9j\xe0 vu in the greenhouse.", "Gr\xfc\xdf" "e from the Stra\xdf" "e",
      "Pumpkin"},
     {"Liberation", "Times New Roman", "Heading", "ffffff", "Zucchini"}},
    // A Mac code-page document: its escapes are Mac Roman.
    {"rtf", "rtf/note-textedit-mac.rtf",
     {"caf\xe9", "cr\xe8me", "br\xfbl\xe9" "e", "bold", "second", "helvetica"},
     {},
     {"Caf\xe9 cr\xe8me br\xfbl\xe9" "e \nsecond line with bold text\n"},
     {"Helvetica", "paperw"}},
    {"macroman", "text/letter-macroman.txt",
     {"ch\xe8re", "zo\xe9", "caf\xe9", "\xe9tait", "d\xe9j\xe0", "pr\xeat", "no\xebl", "\xfc" "ber",
      "m\xfcnchen", "gr\xf6\xdf" "e", "na\xefve"},
     {},
     {"Le caf\xe9 \xe9tait d\xe9j\xe0 pr\xeat \xe0 No\xebl.", "\x97\nfin"},
     {}},
    {"dosoem", "text/letter-dosoem.txt",
     {"ch\xe8re", "zo\xe9", "caf\xe9", "\xe9tait", "d\xe9j\xe0", "pr\xeat", "no\xebl", "\xfc" "ber",
      "m\xfcnchen", "gr\xf6\xdf" "e", "na\xefve"},
     {},
     {"Le caf\xe9 \xe9tait d\xe9j\xe0 pr\xeat \xe0 No\xebl."},
     {}},
};

}  // namespace

TEST_F(TextFormats, DocumentsGiveTheirWordsAndDisplayText) {
  for (const DocumentCase &c : kDocuments) {
    SCOPED_TRACE(c.file);
    const std::set<std::string> words = wordsOf(c.analyzer, document(c.file));
    for (const std::string &w : c.wordsPresent) EXPECT_TRUE(words.count(w)) << "missing word " << w;
    for (const std::string &w : c.wordsAbsent) EXPECT_FALSE(words.count(w)) << "unexpected word " << w;
    const std::string shown = displayOf(c.analyzer, document(c.file));
    for (const std::string &s : c.shown) EXPECT_NE(shown.find(s), std::string::npos) << "not shown: " << s << "\nin: " << shown;
    for (const std::string &s : c.notShown) EXPECT_EQ(shown.find(s), std::string::npos) << "shown: " << s;
  }
}

TEST_F(TextFormats, TheGenericAnalyzerReadsCodePageTextAsOtherBytes) {
  EXPECT_FALSE(wordsOf("generic", document("text/letter-macroman.txt")).count("caf\xe9"));
  EXPECT_FALSE(wordsOf("generic", document("text/letter-dosoem.txt")).count("caf\xe9"));
}

// Short inputs: each ends in ten blanks, since mark-up display keeps the last
// ten bytes of a file back for a next buffer that never comes.
struct InlineCase {
  const char *analyzer;
  std::string input;
  std::set<std::string> words;  // exactly the words indexed
  std::string shown;            // exactly the display text
  bool displayFlag;
};

TEST_F(TextFormats, EdgeCasesOfEachFormat) {
  const std::string pad = "          ";
  const InlineCase cases[] = {
      // A decoded '<' starts no tag, with or without tag handling.
      {"html", "x &lt;b&gt; y\n" + pad, {}, "x <b> y\n", true},
      {"html", "x &lt;b&gt; y\n" + pad, {}, "x <b> y\n", false},
      // A named reference shows its byte but ends the word when indexing.
      {"html", "caf&eacute; \n" + pad, {"caf"}, "caf\xe9\n", true},
      {"html", "caf&#233; &#x41;bcd \n" + pad, {"caf\xe9", "bcd"}, "caf\xe9 bcd\n", true},
      {"html", "a<P>new<p>par &Iuml; \n" + pad, {"new", "par"}, "a\nnew\npar \xce\n", true},
      {"html", "<p>x<script>var hidden;</script>seen \n" + pad, {"script", "var", "hidden", "seen"}, "\nx seen\n", true},
      {"html", "\xc3\xa9t\xc3\xa9 \n" + pad, {"\xe9t\xe9"}, "\xe9t\xe9\n", true},
      // \par ends a line, \pard does not; groups that are not text show
      // nothing; a control word inside a word does not split it.
      {"rtf", "{\\rtf1 {\\fonttbl Arial;}{\\*\\gen x}{\\pict 0a0b}{\\stylesheet Normal;}one\\par two\\pard three gar\\b den\\b0 \n}" + pad,
       {"arial", "a0b", "normal", "onetwothree", "garden"}, "one\ntwothree\ngarden\n", true},
      {"rtf", "{\\rtf1 one\r\ntwo\nthree\\'e9 \\{x\\} \n}" + pad, {"one", "two", "three\xe9"}, "onetwo\nthree\xe9 \\x\\\n\n", true},
      // Without the Mac header \'8e is byte 8E; with it, e acute.
      {"rtf", "{\\rtf1\\ansi caf\\'8e \n}" + pad, {"caf"}, "caf\x8e\n\n", true},
      {"rtf", "{\\rtf1\\mac\\ansicpg10000 caf\\'8e \n}" + pad, {"caf\xe9"}, "caf\xe9\n\n", true},
      {"macroman", "plain ascii \x8e\x8e\x8e \n", {"plain", "ascii", "\xe9\xe9\xe9"}, "plain ascii \xe9\xe9\xe9\n\n", true},
      {"dosoem", "m\x81hle \xb0\xb0 \n", {"m\xfchle"}, "m\xfchle \xff\xff\n\n", true},
  };
  for (const InlineCase &c : cases) {
    SCOPED_TRACE(c.input);
    const std::string path = dataFile("inline", c.input);
    EXPECT_EQ(wordsOf(c.analyzer, path), c.words);
    EXPECT_EQ(displayOf(c.analyzer, path, c.displayFlag), c.shown);
  }
}
