// The viewer: opening a file in place or out of nested archives, its lines, hits and outlines.
#include <cstring>

#include "contents/file_contents.h"
#include "test_support.h"

using namespace kurvo_test;

namespace {

// Shows a fixed text and notes the bytes of each file it was asked for, as they were at that moment.
struct FixedTextAnalyzer : CFileAnalyzer {
  FixedTextAnalyzer(CKurvoIndex *index, std::string text) : CFileAnalyzer(index), text(std::move(text)) {}
  char *fillDisplayBuffer(const char *path, unsigned long, unsigned long, int, bool) override {
    seenBytes.push_back(readFile(path));
    return strdup(text.c_str());
  }
  std::string text;
  std::vector<std::string> seenBytes;
};

// An archive whose members are written as "member <name> of <archive bytes>".
struct FakeArchiveAnalyzer : CFileAnalyzer {
  explicit FakeArchiveAnalyzer(CKurvoIndex *index, bool fail = false) : CFileAnalyzer(index), fail(fail) {}
  bool extractToTempFile(const char *archivePath, const char *memberName, const char *tempPath,
                         unsigned long memberNumber) override {
    calls.emplace_back(archivePath, tempPath, memberNumber, exists(archivePath));
    if (!fail) writeFile(tempPath, std::string("member ") + memberName + " of " + readFile(archivePath));
    return !fail;
  }
  bool fail;
  // Archive path, temporary path, member number, whether the archive existed.
  std::vector<std::tuple<std::string, std::string, unsigned long, bool>> calls;
};

class ContentsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    index = std::make_unique<CKurvoIndex>(true, dir.path());
    for (int c = 0; c < 256; ++c) {
      bool letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
      index->setValidCharMask(c, letter);
      index->setValidTrailingMask(c, letter);
      index->setValidViewableMask(c, c >= 32 && c < 127);
      index->setNonAlphaCharMask(c, false);
    }
    index->temporaryDirectory = dir.path() + "tmp";
    writeFile(index->temporaryDirectory + "/.keep", "");
    folderPath = dir.path() + "docs";
    folder = addRecord(folderPath, 0);
  }

  // The index owns the analyzer and deletes the one it replaces.
  template <typename A>
  A *install(const std::string &name, A *analyzer) {
    CFileAnalyzer *&slot = index->analyzers[name];
    delete slot;
    slot = analyzer;
    return analyzer;
  }

  FixedTextAnalyzer *showText(const std::string &text) {
    return install("generic", new FixedTextAnalyzer(index.get(), text));
  }

  uint32_t addRecord(const std::string &name, uint32_t parent) {
    uint32_t number = index->files->addFile(name.c_str());
    file_record::setParent(index->files->getData(number), parent);
    return number;
  }

  // A file in the docs folder, on disk and in the table.
  uint32_t addFile(const std::string &name, const std::string &bytes = "bytes\n") {
    writeFile(folderPath + "/" + name, bytes);
    return addRecord(name, folder);
  }

  std::unique_ptr<CFileContents> open(uint32_t fileNumber, int distance = 5) {
    return std::make_unique<CFileContents>(index.get(), fileNumber, 100000, 0, false, distance);
  }

  TempDir dir;
  CapturedMessages messages;
  std::unique_ptr<CKurvoIndex> index;
  std::string folderPath;
  uint32_t folder = 0;
};

TEST_F(ContentsTest, PlainFileIsReadInPlaceByTheAnalyzerItsNameChooses) {
  EXPECT_EQ(raised(messages, [&] { open(addFile("note.txt")); }).key, "AssertionFailed");  // no analyzer at all
  FixedTextAnalyzer *generic = showText("generic\n");
  install("marked", new FixedTextAnalyzer(index.get(), "marked\n"));
  index->setIncludeCount(1);
  index->setIncludePattern(0, "*.htm", "marked");
  EXPECT_STREQ(open(addFile("page.htm"))->contents(), "marked\n");

  auto viewer = open(addFile("note.txt", "on disk\n"));
  EXPECT_STREQ(viewer->contents(), "generic\n");
  EXPECT_EQ(std::string(viewer->filePath()), folderPath + "/note.txt");
  EXPECT_EQ(generic->seenBytes, std::vector<std::string>{"on disk\n"});
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

  std::string zipTemp = index->temporaryDirectory + "/tmp" + std::to_string(zip) + ".zip";
  std::string docTemp = index->temporaryDirectory + "/tmp" + std::to_string(doc) + ".README";
  EXPECT_EQ(archive->calls,
            (decltype(archive->calls){{folderPath + "/outer.tar", zipTemp, zip, true}, {zipTemp, docTemp, doc, true}}));
  EXPECT_EQ(generic->seenBytes.at(0), "member README of member inner.zip of TAR");
  EXPECT_EQ(std::string(viewer->filePath()), docTemp);
  EXPECT_FALSE(exists(zipTemp) || exists(docTemp));
  EXPECT_STREQ(viewer->contents(), "member text\n");
}

