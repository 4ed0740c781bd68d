// End to end: a generated folder tree indexed, compressed and stored, then changed and updated.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <random>
#include <set>

#include "index_setup.h"

using namespace kurvo_test;

namespace {

constexpr int32_t kTimeBase = 1700000000;

// Words as the generic analyzer cuts them with letter-and-digit masks: runs
// of letters and digits, lower-cased, 3 to 17 bytes (maximum 16 plus one),
// skip words left out. Every generated text ends with a line feed.
std::map<std::string, int> wordsOf(const std::string &text, const std::set<std::string> &skip) {
  std::map<std::string, int> out;
  std::string word;
  for (char c : text) {
    if (std::isalnum(static_cast<unsigned char>(c))) {
      word += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
      continue;
    }
    if (word.size() >= 3 && word.size() <= 17 && !skip.count(word)) ++out[word];
    word.clear();
  }
  return out;
}

std::string generateText(std::mt19937 &random, int words) {
  static const char *const vocabulary[] = {
      "alpha", "Bravo", "charlie", "delta", "echo", "foxtrot", "golf", "hotel", "india",
      "juliet", "kilo", "lima", "mike", "november", "oscar", "papa", "quebec", "romeo",
      "sierra", "tango", "uniform", "victor", "whiskey", "xray", "yankee", "zulu", "to", "of",
      "skip", "abc123", "exactlysixteenab", "seventeenlettersx", "eighteenletterszzz"};
  constexpr size_t kCount = sizeof vocabulary / sizeof vocabulary[0];
  std::uniform_int_distribution<size_t> pick(0, kCount - 1);
  std::string text;
  for (int i = 0; i < words; ++i) {
    text += vocabulary[pick(random)];
    text += (i % 7 == 6) ? "\n" : " ";
  }
  return text + "\n";
}

// The files a test wrote, by path below the top folder, with the text and
// time each record should show.
struct WrittenFile {
  std::string text;
  int32_t time;
};

class Tree {
 public:
  explicit Tree(std::string top) : m_top(std::move(top)) {
    std::filesystem::create_directories(m_top);
  }
  const std::string &top() const { return m_top; }
  std::string path(const std::string &rel) const { return rel.empty() ? m_top : m_top + "/" + rel; }

  void file(const std::string &rel, const std::string &text, int32_t time) {
    writeFile(path(rel), text);
    setMTime(path(rel), time);
    files[rel] = {text, time};
  }
  void folder(const std::string &rel, int32_t time) {
    std::filesystem::create_directories(path(rel));
    folders[rel] = time;
  }
  void remove(const std::string &rel) {
    std::filesystem::remove(path(rel));
    files.erase(rel);
  }
  // Folder times last, deepest first: creating entries moves them.
  void applyFolderTimes() const {
    for (auto it = folders.rbegin(); it != folders.rend(); ++it) setMTime(path(it->first), it->second);
  }

  std::map<std::string, WrittenFile> files;
  std::map<std::string, int32_t> folders;  // "" is the top folder

 private:
  std::string m_top;
};

struct ExpectedRecord {
  int32_t time;
  uint32_t size;
};

// What the file table must hold: folders under their path, files under
// folder path + "/" + name.
std::map<std::string, ExpectedRecord> expectedRecords(const Tree &tree) {
  std::map<std::string, ExpectedRecord> out;
  for (const auto &[rel, time] : tree.folders) out[tree.path(rel)] = {time, 0};
  for (const auto &[rel, file] : tree.files)
    out[tree.path(rel)] = {file.time, static_cast<uint32_t>(file.text.size())};
  return out;
}

void expectRecords(const CFileStorage &files, const std::map<std::string, ExpectedRecord> &expected) {
  const std::map<std::string, RecordCopy> actual = recordsByPath(files);
  std::set<std::string> actualKeys, expectedKeys;
  for (const auto &entry : actual) actualKeys.insert(entry.first);
  for (const auto &entry : expected) expectedKeys.insert(entry.first);
  EXPECT_EQ(actualKeys, expectedKeys);
  for (const auto &[key, want] : expected) {
    auto found = actual.find(key);
    if (found == actual.end()) continue;
    EXPECT_EQ(found->second.time, want.time) << key;
    EXPECT_EQ(found->second.size, want.size) << key;
    EXPECT_EQ(found->second.attributes, 0u) << key;
  }
}

// One analyzed file: its record and the words its text held then.
struct Indexed {
  uint32_t file;
  std::map<std::string, int> words;
};

// A word's files as indexing them in record order leaves them: the newest
// file in the word data, every run's earlier files in a block of its own
// (newest first), one block per run in which the word had two files or more.
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
      std::vector<FileLink> block = handedOn[word];
      std::reverse(block.begin(), block.end());
      auto &blocks = out[word].blocks;
      blocks.insert(blocks.begin(), block);
    }
  }
  for (const auto &[word, files] : seen) {
    out[word].current = files.back().first;
    out[word].counter = files.back().second;
  }
  return out;
}

