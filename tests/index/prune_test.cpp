// Pruning beyond what first_index_test's two runs show: deleted records, files without analyzer,
// broken parents, and the no-change check.

#include <cstring>
#include <functional>

#include "report/message_keys.h"
#include "test_support.h"

using namespace kurvo_test;

namespace {

constexpr int32_t kBase = 1700000000;

class Prune : public IndexRunTest {
 protected:
  void SetUp() override {
    IndexRunTest::SetUp();
    put("f.txt", "changing words\n", kBase - 100);
    put("data.bin", "raw bytes\n", kBase - 100);
    put("sub/s.txt", "folder words\n", kBase - 100);
    put("still/t.txt", "quiet words\n", kBase - 100);
    touchFolders(kBase - 100, kBase - 100, kBase - 100);
  }

  void put(const std::string &rel, const std::string &text, int32_t time) {
    writeFile(top + "/" + rel, text);
    setMTime(top + "/" + rel, time);
  }
  void touchFolders(int32_t topTime, int32_t subTime, int32_t stillTime) {
    setMTime(top + "/sub", subTime);
    setMTime(top + "/still", stillTime);
    setMTime(top, topTime);
  }

  // Builds the first index with TimeBase kBase for the prune that follows.
  void build() {
    start();
    index->indexDirectory(top.c_str(), topRecord);
    index->compressLinks();
    index->TimeBase = kBase;
  }
};

}  // namespace

// A vanished file is marked deleted, once; members of archives are never
// looked for on disk.
TEST_F(Prune, VanishedFilesAreMarkedDeletedAndMembersLeftAlone) {
  build();
  const uint32_t number = records().at(top + "/sub/s.txt").number;
  const uint32_t member = index->files->addFile("member.txt");
  file_record::setParent(index->files->getData(member), records().at(top + "/f.txt").number);
  std::filesystem::remove(top + "/sub/s.txt");
  setMTime(top + "/sub", kBase - 100);
  for (int round = 0; round < 2; ++round) {
    index->prune();
    EXPECT_EQ(std::string(index->files->getText(number)), "\xFF.txt");
  }
  EXPECT_FALSE(file_record::isObsolete(index->files->getData(member)));
  EXPECT_TRUE(messages.errors.empty());
}

TEST_F(Prune, AChangedFileWithoutAnalyzerKeepsItsRecordWhenTrackingAll) {
  for (int trackAll : {1, 0}) {
    SCOPED_TRACE(trackAll);
    build();
    const RecordCopy old = records().at(top + "/data.bin");
    put("data.bin", "raw bytes, more of them\n", kBase + 3);
    index->TrackAll = trackAll;
    index->prune();
    const RecordCopy now = records().at(top + "/data.bin");
    EXPECT_EQ(std::make_tuple(now.number, now.time, now.size),
              std::make_tuple(old.number, trackAll ? kBase + 3 : kBase - 100, trackAll ? 24u : 10u));
    index.reset();
    put("data.bin", "raw bytes\n", kBase - 100);
  }
}

TEST_F(Prune, ABrokenParentLeavesADiagnosticAndStops) {
  build();
  const uint32_t orphan = index->files->addFile("orphan.txt");
  file_record::setParent(index->files->getData(orphan), 0x7ffffff0);

  index->reportFolder = tmp.path();
  EXPECT_TRUE(throwsKurvo([&] { index->prune(); }));
  ASSERT_EQ(messages.errors.size(), 2u);
  EXPECT_EQ(messages.errors[0].key, kurvo_keys::kAssertionFailed);
  EXPECT_EQ(messages.errors[1], (Message{kurvo_keys::kPruneParentError, ""}));
  char head[128];
  std::snprintf(head, sizeof head, "Name orphan.txt\nnFile %x\npFileInfo->m_nParent 7ffffff0\npFolderInfo ", orphan);
  const std::string report = tmp.read("deadkurvo.txt");
  EXPECT_EQ(report.compare(0, std::strlen(head), head), 0) << report;
  EXPECT_EQ(report.back(), '\n');
}

