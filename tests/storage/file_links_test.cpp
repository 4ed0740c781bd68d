// CFileLinks: list blocks read upward to the zero top slot, and removeFile's scan.

#include "storage/file_links.h"
#include "test_support.h"

using namespace kurvo_test;

namespace {

struct Entry {
  uint32_t file;
  unsigned char count;
  bool operator==(const Entry &o) const { return file == o.file && count == o.count; }
};

// Lays out one block: the entries filled from the slot below the top
// downward, the top slot left 0, then the next-list word. Returns the list
// position (the lowest filled slot).
uint32_t addBlock(CFileLinks &links, const std::vector<Entry> &entries, uint32_t nextList) {
  const uint32_t e = static_cast<uint32_t>(entries.size());
  const uint32_t size = links.entrySize();
  const uint32_t start = links.getSpace((e + 1) * size + 4);
  uint32_t slot = start + e * size;
  for (const Entry &entry : entries) {
    slot -= size;
    links.addFile(slot, entry.file, entry.count);
  }
  links.setNextList(start + (e + 1) * size, nextList);
  return slot;
}

// All entries of a word's list, newest block first.
std::vector<Entry> readList(const CFileLinks &links, uint32_t position) {
  std::vector<Entry> out;
  while (position != 0) {
    unsigned char count = 0;
    for (uint32_t f = links.getFile(position, count); f != 0; f = links.getFile(position, count))
      out.push_back({f, count});
    position = links.getNextList(position);
  }
  return out;
}

}  // namespace

TEST(FileLinks, BlockIsEPlusOneEntriesAndANextListWord) {
  TempDir dir;
  CFileLinks links(dir.file("links"), 65535, 1048575, 1);
  EXPECT_EQ(links.getSpace(4), 16u);  // the reserved zero word
  const uint32_t pos = addBlock(links, {{36, 4}, {80, 0}}, 0);
  EXPECT_EQ(pos, 20u);
  EXPECT_EQ(std::string(links.getPointer(20), links.getUsed() - 20),
            wordBytes({80}) + '\0' + wordBytes({36}) + '\4' + wordBytes({0}) + '\0' + wordBytes({0}));
  EXPECT_EQ(readList(links, pos), (std::vector<Entry>{{80, 0}, {36, 4}}));
}

TEST(FileLinks, RemoveFileScansFourByteStepsFromOffsetZero) {
  TempDir dir;
  CFileLinks links(dir.file("links"), 65535, 1048575, 0);
  links.getSpace(4);
  const uint32_t pos = addBlock(links, {{60, 0}, {36, 0}}, 0);  // 20: 36, 24: 60, 28: 0, 32: 0
  addBlock(links, {}, 36);                                      // 36: 0, 40: a next-list word that equals 36
  links.removeFile(36);
  EXPECT_EQ(std::string(links.getPointer(16), 28), wordBytes({0, 1, 60, 0, 0, 0, 1}));
  // The removed file reads as 1 and the list still ends.
  EXPECT_EQ(readList(links, pos), (std::vector<Entry>{{1, 255}, {60, 255}}));
  // Header words are scanned as well: length and initial size are 65535.
  links.removeFile(65535);
  const std::string header(links.getPointer(0), 16);
  EXPECT_EQ(wordAt(header, 0), 1u);
  EXPECT_EQ(wordAt(header, 8), 1u);
  EXPECT_EQ(wordAt(header, 12), 1048575u);
}

TEST(FileLinks, RemoveFileStepsByFiveIgnoringBlockBoundaries) {
  TempDir dir;
  CFileLinks links(dir.file("links"), 65535, 1048575, 1);
  links.getSpace(4);
  // Block 20..43: entries at 20, 25, 30, top 35, next list at 40.
  ASSERT_EQ(addBlock(links, {{36, 0}, {60, 0}, {36, 7}}, 36), 20u);
  // Block 44..57: entry at 44 (between the steps 40 and 45), top 49, next 54.
  ASSERT_EQ(addBlock(links, {{36, 3}}, 0), 44u);
  links.getSpace(2);  // used 60: every step below it reads inside the region
  links.removeFile(36);
  const std::string r(links.getPointer(0), links.getUsed());
  EXPECT_EQ(wordAt(r, 20), 1u);
  EXPECT_EQ(r[24], 7);  // count bytes are left alone
  EXPECT_EQ(wordAt(r, 25), 60u);
  EXPECT_EQ(wordAt(r, 30), 1u);
  EXPECT_EQ(wordAt(r, 40), 1u);   // a next-list word on a step
  EXPECT_EQ(wordAt(r, 44), 36u);  // off the steps: kept
}

TEST(FileLinks, ClosedAndReopenedRegionGivesBackEveryList) {
  TempDir dir;
  const std::string path = dir.file("links");
  Stream s;
  std::vector<uint32_t> heads;
  std::vector<std::vector<Entry>> lists;
  {
    CFileLinks links(path, 65535, 1048575, 1);
    links.getSpace(4);
    // Word w: an older block of w % 5 files below a newer one of 1 + w % 3.
    for (uint32_t w = 0; w < 300; ++w) {
      std::vector<Entry> older, newer;
      for (uint32_t i = 0; i < w % 5; ++i) older.push_back({36 + 10 * i + w, (unsigned char)i});
      for (uint32_t i = 0; i < 1 + w % 3; ++i) newer.push_back({5000 + i, (unsigned char)w});
      heads.push_back(addBlock(links, newer, older.empty() ? 0 : addBlock(links, older, 0)));
      lists.emplace_back(newer.rbegin(), newer.rend());
      lists.back().insert(lists.back().end(), older.rbegin(), older.rend());
    }
    ASSERT_TRUE(links.store(s.get()));
    EXPECT_EQ(s.bytes(), wordBytes({12360001, 1}));
  }
  s.rewind();
  CapturedMessages msgs;
  CFileLinks links(path, s.get());
  EXPECT_TRUE(msgs.errors.empty());
  for (size_t w = 0; w < heads.size(); ++w) ASSERT_EQ(readList(links, heads[w]), lists[w]) << w;
}

TEST(FileLinks, BadDescriptionRaisesStorageReadError) {
  TempDir dir;
  const std::string path = dir.file("links");
  { CFileLinks made(path, 65535, 1048575, 0); }
  expectBadDescriptions<CFileLinks>(path, {{12370001, 0}, {12360002, 0}, {12350001, 0}, {12360001}});
}
