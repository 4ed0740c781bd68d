// End to end: a generated folder tree indexed, compressed and stored, then changed and updated.
// Tables laid out by hand:
// clang-format off

#include <algorithm>
#include <cctype>

#include "test_support.h"

using namespace kurvo_test;

namespace {

constexpr int32_t kBase = 1700000000;

// Words as the generic analyzer cuts them with letter-and-digit masks: runs
// of letters and digits, lower-cased, 3 to 17 bytes (maximum 16 plus one),
// the skip word left out. Every generated text ends with a line feed.
std::map<std::string, int> wordsOf(const std::string &text) {
  std::map<std::string, int> out;
  std::string word;
  for (unsigned char c : text) {
    if (std::isalnum(c)) {
      word += static_cast<char>(std::tolower(c));
      continue;
    }
    if (word.size() >= 3 && word.size() <= 17 && word != "skip") ++out[word];
    word.clear();
  }
  return out;
}

// n words of a fixed vocabulary chosen by seed, a line feed after every seventh and at the end.
std::string text(unsigned seed, unsigned n) {
  static const char *const vocabulary[] = {
      "alpha", "Bravo", "charlie", "delta", "echo", "foxtrot", "golf", "hotel", "india", "juliet",
      "kilo", "lima", "mike", "november", "oscar", "papa", "to", "of", "skip", "abc123",
      "exactlysixteenab", "seventeenlettersx", "eighteenletterszzz"};
  constexpr unsigned kCount = sizeof vocabulary / sizeof vocabulary[0];
  std::string out;
  for (unsigned i = 0; i < n; ++i)
    out += std::string(vocabulary[(seed * 7 + i * i * 3 + i) % kCount]) + (i % 7 == 6 ? "\n" : " ");
  return out + "\n";
}

// Record key (as recordsByPath makes it) -> time and size.
using Records = std::map<std::string, std::pair<int32_t, uint32_t>>;

// The folders and files a test wrote, with the records they should give.
struct Tree {
  std::string top;
  std::map<std::string, std::string> texts;
  std::map<std::string, int32_t> folderTimes;  // "" is the top folder
  Records records;

  std::string path(const std::string &rel) const { return rel.empty() ? top : top + "/" + rel; }
  void file(const std::string &rel, const std::string &text, int32_t time) {
    writeFile(path(rel), text);
    setMTime(path(rel), time);
    texts[rel] = text;
    records[path(rel)] = {time, static_cast<uint32_t>(text.size())};
  }
  void folder(const std::string &rel, int32_t time) {
    std::filesystem::create_directories(path(rel));
    folderTimes[rel] = time;
    records[path(rel)] = {time, 0};
  }
  // Folder times last, deepest first: creating entries moves them.
  void applyFolderTimes() const {
    for (auto it = folderTimes.rbegin(); it != folderTimes.rend(); ++it)
      setMTime(path(it->first), it->second);
  }
};

Records recordsIn(const CFileStorage &files) {
  Records out;
  for (const auto &[key, record] : recordsByPath(files)) {
    EXPECT_EQ(record.attributes, 0u) << key;
    out[key] = {record.time, record.size};
  }
  return out;
}

// One analyzed file: its record and the words its text held then.
struct Indexed {
  uint32_t file;
  std::map<std::string, int> words;
};

std::vector<Indexed> indexed(const std::map<std::string, RecordCopy> &records, const Tree &tree,
                             const std::vector<std::string> &rels) {
  std::vector<Indexed> out;
  for (const std::string &rel : rels)
    out.push_back({records.at(tree.path(rel)).number, wordsOf(tree.texts.at(rel))});
  return out;
}

// A word's files as indexing them in record order leaves them: the newest
// file in the word data, every run's earlier files in a block of its own
// (newest first), one block per run once the word has had two files.
std::map<std::string, WordFiles> expectedLists(std::vector<std::vector<Indexed>> runs) {
  std::map<std::string, std::vector<FileLink>> seen;
  std::map<std::string, WordFiles> out;
  for (auto &run : runs) {
    std::sort(run.begin(), run.end(),
              [](const Indexed &a, const Indexed &b) { return a.file < b.file; });
    std::map<std::string, std::vector<FileLink>> handedOn;
    for (const Indexed &file : run) {
      for (const auto &[word, count] : file.words) {
        auto &files = seen[word];
        if (!files.empty()) handedOn[word].push_back(files.back());
        files.push_back({file.file, static_cast<unsigned>(std::min(count - 1, 255))});
      }
    }
    for (auto &[word, files] : seen) {
      if (files.size() < 2) continue;
      std::vector<FileLink> &block = handedOn[word];
      std::reverse(block.begin(), block.end());
      out[word].blocks.insert(out[word].blocks.begin(), block);
    }
  }
  for (const auto &[word, files] : seen) {
    out[word].current = files.back().first;
    out[word].counter = files.back().second;
  }
  return out;
}

std::map<std::string, WordFiles> listsIn(const CKurvoIndex &index) {
  std::map<std::string, WordFiles> out;
  for (const auto &[word, number] : allWords(*index.words)) out[word] = readWordFiles(index, number);
  return out;
}

std::unique_ptr<CKurvoIndex> reopen(const TempDir &tmp) {
  auto index = std::make_unique<CKurvoIndex>(false, tmp.path());
  configureIndex(*index);
  return index;
}

}  // namespace