TEST_F(Prune, HasChangesSaysWhetherPruningWouldFindAnythingAndChangesNothing) {
  const struct {
    const char *what;
    std::function<void()> change;
    bool exact, expected;
  } cases[] = {
      {"nothing", [] {}, true, false},
      {"a file at the time base", [this] { put("f.txt", "changed words\n", kBase); }, false, false},
      {"a newer file", [this] { setMTime(top + "/f.txt", kBase + 1); }, false, true},
      {"an older file of another size", [this] { put("f.txt", "older\n", kBase - 200); }, true, true},
      {"the same, without exact updates", [this] { put("f.txt", "older\n", kBase - 200); }, false, false},
      {"a vanished file, its folder's time kept",
       [this] {
         std::filesystem::remove(top + "/still/t.txt");
         touchFolders(kBase - 100, kBase - 100, kBase - 100);
       },
       false, true},
      {"a newer folder", [this] { touchFolders(kBase - 100, kBase + 2, kBase - 100); }, false, true},
  };
  for (const auto &c : cases) {
    SCOPED_TRACE(c.what);
    SetUp();
    build();
    index->ExactUpdates = c.exact;
    c.change();
    const auto before = records();
    EXPECT_EQ(index->hasChanges(), c.expected);
    const auto after = records();
    ASSERT_EQ(after.size(), before.size());
    for (const auto &[key, record] : before) EXPECT_EQ(after.at(key).time, record.time) << key;
    index.reset();
  }
}

// Past a thousand records the check runs in two halves at once; its answers,
// and its errors, stay those of a check in record order.
TEST_F(Prune, HasChangesOverALargeTableAnswersAsInOrder) {
  for (int i = 0; i < 1200; ++i) put("many/f" + std::to_string(i) + ".txt", "many words\n", kBase - 100);
  setMTime(top + "/many", kBase - 100);
  touchFolders(kBase - 100, kBase - 100, kBase - 100);
  const auto inOrder = [this] {
    std::vector<std::string> paths;
    for (uint32_t n = index->files->getFirst(); n; n = index->files->getNext(n))
      if (file_record::parent(index->files->getData(n)) != 0)
        paths.push_back(std::string(index->files->getText(file_record::parent(index->files->getData(n)))) + "/" +
                        index->files->getText(n));
    return paths;
  };
  const auto orphan = [this] {
    file_record::setParent(index->files->getData(index->files->addFile("orphan.txt")), 0x7ffffff0);
  };
  // The n-th file in record order loses its folder.
  const auto breakParent = [this](size_t n) {
    for (uint32_t record = index->files->getFirst(); record; record = index->files->getNext(record))
      if (file_record::parent(index->files->getData(record)) != 0 && n-- == 0)
        file_record::setParent(index->files->getData(record), 0x7ffffff0);
  };
  const struct {
    const char *what;
    std::function<void(const std::vector<std::string> &)> change;
    const char *expected;  // "true", "false" or the error raised
  } cases[] = {
      {"nothing", [](auto &) {}, "false"},
      {"a newer file early", [](auto &paths) { setMTime(paths[5], kBase + 1); }, "true"},
      {"a newer file late", [](auto &paths) { setMTime(paths[paths.size() - 5], kBase + 1); }, "true"},
      {"a vanished file late",
       [this](auto &paths) {
         std::filesystem::remove(paths[paths.size() - 9]);
         touchFolders(kBase - 100, kBase - 100, kBase - 100);
         setMTime(top + "/many", kBase - 100);
       },
       "true"},
      {"a broken parent late", [&](auto &) { orphan(); }, kurvo_keys::kPruneParentError},
      {"a change early, a broken parent late",
       [&](auto &paths) {
         setMTime(paths[5], kBase + 1);
         orphan();
       },
       "true"},
      // A change found late first leaves the earlier runs to be read for a broken record.
      {"a broken parent in the middle, a change late",
       [&](auto &paths) {
         setMTime(paths[paths.size() - 5], kBase + 1);
         breakParent(600);
       },
       kurvo_keys::kPruneParentError},
      {"a change, a broken parent and a change late",
       [&](auto &paths) {
         setMTime(paths[400], kBase + 1);
         breakParent(600);
         setMTime(paths[paths.size() - 5], kBase + 1);
       },
       "true"},
  };
  for (const auto &c : cases) {
    SCOPED_TRACE(c.what);
    SetUp();
    for (int i = 0; i < 1200; ++i) setMTime(top + "/many/f" + std::to_string(i) + ".txt", kBase - 100);
    build();
    index->reportFolder = tmp.path();
    c.change(inOrder());
    bool answer = false;
    const Message error = raised(messages, [&] { answer = index->hasChanges(); });
    EXPECT_EQ(error.key == "nothing raised" ? (answer ? "true" : "false") : error.key, c.expected);
    index.reset();
  }
}