void expectLists(const CKurvoIndex &index, const std::map<std::string, WordFiles> &expected) {
  const std::map<std::string, uint32_t> words = allWords(*index.words);
  std::set<std::string> actualWords, expectedWords;
  for (const auto &entry : words) actualWords.insert(entry.first);
  for (const auto &entry : expected) expectedWords.insert(entry.first);
  ASSERT_EQ(actualWords, expectedWords);
  for (const auto &[word, want] : expected) {
    const WordFiles got = readWordFiles(index, words.at(word));
    EXPECT_EQ(got.current, want.current) << word;
    EXPECT_EQ(got.counter, want.counter) << word;
    EXPECT_EQ(got.blocks, want.blocks) << word;
  }
}

std::vector<Indexed> indexedFiles(const CFileStorage &files, const Tree &tree,
                                  const std::vector<std::string> &rels,
                                  const std::set<std::string> &skip) {
  const std::map<std::string, RecordCopy> records = recordsByPath(files);
  std::vector<Indexed> out;
  for (const std::string &rel : rels)
    out.push_back({records.at(tree.path(rel)).number, wordsOf(tree.files.at(rel).text, skip)});
  return out;
}

std::vector<std::string> textFiles(const Tree &tree) {
  std::vector<std::string> out;
  for (const auto &entry : tree.files)
    if (entry.first.size() > 4 && entry.first.compare(entry.first.size() - 4, 4, ".txt") == 0)
      out.push_back(entry.first);
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
  const std::set<std::string> skip{"skip"};
  std::mt19937 random(20261122);

  Tree tree(scratchRoot(tmp) + "tree");
  tree.folder("", kTimeBase - 1000);
  tree.folder("sub1", kTimeBase - 900);
  tree.folder("sub1/deep", kTimeBase - 800);
  tree.folder("sub2", kTimeBase - 700);
  tree.file("top1.txt", generateText(random, 40), kTimeBase - 600);
  tree.file("top2.txt", generateText(random, 25), kTimeBase - 599);
  tree.file("notes.bin", "alpha bravo binary\n", kTimeBase - 598);
  tree.file("sub1/a.txt", generateText(random, 30), kTimeBase - 597);
  tree.file("sub1/b.txt", generateText(random, 30), kTimeBase - 596);
  tree.file("sub1/m1.txt", generateText(random, 20), kTimeBase - 595);
  tree.file("sub1/d.txt", generateText(random, 20), kTimeBase - 594);
  tree.file("sub1/data.bin", "golf hotel\n", kTimeBase - 593);
  std::string repeated;
  for (int i = 0; i < 300; ++i) repeated += "repeat ";
  tree.file("sub1/deep/c.txt", repeated + "\n" + generateText(random, 10), kTimeBase - 592);
  tree.file("sub1/deep/eq.txt", generateText(random, 15), kTimeBase - 591);
  tree.file("sub2/f.txt", generateText(random, 35), kTimeBase - 590);
  tree.file("sub2/g.txt", "single occurrence words only here\n", kTimeBase - 589);
  ASSERT_EQ(symlink("sub1/a.txt", tree.path("link.txt").c_str()), 0);
  tree.applyFolderTimes();

  // First run: everything new.
  {
    auto index = startFullBuild(tmp, "skip\n");
    const uint32_t top = addTopFolder(*index, tree.top());
    index->indexDirectory(tree.top().c_str(), top);
    index->compressLinks();
    EXPECT_FALSE(std::filesystem::exists(tmp.path() + "temp"));
    EXPECT_EQ(index->FilesIndexed, expectedRecords(tree).size() - 1);
    index->storeStorage(tmp.path());
  }
  EXPECT_TRUE(messages.errors.empty());

  auto firstRun = indexedFiles(*reopen(tmp)->files, tree, textFiles(tree), skip);
  {
    auto index = reopen(tmp);
    expectRecords(*index->files, expectedRecords(tree));
    expectLists(*index, expectedLists({firstRun}));
  }
  const std::map<std::string, RecordCopy> before = recordsByPath(*reopen(tmp)->files);

  // Changes between the runs.
  const Tree unchanged = tree;
  tree.file("sub1/m1.txt", generateText(random, 22), kTimeBase + 5);
  tree.file("sub1/data.bin", "golf hotel india juliet\n", kTimeBase + 5);
  tree.remove("sub1/d.txt");
  // A time equal to the time base is not a change: the record keeps the old text's data.
  writeFile(tree.path("sub1/deep/eq.txt"), "entirely different words\n");
  setMTime(tree.path("sub1/deep/eq.txt"), kTimeBase);
  tree.folder("newdir", kTimeBase + 5);
  tree.folder("newdir/inner", kTimeBase + 6);
  tree.file("newdir/n1.txt", generateText(random, 20), kTimeBase + 7);
  tree.file("newdir/n2.txt", "alpha alpha brandnew\n", kTimeBase + 8);
  tree.file("newdir/inner/n3.txt", generateText(random, 20), kTimeBase + 9);
  // A new file in a folder whose time stays as it was is not found.
  writeFile(tree.path("sub2/h.txt"), "hidden from the update\n");
  tree.folders[""] = kTimeBase + 5;
  tree.applyFolderTimes();

  // Second run: prune, compress, store.
  {
    auto index = reopen(tmp);
    index->setTimeBase(kTimeBase + 2082844800.0);
    ASSERT_EQ(index->TimeBase, kTimeBase);
    index->prune();
    index->compressLinks();
    EXPECT_FALSE(std::filesystem::exists(tmp.path() + "temp"));
    index->storeStorage(tmp.path());
  }
  EXPECT_TRUE(messages.errors.empty());

  auto index = reopen(tmp);
  const std::map<std::string, RecordCopy> after = recordsByPath(*index->files);

  // Records: the unchanged tree's, with the changes applied.
  std::map<std::string, ExpectedRecord> expected = expectedRecords(unchanged);
  const std::string sub1 = tree.path("sub1");
  expected.erase(sub1 + "/m1.txt");
  expected.erase(sub1 + "/d.txt");
  const uint32_t m1Size = static_cast<uint32_t>(tree.files["sub1/m1.txt"].text.size());
  expected[sub1 + "/\xFF" "1.txt"] = {kTimeBase + 5, m1Size};
  expected[sub1 + "/m1.txt"] = {kTimeBase + 5, m1Size};
  expected[sub1 + "/\xFF.txt"] = expectedRecords(unchanged)[sub1 + "/d.txt"];
  expected[sub1 + "/data.bin"] = {kTimeBase + 5, 24};
  for (const char *rel : {"newdir", "newdir/inner"}) expected[tree.path(rel)] = {tree.folders[rel], 0};
  for (const char *rel : {"newdir/n1.txt", "newdir/n2.txt", "newdir/inner/n3.txt"})
    expected[tree.path(rel)] = {tree.files[rel].time,
                                static_cast<uint32_t>(tree.files[rel].text.size())};
  expected[tree.path("link.txt")] = {tree.files["sub1/a.txt"].time,
                                     static_cast<uint32_t>(tree.files["sub1/a.txt"].text.size())};
  expectRecords(*index->files, expected);

  // Unchanged records keep their numbers; the record without an analyzer too.
  EXPECT_EQ(after.at(sub1 + "/data.bin").number, before.at(sub1 + "/data.bin").number);
  EXPECT_EQ(after.at(sub1 + "/\xFF" "1.txt").number, before.at(sub1 + "/m1.txt").number);
  EXPECT_EQ(after.at(sub1 + "/\xFF.txt").number, before.at(sub1 + "/d.txt").number);
  EXPECT_GT(after.at(sub1 + "/m1.txt").number, before.at(sub1 + "/m1.txt").number);

  // Lists: the first run's files (deleted ones included), then the second's.
  std::vector<Indexed> secondRun;
  for (const char *rel : {"newdir/n1.txt", "newdir/n2.txt", "newdir/inner/n3.txt", "sub1/m1.txt"})
    secondRun.push_back({after.at(tree.path(rel)).number, wordsOf(tree.files[rel].text, skip)});
  secondRun.push_back({after.at(tree.path("link.txt")).number,
                       wordsOf(tree.files["sub1/a.txt"].text, skip)});
  const auto lists = expectedLists({firstRun, secondRun});
  expectLists(*index, lists);

  // The two-block case is really exercised: "alpha" appears in both runs.
  ASSERT_TRUE(lists.count("alpha"));
  EXPECT_EQ(lists.at("alpha").blocks.size(), 2u);
  EXPECT_EQ(lists.at("repeat").counter, 255u);
}