TEST(FirstIndex, BuildsAStoredIndexAndUpdatesItAfterChanges) {
  CapturedMessages messages;
  TempDir tmp;
  Tree tree;
  tree.top = scratchRoot(tmp) + "tree";
  tree.folder("", kBase - 1000);
  tree.folder("sub1", kBase - 900);
  tree.folder("sub1/deep", kBase - 800);
  tree.folder("sub2", kBase - 700);
  const std::vector<std::string> firstTexts = {
      "top1.txt",   "top2.txt",        "sub1/a.txt",       "sub1/b.txt", "sub1/m1.txt",
      "sub1/d.txt", "sub1/deep/c.txt", "sub1/deep/eq.txt", "sub2/f.txt", "sub2/g.txt"};
  for (unsigned i = 0; i < firstTexts.size(); ++i)
    tree.file(firstTexts[i], text(i, 20 + 3 * i), kBase - 600 + static_cast<int32_t>(i));
  std::string repeated;
  for (int i = 0; i < 300; ++i) repeated += "repeat ";
  tree.file("sub1/deep/c.txt", repeated + "\n" + text(99, 10), kBase - 500);
  tree.file("sub2/g.txt", "single occurrence words only here\n", kBase - 500);
  tree.file("notes.bin", "alpha bravo binary\n", kBase - 500);
  tree.file("sub1/data.bin", "golf hotel\n", kBase - 500);
  ASSERT_EQ(symlink("sub1/a.txt", tree.path("link.txt").c_str()), 0);
  tree.applyFolderTimes();

  // First run: everything new; the link is not followed.
  {
    auto index = startFullBuild(tmp, "skip\n");
    index->indexDirectory(tree.top.c_str(), addTopFolder(*index, tree.top));
    index->compressLinks();
    EXPECT_EQ(index->FilesIndexed, tree.records.size() - 1);
    index->storeStorage(tmp.path());
  }
  const Records firstRecords = tree.records;
  const std::map<std::string, RecordCopy> before = recordsByPath(*reopen(tmp)->files);
  const std::vector<Indexed> firstRun = indexed(before, tree, firstTexts);
  EXPECT_EQ(recordsIn(*reopen(tmp)->files), firstRecords);
  EXPECT_EQ(listsIn(*reopen(tmp)), expectedLists({firstRun}));
  EXPECT_NE(reopen(tmp)->skipWords->lookup("SKIP"), 0u);

  // Changes between the runs.
  const std::string sub1 = tree.path("sub1");
  tree.file("sub1/m1.txt", text(50, 22), kBase + 5);
  tree.file("sub1/data.bin", "golf hotel india juliet\n", kBase + 5);
  std::filesystem::remove(tree.path("sub1/d.txt"));
  // A time equal to the time base is not a change: the record keeps the old text's data.
  writeFile(tree.path("sub1/deep/eq.txt"), "entirely different words\n");
  setMTime(tree.path("sub1/deep/eq.txt"), kBase);
  tree.folder("newdir", kBase + 5);
  tree.folder("newdir/inner", kBase + 6);
  tree.file("newdir/n1.txt", text(60, 20), kBase + 7);
  tree.file("newdir/n2.txt", "alpha alpha brandnew\n", kBase + 8);
  tree.file("newdir/inner/n3.txt", text(70, 20), kBase + 9);
  // A new file in a folder whose time stays as it was is not found.
  writeFile(tree.path("sub2/h.txt"), "hidden from the update\n");
  tree.folderTimes[""] = kBase + 5;
  tree.applyFolderTimes();

  // Second run: prune, compress, store.
  {
    auto index = reopen(tmp);
    index->setTimeBase(kBase + 2082844800.0);
    index->prune();
    index->compressLinks();
    index->storeStorage(tmp.path());
  }
  EXPECT_TRUE(messages.errors.empty());
  auto index = reopen(tmp);
  const std::map<std::string, RecordCopy> after = recordsByPath(*index->files);

  // The top folder's record keeps its first time; deleted and replaced records stay, marked.
  Records expected = tree.records;
  expected.erase(sub1 + "/d.txt");
  expected[sub1 + "/\xFF.txt"] = firstRecords.at(sub1 + "/d.txt");
  expected[sub1 + "/\xFF" "1.txt"] = expected.at(sub1 + "/m1.txt");
  expected[tree.path("link.txt")] = expected.at(sub1 + "/a.txt");
  EXPECT_EQ(recordsIn(*index->files), expected);
  EXPECT_EQ(after.at(sub1 + "/data.bin").number, before.at(sub1 + "/data.bin").number);
  EXPECT_EQ(after.at(sub1 + "/\xFF" "1.txt").number, before.at(sub1 + "/m1.txt").number);
  EXPECT_EQ(after.at(sub1 + "/\xFF.txt").number, before.at(sub1 + "/d.txt").number);
  EXPECT_GT(after.at(sub1 + "/m1.txt").number, before.at(sub1 + "/m1.txt").number);

  // Lists: the first run's files (deleted ones included), then the second's.
  std::vector<Indexed> secondRun =
      indexed(after, tree, {"newdir/n1.txt", "newdir/n2.txt", "newdir/inner/n3.txt", "sub1/m1.txt"});
  secondRun.push_back({after.at(tree.path("link.txt")).number, wordsOf(tree.texts.at("sub1/a.txt"))});
  const auto lists = expectedLists({firstRun, secondRun});
  EXPECT_EQ(listsIn(*index), lists);
  // The two-block case is really exercised, and a count stops at 255.
  EXPECT_EQ(lists.at("alpha").blocks.size(), 2u);
  EXPECT_EQ(lists.at("repeat").counter, 255u);
}