// With reading ahead the stat calls of each block of records come first, on
// two threads; pruning leaves what it left without: records, lists, reports.
TEST_F(Prune, ReadingAheadLeavesWhatPruningLeft) {
  for (int i = 0; i < 1100; ++i) put("many/f" + std::to_string(i) + ".txt", "many words\n", kBase - 100);
  setMTime(top + "/many", kBase - 100);
  touchFolders(kBase - 100, kBase - 100, kBase - 100);
  TempDir other;
  std::unique_ptr<CKurvoIndex> built[2];
  for (int readAhead : {0, 1}) {
    built[readAhead] = startFullBuild(readAhead ? other : tmp);
    built[readAhead]->indexDirectory(top.c_str(), addTopFolder(*built[readAhead], top));
    built[readAhead]->compressLinks();
  }
  // Changed, vanished and unchanged files on both sides of the block boundary,
  // a folder with a new file, an older file of another size.
  for (int i : {5, 1023, 1024, 1090}) put("many/f" + std::to_string(i) + ".txt", "fresh words\n", kBase + 5);
  for (int i : {7, 1030}) std::filesystem::remove(top + "/many/f" + std::to_string(i) + ".txt");
  put("sub/new.txt", "newcomer words\n", kBase + 5);
  put("f.txt", "older\n", kBase - 200);
  touchFolders(kBase - 100, kBase + 5, kBase - 100);
  setMTime(top + "/many", kBase + 5);

  using Outcome = std::tuple<std::vector<std::string>, std::map<std::string, WordFiles>, std::vector<std::string>>;
  Outcome outcomes[2];
  for (int readAhead : {0, 1}) {
    CKurvoIndex &index = *built[readAhead];
    index.TimeBase = kBase;
    index.ExactUpdates = 1;
    index.ReadAhead = readAhead * 4;
    index.ShowStatus = 2;
    index.ReportSkipped = 1;
    messages.statuses.clear();
    index.prune();
    index.compressLinks();
    auto &[records, lists, statuses] = outcomes[readAhead];
    for (const auto &[key, r] : recordsByPath(*index.files))
      records.push_back(key + " " + std::to_string(r.number) + " " + std::to_string(r.time) + " " +
                        std::to_string(r.size) + " " + std::to_string(r.attributes));
    for (const auto &[word, entry] : allWords(*index.words)) lists[word] = readWordFiles(index, entry);
    // Progress reports come by the clock.
    for (const Message &m : messages.statuses)
      if (m.key != kurvo_keys::kUpdatingStatus) statuses.push_back(m.key + " " + m.argument);
  }
  EXPECT_EQ(outcomes[1], outcomes[0]);
  EXPECT_EQ(std::get<1>(outcomes[0]).count("newcomer"), 1u);
  EXPECT_TRUE(messages.errors.empty());
}
