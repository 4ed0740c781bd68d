// CWordLinks: per-file groups of word entries, with and without count bytes.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "storage/byte_io.h"
#include "storage/word_links.h"
#include "storage_test_util.h"
#include "test_support.h"

using kurvo_test::CapturedMessages;
using kurvo_test::TempDir;
using kurvo_test::throwsKurvo;
using storage_test::Stream;
using storage_test::wordAt;

namespace {

constexpr uint32_t kFileA = 36;
constexpr uint32_t kFileB = 60;

struct Link {
  uint32_t file;
  uint32_t word;
  unsigned char count;
  bool operator==(const Link &o) const {
    return file == o.file && word == o.word && count == o.count;
  }
};

// The pairs of the region in order, read the way compression reads them.
std::vector<Link> readAll(const CWordLinks &links) {
  std::vector<Link> out;
  uint32_t pos = 16;
  for (uint32_t file = links.getFile(pos); file != 0; file = links.getFile(pos)) {
    unsigned char count = 0;
    for (uint32_t word = links.getWord(pos, count); word != 0; word = links.getWord(pos, count))
      out.push_back({file, word, count});
  }
  return out;
}

std::string region(const CWordLinks &links) {
  return std::string(links.getPointer(0), links.getUsed());
}

}  // namespace

TEST(WordLinks, GroupsWithoutCountsAreFourByteEntries) {
  TempDir dir;
  CWordLinks links(dir.file("temp"), 65535, 1048575, 0);
  links.addWord(kFileA, 100, 0);
  links.addWord(kFileA, 200, 0);
  links.addWord(kFileB, 300, 0);
  EXPECT_EQ(links.getUsed(), 40u);
  EXPECT_EQ(region(links).substr(16),
            storage_test::wordBytes({kFileA, 100, 200, 0, kFileB, 300}));
}

TEST(WordLinks, GroupsWithCountsAddACountByteToEveryEntry) {
  TempDir dir;
  CWordLinks links(dir.file("temp"), 65535, 1048575, 1);
  links.addWord(kFileA, 100, 3);
  links.addWord(kFileA, 200, 255);
  links.addWord(kFileB, 300, 0);
  EXPECT_EQ(links.getUsed(), 44u);
  const std::string r = region(links);
  EXPECT_EQ(wordAt(r, 16), kFileA);
  EXPECT_EQ(wordAt(r, 20), 100u);
  EXPECT_EQ(static_cast<unsigned char>(r[24]), 3u);
  EXPECT_EQ(wordAt(r, 25), 200u);
  EXPECT_EQ(static_cast<unsigned char>(r[29]), 255u);
  EXPECT_EQ(wordAt(r, 30), 0u);  // end entry, count 0 too
  EXPECT_EQ(r[34], 0);
  EXPECT_EQ(wordAt(r, 35), kFileB);
  EXPECT_EQ(wordAt(r, 39), 300u);
  EXPECT_EQ(r[43], 0);
}

TEST(WordLinks, ReadingGivesThePairsBackWithTheirCounts) {
  TempDir dir;
  CWordLinks links(dir.file("temp"), 65535, 1048575, 1);
  links.addWord(kFileA, 100, 3);
  links.addWord(kFileA, 200, 255);
  links.addWord(kFileB, 300, 0);
  EXPECT_EQ(readAll(links),
            (std::vector<Link>{{kFileA, 100, 3}, {kFileA, 200, 255}, {kFileB, 300, 0}}));
}

TEST(WordLinks, WithoutCountsEveryEntryReadsCount255) {
  TempDir dir;
  CWordLinks links(dir.file("temp"), 65535, 1048575, 0);
  links.addWord(kFileA, 100, 7);
  links.addWord(kFileB, 200, 0);
  EXPECT_EQ(readAll(links), (std::vector<Link>{{kFileA, 100, 255}, {kFileB, 200, 255}}));
}

TEST(WordLinks, ANewGroupStartsAtEveryChangeOfFile) {
  TempDir dir;
  CWordLinks links(dir.file("temp"), 65535, 1048575, 0);
  links.addWord(kFileA, 100, 0);
  links.addWord(kFileB, 200, 0);
  links.addWord(kFileA, 300, 0);
  EXPECT_EQ(region(links).substr(16),
            storage_test::wordBytes({kFileA, 100, 0, kFileB, 200, 0, kFileA, 300}));
}

TEST(WordLinks, PositionsBeyondTheUsedPartReadAsZero) {
  TempDir dir;
  CWordLinks links(dir.file("temp"), 65535, 1048575, 1);
  links.addWord(kFileA, 100, 9);
  uint32_t pos = links.getUsed();
  EXPECT_EQ(links.getFile(pos), 0u);
  pos = links.getUsed();
  unsigned char count = 42;
  EXPECT_EQ(links.getWord(pos, count), 0u);
  EXPECT_EQ(count, 0u);
  EXPECT_EQ(links.entrySize(), 5u);
}

TEST(WordLinks, EmptyRegionHasNoGroups) {
  TempDir dir;
  CWordLinks links(dir.file("temp"), 65535, 1048575, 0);
  EXPECT_TRUE(readAll(links).empty());
  EXPECT_EQ(links.entrySize(), 4u);
}

TEST(WordLinks, ClosedAndReopenedRegionGivesBackEveryPair) {
  TempDir dir;
  const std::string path = dir.file("temp");
  Stream s;
  std::vector<Link> written;
  {
    CWordLinks links(path, 65535, 1048575, 1);
    for (uint32_t file = 36; file < 36 + 200 * 10; file += 10) {
      for (uint32_t word = 36; word < 36 + 50 * 7; word += 7) {
        unsigned char count = static_cast<unsigned char>((file + word) % 256);
        links.addWord(file, word, count);
        written.push_back({file, word, count});
      }
    }
    ASSERT_TRUE(links.store(s.get()));
    const std::string desc = s.bytes();
    ASSERT_EQ(desc.size(), 8u);
    EXPECT_EQ(wordAt(desc, 0), 12360001u);
    EXPECT_NE(wordAt(desc, 4), 0u);
  }
  s.rewind();
  CapturedMessages msgs;
  CWordLinks links(path, s.get());
  EXPECT_TRUE(msgs.errors.empty());
  EXPECT_TRUE(links.hasCounts());
  EXPECT_EQ(readAll(links), written);
}

TEST(WordLinks, BadDescriptionRaisesStorageReadErrorWithThePath) {
  TempDir dir;
  const std::string path = dir.file("temp");
  { CWordLinks made(path, 65535, 1048575, 0); }
  for (const std::vector<uint32_t> &desc :
       {std::vector<uint32_t>{12360002, 0}, std::vector<uint32_t>{12350001, 0},
        std::vector<uint32_t>{12360001}}) {
    Stream s;
    s.writeWords(desc);
    s.rewind();
    CapturedMessages msgs;
    EXPECT_TRUE(throwsKurvo([&] { CWordLinks links(path, s.get()); }));
    ASSERT_EQ(msgs.errors.size(), 1u);
    EXPECT_EQ(msgs.errors[0].key, "StorageReadError");
    EXPECT_EQ(msgs.errors[0].argument, path);
  }
}
