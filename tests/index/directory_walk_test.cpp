// Directory walk and update: what gets recorded, what is skipped, progress and halting.

#include <algorithm>

#include "report/message_keys.h"
#include "test_support.h"

using namespace kurvo_test;

using DirectoryWalk = IndexRunTest;

TEST_F(DirectoryWalk, SkipsTheFolderAboveTheStorageFolder) {
  // scratchRoot holds a/b/c/store/; "a" is the index's skipped folder.
  const std::string root = scratchRoot(tmp);
  writeFile(root + "x.txt", "visible words here\n");
  writeFile(root + "a/inside.txt", "hidden words there\n");
  top = root.substr(0, root.size() - 1);
  start();
  ASSERT_EQ(index->skippedFolder, root + "a");
  index->indexDirectory(top.c_str(), topRecord);
  // The folder itself is recorded by its parent's walk, but not entered.
  EXPECT_EQ(recordedAmong({"/x.txt", "/a", "/a/inside.txt", "/a/b"}), (std::set<std::string>{"/x.txt", "/a"}));
  EXPECT_EQ(records().at(root + "a").parent, 0u);
  EXPECT_EQ(indexedAmong({"visible", "hidden"}), std::set<std::string>{"visible"});
  EXPECT_EQ(
      std::count(messages.statuses.begin(), messages.statuses.end(), Message{kurvo_keys::kSkippedKurvoDirectory, ""}),
      1);
}

TEST_F(DirectoryWalk, LinksAreSkippedByTheWalkAndFollowedByTheUpdate) {
  writeFile(top + "/real.txt", "target words\n");
  writeFile(top + "/sub/inner.txt", "innerword text\n");
  ASSERT_EQ(symlink("real.txt", (top + "/link.txt").c_str()), 0);
  ASSERT_EQ(symlink("sub", (top + "/linkdir").c_str()), 0);
  start();
  index->indexDirectory(top.c_str(), topRecord);
  const std::set<std::string> paths = {"/real.txt", "/link.txt", "/linkdir", "/linkdir/inner.txt"};
  EXPECT_EQ(recordedAmong(paths), (std::set<std::string>{"/real.txt"}));

  // (first_index_test checks a file link's record and words.)
  index->updateDirectory(top.c_str(), topRecord);
  EXPECT_EQ(recordedAmong(paths), paths);
  EXPECT_EQ(records().at(top + "/linkdir").parent, 0u);
}

TEST_F(DirectoryWalk, TrackAllDecidesWhetherUnselectedFilesAreRecorded) {
  for (int trackAll : {0, 1}) {
    SCOPED_TRACE(trackAll);
    std::filesystem::remove_all(top);
    writeFile(top + "/words.txt", "selected words\n");
    writeFile(top + "/data.bin", "unselected words\n");
    writeFile(top + "/later/more.bin", "unselected too\n");
    start();
    index->TrackAll = trackAll;
    index->indexDirectory(top.c_str(), topRecord);
    writeFile(top + "/new.bin", "new unselected\n");
    writeFile(top + "/new.txt", "newly selected\n");
    index->updateDirectory(top.c_str(), topRecord);
    std::set<std::string> recorded = {"/words.txt", "/new.txt"};
    if (trackAll) recorded.insert({"/data.bin", "/new.bin"});
    EXPECT_EQ(recordedAmong({"/words.txt", "/data.bin", "/new.txt", "/new.bin"}), recorded);
    EXPECT_EQ(indexedAmong({"selected", "unselected", "newly"}), (std::set<std::string>{"selected", "newly"}));
    index.reset();
  }
}

TEST_F(DirectoryWalk, ExcludedFilesAreRecordedWithoutWordsAndExcludedFoldersNotEntered) {
  writeFile(top + "/secret.txt", "classified words\n");
  writeFile(top + "/open.txt", "public words\n");
  writeFile(top + "/private/inside.txt", "buried words\n");
  start({"*secret*", "*private"});
  index->indexDirectory(top.c_str(), topRecord);
  // The update ignores an excluded new file entirely.
  writeFile(top + "/secret2.txt", "confidential words\n");
  index->updateDirectory(top.c_str(), topRecord);
  EXPECT_EQ(recordedAmong({"/secret.txt", "/private", "/private/inside.txt", "/secret2.txt"}),
            (std::set<std::string>{"/secret.txt"}));
  EXPECT_EQ(indexedAmong({"classified", "public", "buried", "confidential"}), (std::set<std::string>{"public"}));
}

TEST_F(DirectoryWalk, HaltOnTheFirstStatusEndsTheWalk) {
  writeFile(top + "/one.txt", "first text\n");
  writeFile(top + "/two.txt", "second text\n");
  // A read-ahead under way ends with the walk.
  for (int readAhead : {0, 4}) {
    start();
    index->ShowStatus = 1;
    index->ReadAhead = readAhead;
    index->lastStatusTime = 0;
    messages.statuses.clear();
    messages.haltAtStatus = 1;
    EXPECT_TRUE(throwsKurvo([&] { index->indexDirectory(top.c_str(), topRecord); }));
    ASSERT_EQ(messages.statuses.size(), 1u);
    EXPECT_EQ(messages.statuses[0].key, kurvo_keys::kIndexingFile);
    const std::string argument = messages.statuses[0].argument;
    EXPECT_TRUE(argument == top + "/one.txt\t1" || argument == top + "/two.txt\t1") << argument;
    ASSERT_NE(messages.lastError(), nullptr);
    EXPECT_EQ(*messages.lastError(), (Message{kurvo_keys::kHaltRequested, ""}));
    // Only the top folder stands: the halt came before the first entry was examined.
    EXPECT_EQ(records().size(), 1u);
    EXPECT_EQ(index->readAhead, nullptr);
  }
}

