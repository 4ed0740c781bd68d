// ZIP, TAR and GZIP archives made by zip, tar and gzip: member records, their words, extraction and display.
// Tables laid out by hand:
// clang-format off

#include <ctime>

#include "contents/file_contents.h"
#include "test_support.h"

using namespace kurvo_test;

namespace {

const std::string kArchives = std::string(KURVO_TEST_DATA) + "/archives/";
const std::string kLongBase(39, 'e');
const std::string kLongDir(60, 'd');

class Containers : public ::testing::Test {
 protected:
  void SetUp() override {
    index = startFullBuild(tmp);
    const char *patterns[][2] = {{"*.txt", "generic"}, {"*.zip", "zip"}, {"*.tar", "tar"},
                                 {"*.tgz", "gzip"},    {"*.gz", "gzip"},  {"*.mbox", "mbox"}};
    index->setIncludeCount(6);
    for (int i = 0; i < 6; ++i) index->setIncludePattern(i, patterns[i][0], patterns[i][1]);
    temp = tmp.path() + "t";
    std::filesystem::create_directory(temp);
    index->temporaryDirectory = temp;
    folder = addTopFolder(*index, kArchives.substr(0, kArchives.size() - 1));
  }

  uint32_t indexArchive(const std::string &name, bool expected = true, const std::string &from = kArchives) {
    const uint32_t record = index->files->addFile(name.c_str());
    file_record::setParent(index->files->getData(record), folder);
    const std::string path = from + name;
    EXPECT_EQ(index->analyzerThatMatches(path.c_str())->indexFile(path.c_str(), record), expected);
    return record;
  }

  // Members by "archive::member::member" path, with their sizes.
  std::string memberPath(uint32_t record) {
    const char *data = index->files->getData(record);
    const uint32_t parent = file_record::parent(data);
    if (parent == folder) return file_record::name(data);
    return memberPath(parent) + "::" + file_record::name(data);
  }
  std::map<std::string, uint32_t> members() {
    std::map<std::string, uint32_t> out;
    for (uint32_t n = index->files->getFirst(); n; n = index->files->getNext(n)) {
      const uint32_t parent = file_record::parent(index->files->getData(n));
      if (parent != 0 && parent != folder) out[memberPath(n)] = file_record::size(index->files->getData(n));
    }
    return out;
  }
  // Each test word lies in one member: the last file its data names.
  std::map<std::string, std::string> wordPlaces() {
    std::map<std::string, std::string> out;
    for (const auto &[word, number] : allWords(*index->words))
      out[word] = memberPath(load32(index->words->getData(number) + word_data::kCurrentFile));
    return out;
  }
  uint32_t recordOf(const std::string &path) {
    for (uint32_t n = index->files->getFirst(); n; n = index->files->getNext(n))
      if (file_record::parent(index->files->getData(n)) != 0 && memberPath(n) == path) return n;
    return 0;
  }
  std::string display(uint32_t record) { return CFileContents(index.get(), record, 1000, 0, true, 8).contents(); }
  bool tempIsEmpty() { return std::filesystem::is_empty(temp); }

  TempDir tmp;
  std::string temp;
  std::unique_ptr<CKurvoIndex> index;
  uint32_t folder = 0;
};

}  // namespace

