// CFileLinks: list blocks read upward to the zero top slot, and removeFile's scan.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "storage/byte_io.h"
#include "storage/file_links.h"
#include "storage_test_util.h"
#include "test_support.h"

using kurvo_test::CapturedMessages;
using kurvo_test::TempDir;
using kurvo_test::throwsKurvo;
using storage_test::Stream;
using storage_test::wordAt;

namespace {

struct Entry {
  uint32_t file;
  unsigned char count;
  bool operator==(const Entry &o) const { return file == o.file && count == o.count; }
};

// Lays out one block for a word seen in earlierFiles files: that many entries
// filled from the slot below the top downward, top slot 0, then next list.
// Returns the list position (the lowest filled slot).
uint32_t addBlock(CFileLinks &links, const std::vector<Entry> &entries, uint32_t nextList) {
  const uint32_t e = static_cast<uint32_t>(entries.size());
  const uint32_t size = links.entrySize();
  const uint32_t start = links.getSpace((e + 1) * size + 4);
  uint32_t slot = start + e * size;  // the top slot, left 0
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

void expectAssertion(const std::function<void()> &f) {
  CapturedMessages msgs;
  EXPECT_TRUE(throwsKurvo(f));
  ASSERT_EQ(msgs.errors.size(), 1u);
  EXPECT_EQ(msgs.errors[0].key, "AssertionFailed");
  EXPECT_EQ(msgs.errors[0].argument, "");
}

}  // namespace

TEST(FileLinks, BlockIsEPlusOneEntriesAndANextListWord) {
  TempDir dir;
  CFileLinks links(dir.file("links"), 65535, 1048575, 1);
  EXPECT_EQ(links.getSpace(4), 16u);  // the reserved zero word
  uint32_t pos = addBlock(links, {{36, 4}, {80, 0}}, 0);
  EXPECT_EQ(pos, 20u);
  EXPECT_EQ(links.getUsed(), 20u + 3 * 5 + 4);
  const std::string r(links.getPointer(0), links.getUsed());
  EXPECT_EQ(wordAt(r, 20), 80u);
  EXPECT_EQ(r[24], 0);
  EXPECT_EQ(wordAt(r, 25), 36u);
  EXPECT_EQ(r[29], 4);
  EXPECT_EQ(wordAt(r, 30), 0u);  // top slot
  EXPECT_EQ(r[34], 0);
  EXPECT_EQ(wordAt(r, 35), 0u);  // next list
  EXPECT_EQ(readList(links, pos), (std::vector<Entry>{{80, 0}, {36, 4}}));
}

TEST(FileLinks, ListContinuesInTheOlderBlock) {
  TempDir dir;
  CFileLinks links(dir.file("links"), 65535, 1048575, 1);
  links.getSpace(4);
  uint32_t older = addBlock(links, {{36, 1}, {80, 2}}, 0);
  uint32_t newer = addBlock(links, {{120, 255}}, older);
  EXPECT_EQ(readList(links, newer), (std::vector<Entry>{{120, 255}, {80, 2}, {36, 1}}));
}

TEST(FileLinks, WithoutCountsEntriesAreFourBytesAndCount255) {
  TempDir dir;
  CFileLinks links(dir.file("links"), 65535, 1048575, 0);
  links.getSpace(4);
  uint32_t pos = addBlock(links, {{36, 9}, {80, 9}}, 0);
  EXPECT_EQ(links.getUsed(), 20u + 3 * 4 + 4);
  EXPECT_EQ(storage_test::wordBytes({80, 36, 0, 0}),
            std::string(links.getPointer(20), 16));
  EXPECT_EQ(readList(links, pos), (std::vector<Entry>{{80, 255}, {36, 255}}));
}

TEST(FileLinks, UnaddressablePositions) {
  TempDir dir;
  CFileLinks links(dir.file("links"), 65535, 1048575, 1);
  links.getSpace(4);
  const uint32_t used = links.getUsed();
  unsigned char count = 7;
  uint32_t pos = used;
  EXPECT_EQ(links.getFile(pos, count), 0u);
  EXPECT_EQ(count, 0u);
  expectAssertion([&] { links.addFile(used, 36, 0); });
  expectAssertion([&] { links.getNextList(used); });
  expectAssertion([&] { links.setNextList(used, 36); });
}

TEST(FileLinks, RemoveFileScansFourByteStepsFromOffsetZero) {
  TempDir dir;
  CFileLinks links(dir.file("links"), 65535, 1048575, 0);
  links.getSpace(4);
  addBlock(links, {{60, 0}, {36, 0}}, 0);  // 20: 36, 24: 60, 28: 0, 32: next 0
  addBlock(links, {}, 36);                 // 36: 0, 40: next list that equals 36
  ASSERT_EQ(links.getUsed(), 44u);
  links.removeFile(36);
  std::string r(links.getPointer(0), links.getUsed());
  EXPECT_EQ(r.substr(16), storage_test::wordBytes({0, 1, 60, 0, 0, 0, 1}));

  // Header words are scanned as well: length and initial size are 65535.
  links.removeFile(65535);
  r.assign(links.getPointer(0), links.getUsed());
  EXPECT_EQ(wordAt(r, 0), 1u);
  EXPECT_EQ(wordAt(r, 8), 1u);
  EXPECT_EQ(wordAt(r, 12), 1048575u);
}

TEST(FileLinks, RemoveFileStepsByFiveIgnoringBlockBoundaries) {
  TempDir dir;
  CFileLinks links(dir.file("links"), 65535, 1048575, 1);
  links.getSpace(4);
  // Block 20..43: entries at 20, 25, 30, top 35, next list at 40.
  uint32_t first = addBlock(links, {{36, 0}, {60, 0}, {36, 7}}, 36);
  ASSERT_EQ(first, 20u);
  // Block 44..57: entry at 44 (between the steps 40 and 45), top 49, next 54.
  uint32_t second = addBlock(links, {{36, 3}}, 0);
  ASSERT_EQ(second, 44u);
  links.getSpace(2);  // used 60: every step below it reads inside the region
  links.removeFile(36);

  const std::string r(links.getPointer(0), links.getUsed());
  EXPECT_EQ(wordAt(r, 20), 1u);
  EXPECT_EQ(r[24], 7);  // count bytes are left alone
  EXPECT_EQ(wordAt(r, 25), 60u);
  EXPECT_EQ(wordAt(r, 30), 1u);
  EXPECT_EQ(wordAt(r, 40), 1u);   // a next-list word on a step
  EXPECT_EQ(wordAt(r, 44), 36u);  // off the steps: kept
  EXPECT_EQ(r[48], 3);
}

TEST(FileLinks, RemovedFileReadsAsOneAndTheListStillEnds) {
  TempDir dir;
  CFileLinks links(dir.file("links"), 65535, 1048575, 0);
  links.getSpace(4);
  uint32_t pos = addBlock(links, {{36, 0}, {60, 0}, {84, 0}}, 0);
  links.removeFile(60);
  EXPECT_EQ(readList(links, pos), (std::vector<Entry>{{84, 255}, {1, 255}, {36, 255}}));
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
    for (uint32_t word = 0; word < 300; ++word) {
      std::vector<Entry> older, newer;
      for (uint32_t i = 0; i < word % 5; ++i) older.push_back({36 + 10 * i + word, (unsigned char)i});
      for (uint32_t i = 0; i < 1 + word % 3; ++i) newer.push_back({5000 + i, (unsigned char)word});
      uint32_t head = older.empty() ? 0 : addBlock(links, older, 0);
      head = addBlock(links, newer, head);
      heads.push_back(head);
      std::vector<Entry> expected(newer.rbegin(), newer.rend());
      expected.insert(expected.end(), older.rbegin(), older.rend());
      lists.push_back(expected);
    }
    ASSERT_TRUE(links.store(s.get()));
    const std::string desc = s.bytes();
    ASSERT_EQ(desc.size(), 8u);
    EXPECT_EQ(wordAt(desc, 0), 12360001u);
    EXPECT_NE(wordAt(desc, 4), 0u);
  }
  s.rewind();
  CapturedMessages msgs;
  CFileLinks links(path, s.get());
  EXPECT_TRUE(msgs.errors.empty());
  EXPECT_TRUE(links.hasCounts());
  for (size_t w = 0; w < heads.size(); ++w) ASSERT_EQ(readList(links, heads[w]), lists[w]) << w;
}

TEST(FileLinks, BadDescriptionRaisesStorageReadErrorWithThePath) {
  TempDir dir;
  const std::string path = dir.file("links");
  { CFileLinks made(path, 65535, 1048575, 0); }
  for (const std::vector<uint32_t> &desc :
       {std::vector<uint32_t>{12370001, 0}, std::vector<uint32_t>{12360001}}) {
    Stream s;
    s.writeWords(desc);
    s.rewind();
    CapturedMessages msgs;
    EXPECT_TRUE(throwsKurvo([&] { CFileLinks links(path, s.get()); }));
    ASSERT_EQ(msgs.errors.size(), 1u);
    EXPECT_EQ(msgs.errors[0].key, "StorageReadError");
    EXPECT_EQ(msgs.errors[0].argument, path);
  }
}