// Plain text read by "utf8" (cut into words ahead of the walk when small, by
// either thread) and by "generic" (only read ahead), a word across two reads,
// a word more than 255 times in one read, a file the read limit cuts and one
// too large to be cut ahead; the word order too.
TEST_F(DirectoryWalk, ReadingAheadLeavesEveryRecordListAndStatusAsItWas) {
  for (int i = 0; i < 60; ++i) {
    std::string text;
    for (int line = 0; line < 3 * i; ++line)
      text += "common word" + std::to_string((i + line) % 7) + " caf\xC3\xA9 \xCE\xBB\n";
    writeFile(top + "/d" + std::to_string(i % 4) + "/f" + std::to_string(i) + (i % 3 ? ".u8" : ".txt"), text);
  }
  writeFile(top + "/d1/skip.bin", "not read\n");
  writeFile(top + "/d2/across.u8", std::string(65530, ' ') + "acrossreads tail\n");
  writeFile(top + "/d2/cut.u8", std::string(99990, ' ') + "kept cutword more\n");
  writeFile(top + "/d3/large.u8", "largeword" + std::string(1100000, ' '));
  std::string many;
  for (int i = 0; i < 300; ++i) many += "common often ";
  writeFile(top + "/d0/many.u8", many + "\n");
  using Lists = std::map<std::string, std::pair<uint32_t, WordFiles>>;
  Lists first;
  std::vector<std::string> firstStatuses;
  std::string firstOrder;
  // A slow host lets the read-ahead get ahead of the walk; with a fast one
  // the walk catches up and cuts files queued for the other thread.
  for (const auto &[readAhead, hostMicroseconds] : {std::pair{0, 2000}, {1, 2000}, {8, 2000}, {8, 0}}) {
    SCOPED_TRACE(readAhead + 100000 * hostMicroseconds);
    start();
    index->setIncludeCount(2);
    index->setIncludePattern(0, "*.txt", "generic");
    index->setIncludePattern(1, "*.u8", "utf8");
    index->ReadAhead = readAhead;
    index->MaxPerFileRead = 100000;
    index->ShowStatus = 2;
    index->ReportSkipped = 1;
    messages.statusMicroseconds = hostMicroseconds;
    messages.statuses.clear();
    index->indexDirectory(top.c_str(), topRecord);
    index->compressLinks();
    // The word order, sorted during compression when reading ahead.
    std::filesystem::remove(tmp.file("wordorder"));
    index->storeWordOrder(tmp.path());
    const std::string order = tmp.read("wordorder");
    Lists lists;
    for (const auto &[word, entry] : allWords(*index->words)) lists[word] = {entry, readWordFiles(*index, entry)};
    std::vector<std::string> statuses;
    for (const Message &m : messages.statuses)
      if (m.key != kurvo_keys::kIndexingFile) statuses.push_back(m.key + " " + m.argument);
    if (readAhead == 0) first = lists, firstStatuses = statuses, firstOrder = order;
    EXPECT_EQ(lists, first);
    EXPECT_EQ(order, firstOrder);
    EXPECT_EQ(statuses, firstStatuses);
    EXPECT_EQ(records().size(), 70u);
    EXPECT_TRUE(hasWord("acrossreads") && hasWord("kept") && hasWord("largeword") && !hasWord("cutword"));
    EXPECT_EQ(index->FilesWithForeignText, 40u);
    index.reset();
  }
}

TEST_F(DirectoryWalk, RootPathsGetOneSlashWhenIndexedAndTwoWhenUpdated) {
  start();
  index->ShowStatus = 1;
  index->TrackAll = 0;
  messages.haltAtStatus = 1;
  const uint32_t root = addTopFolder(*index, "/");

  index->lastStatusTime = 0;
  EXPECT_TRUE(throwsKurvo([&] { index->indexDirectory("/", root); }));
  ASSERT_EQ(messages.statuses.size(), 1u);
  const std::string indexed = messages.statuses[0].argument;
  ASSERT_GT(indexed.size(), 2u);
  EXPECT_EQ(indexed[0], '/');
  EXPECT_NE(indexed[1], '/') << indexed;

  // The update reports only before reading a new selected file, which lies
  // at least one folder down; stop there.
  messages.statuses.clear();
  index->lastStatusTime = 0;
  EXPECT_TRUE(throwsKurvo([&] { index->updateDirectory("/", root); }));
  ASSERT_FALSE(messages.statuses.empty());
  const std::string updated = messages.statuses[0].argument;
  EXPECT_EQ(updated.compare(0, 2, "//"), 0) << updated;
  EXPECT_NE(updated[2], '/') << updated;
}