TEST_F(Containers, ArchivesGiveTheirMembersAndWords) {
  const std::string longName = kLongDir + "/" + kLongBase;
  const struct {
    std::string archive;
    std::map<std::string, uint32_t> members;
    std::map<std::string, std::string> words;
  } cases[] = {
      // Folder entries give no records; a member no pattern reads is listed.
      {"docs.zip",
       {{"docs.zip::docs/readme.txt", 18}, {"docs.zip::docs/sub/deep.txt", 12},
        {"docs.zip::docs/picture.png", 12}, {"docs.zip::notes.txt", 17}},
       {{"zebra", "docs.zip::docs/readme.txt"}, {"walrus", "docs.zip::docs/sub/deep.txt"},
        {"gamma", "docs.zip::notes.txt"}, {"alpha", "docs.zip::docs/readme.txt"}}},
      {"empty.zip", {}, {}},
      // GNU long names are skipped with their data: the member after one
      // keeps the first 100 bytes of its path. Links and folders are left out.
      {"mixed.tar",
       {{"mixed.tar::docs/readme.txt", 18}, {"mixed.tar::docs/sub/deep.txt", 12},
        {"mixed.tar::docs/picture.png", 12}, {"mixed.tar::inner.zip", 133},
        {"mixed.tar::inner.zip::notes.txt", 17}, {"mixed.tar::empty.txt", 0},
        {"mixed.tar::" + longName, 14}},
       {{"zebra", "mixed.tar::docs/readme.txt"}, {"walrus", "mixed.tar::docs/sub/deep.txt"},
        {"gamma", "mixed.tar::inner.zip::notes.txt"}, {"alpha", "mixed.tar::docs/readme.txt"}}},
      // The ustar prefix never joins the name.
      {"ustar-long.tar", {{"ustar-long.tar::long.txt", 14}}, {{"kiwi", "ustar-long.tar::long.txt"}, {"longname", "ustar-long.tar::long.txt"}}},
      {"folders.tar", {}, {}},
      {"mixed.tgz",
       {{"mixed.tgz::mixed.tar", 10240}, {"mixed.tgz::mixed.tar::docs/readme.txt", 18},
        {"mixed.tgz::mixed.tar::docs/sub/deep.txt", 12}, {"mixed.tgz::mixed.tar::docs/picture.png", 12},
        {"mixed.tgz::mixed.tar::inner.zip", 133}, {"mixed.tgz::mixed.tar::inner.zip::notes.txt", 17},
        {"mixed.tgz::mixed.tar::empty.txt", 0}, {"mixed.tgz::mixed.tar::" + longName, 14}},
       {{"zebra", "mixed.tgz::mixed.tar::docs/readme.txt"}, {"walrus", "mixed.tgz::mixed.tar::docs/sub/deep.txt"},
        {"gamma", "mixed.tgz::mixed.tar::inner.zip::notes.txt"}, {"alpha", "mixed.tgz::mixed.tar::docs/readme.txt"}}},
      {"notes.txt.gz", {{"notes.txt.gz::notes.txt", 17}}, {{"gamma", "notes.txt.gz::notes.txt"}, {"inner", "notes.txt.gz::notes.txt"}, {"text", "notes.txt.gz::notes.txt"}}},
      // No pattern reads "readme": recorded, never unpacked, size 0.
      {"readme.gz", {{"readme.gz::readme", 0}}, {}},
  };
  for (const auto &c : cases) {
    SCOPED_TRACE(c.archive);
    SetUp();
    indexArchive(c.archive);
    EXPECT_EQ(members(), c.members);
    std::map<std::string, std::string> words = wordPlaces();
    for (const auto &[word, place] : c.words) EXPECT_EQ(words[word], place) << word;
    EXPECT_TRUE(c.archive == "ustar-long.tar" || !words.count("kiwi"));
    EXPECT_TRUE(tempIsEmpty());
  }
}

TEST_F(Containers, TrackAllAndUpdateModeDecideWhatIsRecordedAndRead) {
  index->TrackAll = 0;
  indexArchive("docs.zip");
  EXPECT_EQ(members().count("docs.zip::docs/picture.png"), 0u);

  // Members dated 2020 are not later than a time base of now: skipped in an
  // update even though their records never had words.
  SetUp();
  index->setIncludePattern(0, "*.none", "generic");
  const uint32_t archive = indexArchive("mixed.tar");
  EXPECT_EQ(members().size(), 7u);
  index->setIncludePattern(0, "*.txt", "generic");
  index->IsUpdate = 1;
  index->TimeBase = static_cast<int32_t>(std::time(nullptr));
  index->analyzerNamed("tar")->indexFile((kArchives + "mixed.tar").c_str(), archive);
  EXPECT_EQ(wordPlaces().count("zebra"), 0u);
  index->TimeBase = 0;
  index->analyzerNamed("tar")->indexFile((kArchives + "mixed.tar").c_str(), archive);
  EXPECT_EQ(wordPlaces()["zebra"], "mixed.tar::docs/readme.txt");
}

TEST_F(Containers, MembersComeBackOutWhole) {
  const struct {
    const char *analyzer, *archive, *member;
    std::string bytes;
  } cases[] = {
      {"zip", "docs.zip", "docs/readme.txt", "alpha zebra notes\n"},
      {"tar", "mixed.tar", "docs/readme.txt", "alpha zebra notes\n"},
      {"tar", "mixed.tar", "empty.txt", ""},
      {"gzip", "notes.txt.gz", "notes.txt", "inner gamma text\n"},
  };
  for (const auto &c : cases) {
    SCOPED_TRACE(c.member);
    const std::string out = tmp.file("out");
    EXPECT_TRUE(index->analyzerNamed(c.analyzer)->extractToTempFile((kArchives + c.archive).c_str(), c.member, out.c_str(), 0));
    EXPECT_EQ(readFile(out), c.bytes);
  }
  EXPECT_FALSE(index->analyzerNamed("zip")->extractToTempFile((kArchives + "docs.zip").c_str(), "nothing", tmp.file("x").c_str(), 0));
  EXPECT_FALSE(index->analyzerNamed("tar")->extractToTempFile((kArchives + "mixed.tar").c_str(), "nothing", tmp.file("x").c_str(), 0));
}