// What cannot be shown raises: a folder, a failed or unclaimed extraction, and
// chains from the folder down (folder, file, members) past a hundred records.
TEST_F(ContentsTest, RecordsThatCannotBeShown) {
  showText("x\n");
  install("good", new FakeArchiveAnalyzer(index.get()));
  install("bad", new FakeArchiveAnalyzer(index.get(), true));
  index->setIncludeCount(2);
  index->setIncludePattern(0, "*.tar", "good");
  index->setIncludePattern(1, "*.zip", "bad");
  const uint32_t zip = addRecord("inner.zip", addFile("outer.tar"));
  uint32_t deep = addFile("deep.zip");
  for (int level = 0; level < 98; ++level) deep = addRecord("m.zip", deep);
  const uint32_t a = addFile("a.zip"), b = addRecord("b.zip", a);
  file_record::setParent(index->files->getData(a), b);
  const std::pair<uint32_t, const char *> cases[] = {
      {folder, "NoFileContentsForDir"},
      {addRecord("doc.txt", zip), "ArchiveExtractError"},
      {addRecord("b.txt", addFile("a.gz")), "ArchiveExtractError"},  // no analyzer claims it
      {deep, "ArchiveExtractError"},                                 // 100 records: not too deep
      {addRecord("m.zip", deep), "ArchivesNestedTooDeep"},
      {b, "ArchivesNestedTooDeep"},  // circular parents
  };
  for (const auto &[record, key] : cases) EXPECT_EQ(raised(messages, [&] { open(record); }).key, key) << record;
  EXPECT_FALSE(exists(index->temporaryDirectory + "/tmp" + std::to_string(zip) + ".zip"));
}

TEST_F(ContentsTest, LinesComeWithTheirLineFeedsUntilTheEnd) {
  showText("one\n\nlast");
  auto viewer = open(addFile("f.txt"));
  EXPECT_STREQ(viewer->nextLine(), "one\n");
  EXPECT_STREQ(viewer->nextLine(), "\n");
  EXPECT_STREQ(viewer->nextLine(), "last");
  for (int again = 0; again < 2; ++again) EXPECT_EQ(raised(messages, [&] { viewer->nextLine(); }).key, "EndOfContents");
}

class HitSearchTest : public ContentsTest {
 protected:
  std::unique_ptr<CFileContents> view(const std::string &text, int defaultDistance = 5) {
    showText(text);
    return open(addFile("f" + std::to_string(++m_files) + ".txt"), defaultDistance);
  }

  // Every marked word in order, stepping over each hit word as a host would.
  static std::vector<std::string> hits(CFileContents &viewer, const char *query) {
    std::vector<std::string> found;
    uint32_t offset = 0;
    while (uint32_t at = viewer.searchBuffer(offset, query)) {
      uint32_t length = viewer.tokenLength(at - 1);
      found.push_back(std::string(viewer.contents() + at - 1, length));
      offset = at - 1 + (length ? length : 1);
    }
    return found;
  }

 private:
  int m_files = 0;
};

using Words = std::vector<std::string>;

struct HitCase {
  const char *text;
  const char *query;
  Words expected;
  int defaultDistance;
};