// Python's mailbox module wrote it: plain messages, one without "Date:", one
// with two named base64 attachments, one whose body is base64 and one with an
// unnamed attachment. Names use the local time zone.
TEST_F(Containers, AMailboxGivesItsMessagesAndNamedAttachments) {
  setenv("TZ", "UTC", 1);
  tzset();
  indexArchive("inbox.mbox");
  const std::string dan = "inbox.mbox::dan@example.org 2004-05-08 09:10:11-";
  std::map<std::string, std::string> expected = {
      {"walrus", "inbox.mbox::ann.smith@example.org 2004-05-06 12:34:56-0.txt"},
      {"otter", "inbox.mbox::bob@example.org 2004-05-07 08:00:00-0.txt"},
      {"heron", dan + "0.txt"}, {"pelicans", dan + "1.txt"}, {"flamingo", dan + "3.txt"},
      {"toucan", "inbox.mbox::fay@example.org 2004-05-10 11:00:00-0.txt"}};
  std::map<std::string, std::string> words = wordPlaces();
  for (const auto &[word, place] : expected) EXPECT_EQ(words[word], place) << word;
  std::set<std::string> names, expectedNames;
  for (const auto &[name, size] : members()) names.insert(name);
  for (const auto &[word, place] : expected) expectedNames.insert(place);
  EXPECT_EQ(names, expectedNames) << "no document for the undated or base64 bodies";
  EXPECT_EQ(words.count("penguin"), 0u);
  EXPECT_EQ(display(recordOf(dan + "1.txt")), "attached notes about\npelicans\n");

  // Only MaxPerFileRead + 1,000 bytes are read.
  SetUp();
  index->MaxPerFileRead = 1;
  indexArchive("inbox.mbox");
  EXPECT_EQ(members().size(), 3u) << "two messages and the start of the third dated one";
  EXPECT_EQ(wordPlaces().count("pelicans"), 0u);
}

TEST_F(Containers, HostileArchivesCostOneFileAndSaySoOnce) {
  // 5 KB that unpack to 2 MB and then to 2 GiB.
  CapturedMessages messages;
  index->ArchiveMemberLimit = 1 << 20;
  index->ArchiveTotalLimit = 3 << 20;
  indexArchive("bomb.txt.gz.gz");
  std::map<std::string, uint32_t> found = members();
  EXPECT_EQ(found["bomb.txt.gz.gz::bomb.txt.gz"], 1u << 20);
  EXPECT_LE(found["bomb.txt.gz.gz::bomb.txt.gz::bomb.txt"], 1u << 20);
  // Plain bytes pass through gzip's reader: a name of many ".gz" is an
  // archive that holds itself, level after level.
  std::string name = "self.txt";
  for (int i = 0; i < 12; ++i) name += ".gz";
  tmp.write("data/" + name, "selfword here\n");
  indexArchive(name, true, tmp.path() + "data/");
  EXPECT_EQ(wordPlaces().count("selfword"), 0u);
  ASSERT_EQ(messages.statuses.size(), 2u);
  EXPECT_EQ(messages.statuses[0], (Message{"ArchiveTooLarge", kArchives + "bomb.txt.gz.gz"}));
  EXPECT_EQ(messages.statuses[1].key, "ArchiveTooDeep");
  EXPECT_TRUE(tempIsEmpty());

  // Cut and damaged archives end early and leave nothing behind.
  const std::string zip = readFile(kArchives + "docs.zip"), tar = readFile(kArchives + "mixed.tar"),
                    tgz = readFile(kArchives + "mixed.tgz"), mbox = readFile(kArchives + "inbox.mbox");
  std::string flipped = tgz;
  for (size_t i = 40; i < flipped.size(); i += 7) flipped[i] = static_cast<char>(~flipped[i]);
  const std::pair<std::string, std::string> damaged[] = {
      {"cut.zip", zip.substr(0, 300)},  {"cut.tar", tar.substr(0, 2000)}, {"cut.tgz", tgz.substr(0, 200)},
      {"flipped.tgz", flipped},         {"junk.zip", std::string(5000, 'P')},
      {"junk.tar", std::string(5000, '7')}, {"cut.mbox", mbox.substr(0, 1500)},
      // An attachment still open when the next message starts with a blank line.
      {"pending.mbox", "From a\nFrom: A <a@x>\nDate: 6 May 2004 12:00:00\nContent-Transfer-Encoding: base64\n"
                       "Content-Disposition: attachment; filename=\"x.txt\"\n\nYWJj\nFrom b\n\nFrom: B\n"},
  };
  for (const auto &[file, bytes] : damaged) {
    SCOPED_TRACE(file);
    tmp.write("data/" + file, bytes);
    const std::string path = tmp.path() + "data/" + file;
    const uint32_t record = index->files->addFile(file.c_str());
    index->analyzerThatMatches(path.c_str())->indexFile(path.c_str(), record);
    EXPECT_TRUE(file.find(".mbox") != std::string::npos || tempIsEmpty());
  }
}