TEST_F(HitSearchTest, QueriesMarkTheseWords) {
  const HitCase cases[] = {{"one two three", "*", {"one", "two", "three"}, 5},
                           {"one two three", "+one +two", {}, 5},
                           {"ab abc abcd", "ab?", {"ab", "abc"}, 5},
                           {"ab abc abcd", "ab*", {"ab", "abc", "abcd"}, 5},
                           {"abc abcbd", "a*bd", {"abcbd"}, 5},  // the star tries each later match
                           {"ab abc", "ab", {"ab"}, 5},          // the term covers the whole word
                           {"abc ac", "a*?", {}, 5},             // "*" then "?" looks for a literal "?"
                           {"One TWO", "two Two", {"TWO"}, 5},   // text folded, query as it stands
                           // Proximity: "a" is marked only with a "b" among the next N + 1 words.
                           {"a x x x b", "a <3 b", {"a", "b"}, 5},
                           {"a x x x x b", "a <3 b", {"b"}, 5},
                           // "<9" carries no number: the default distance applies.
                           {"a x b", "a <9 b", {"a", "b"}, 1},
                           {"a x x b", "a <9 b", {"b"}, 1},
                           // The 9 ends a number: "<19" is a distance of 1.
                           {"a x b", "a <19 b", {"a", "b"}, 5},
                           {"a x x b", "a <19 b", {"b"}, 5},
                           // Proximity needs a later word: a "b" before the "a" does not count.
                           {"b a", "a <3 b", {"b"}, 5}};
  for (const auto &c : cases) {
    auto viewer = view(c.text, c.defaultDistance);
    EXPECT_EQ(hits(*viewer, c.query), c.expected) << '"' << c.query << "\" in \"" << c.text << '"';
  }
}

// Offsets count from one with 0 for none; the pointer search gives the NUL
// for none and goes backwards; a token's length from inside it is its rest.
TEST_F(HitSearchTest, PositionsAndTokenLengths) {
  auto viewer = view("one, twelve one");
  EXPECT_EQ(viewer->searchBuffer(0u, "one"), 1u);
  EXPECT_EQ(viewer->searchBuffer(3u, "one"), 13u);
  EXPECT_EQ(viewer->searchBuffer(13u, "one"), 0u);
  EXPECT_EQ(viewer->searchBuffer(500u, "one"), 0u);
  EXPECT_TRUE(viewer->containsHit("twelve"));
  EXPECT_FALSE(viewer->containsHit("+twelve"));
  char *t = const_cast<char *>(viewer->contents());
  EXPECT_EQ(viewer->searchBuffer(t, "six", 0, false), t + 15);
  EXPECT_EQ(viewer->searchBuffer(t + 15, "one", 0, true), t + 12);
  EXPECT_EQ(viewer->tokenLength(3), 0u);  // ','
  EXPECT_EQ(viewer->tokenLength(6), 5u);
  EXPECT_EQ(viewer->tokenLength(99), 0u);
}

struct OutlineCase {
  const char *text;
  const char *query;
  const char *expected;
  int maxWordLength;
};

TEST_F(HitSearchTest, OutlineKeepsTheLinesWithHitsOnce) {
  const OutlineCase cases[] = {
      {"alpha beta\ngamma delta\nbeta again\nlast beta", "beta", "alpha beta\nbeta again\nlast beta", 16},
      {"beta beta beta\nzeta\n", "beta", "beta beta beta\n", 16},
      {"first\nsecond\n", "*", "first\nsecond\n", 16},
      // Hits outside the word lengths (3 to the maximum) do not count; a
      // maximum of 0 is taken as it stands.
      {"ab x\nabc y\n", "ab*", "abc y\n", 16},
      {"abcd\nabcde\n", "abcd*", "abcd\n", 4},
      {"abc\ndef\n", "*", "", 0},
      {"ab\nabc\n", "+abc", "", 16}};
  for (const auto &c : cases) {
    index->MaxWordLength = c.maxWordLength;
    auto viewer = view(c.text);
    viewer->convertToOutline(c.query);
    EXPECT_STREQ(viewer->contents(), c.expected) << c.query << " in " << c.text;
  }
}

TEST_F(HitSearchTest, OutlineLeavesTheReadPositionAlone) {
  auto viewer = view("one\ntwo\nthree\nfour\n");
  EXPECT_STREQ(viewer->nextLine(), "one\n");
  viewer->convertToOutline("three");
  EXPECT_STREQ(viewer->contents(), "three\n");
  // Reading goes on four bytes into the block, inside the outline's line.
  EXPECT_STREQ(viewer->nextLine(), "e\n");
}

}  // namespace
