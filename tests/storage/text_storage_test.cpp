// CTextStorage: entry layout, hashing, lookup, rehash and the saved description.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "storage/byte_io.h"
#include "storage/lower_case_table.h"
#include "storage/text_storage.h"
#include "storage_test_util.h"
#include "test_support.h"

using kurvo_test::CapturedMessages;
using kurvo_test::TempDir;
using kurvo_test::throwsKurvo;
using storage_test::Stream;
using storage_test::wordAt;

namespace {

// The index's two tables.
std::unique_ptr<CTextStorage> makeWordTable(const std::string &path) {
  return std::make_unique<CTextStorage>(path, 131071, 1048575, 16, 40000);
}
std::unique_ptr<CTextStorage> makeSkipTable(const std::string &path) {
  return std::make_unique<CTextStorage>(path, 32767, 65535, 0, 1000);
}

uint32_t nextInBucket(const CTextStorage &t, uint32_t textOffset) {
  return load32(t.getText(textOffset) - t.getPrefixSize());
}

std::string wordName(int i) { return "w" + std::to_string(i); }

class TextStorage : public ::testing::Test {
 protected:
  void SetUp() override { mapLowerCaseChars(); }
  TempDir dir;
};

struct HashCase {
  const char *text;
  uint32_t bucket;  // with 1000 buckets
};

// h = h * 33 + folded byte taken as signed, wrapping at 32 bits.
const std::vector<HashCase> kHashes = {
    {"", 0},
    {"q", 113},
    {"Q", 113},
    {"ab", 299},        // 97 * 33 + 98 = 3299
    {"AB", 299},
    {"ab\x7F" "cd", 299},  // DEL folds to 0 and ends the hashed part
    {"\xE9", 273},      // 2^32 - 23
    {"\xC9", 273},      // folds to 0xE9
};

}  // namespace

TEST_F(TextStorage, HashFoldsCaseAndAddsSignedBytes) {
  CTextStorage t(dir.file("words"), 1024, 4096, 0, 1000);
  for (const HashCase &c : kHashes) {
    SCOPED_TRACE(c.text);
    EXPECT_EQ(t.getHash(c.text), c.bucket);
    EXPECT_EQ(hashText(c.text, 1000), c.bucket);
  }
}

TEST_F(TextStorage, EntriesLieBackToBackWithZeroDataAndNext) {
  auto t = makeWordTable(dir.file("words"));
  EXPECT_EQ(t->getPrefixSize(), 20u);
  uint32_t alpha = t->addText("alpha");
  uint32_t beta = t->addText("beta");
  EXPECT_EQ(alpha, 36u);              // header 16 + next 4 + data 16
  EXPECT_EQ(beta, 36u + 6u + 20u);
  EXPECT_STREQ(t->getText(alpha), "alpha");
  EXPECT_STREQ(t->getText(beta), "beta");
  EXPECT_EQ(t->getData(alpha), t->getText(alpha) - 16);
  for (int i = 0; i < 16; ++i) EXPECT_EQ(t->getData(alpha)[i], 0);
  EXPECT_EQ(nextInBucket(*t, alpha), 0u);
  EXPECT_EQ(t->getUsed(), beta + 5u);
  EXPECT_EQ(t->getEntryCount(), 2u);
}

TEST_F(TextStorage, SkipTableEntriesHaveNoData) {
  auto t = makeSkipTable(dir.file("skipped"));
  EXPECT_EQ(t->getPrefixSize(), 4u);
  uint32_t the = t->addText("the");
  EXPECT_EQ(the, 20u);
  EXPECT_EQ(t->getData(the), t->getText(the));
  EXPECT_EQ(t->addText("and"), 28u);  // 16 + 8 for "the", then 4
}

TEST_F(TextStorage, WalkVisitsEntriesInTheOrderAdded) {
  auto t = makeWordTable(dir.file("words"));
  EXPECT_EQ(t->getFirst(), 0u);
  std::vector<uint32_t> added;
  for (const char *w : {"one", "two", "three", "", "four"}) added.push_back(t->addText(w));
  std::vector<uint32_t> walked;
  for (uint32_t e = t->getFirst(); e != 0; e = t->getNext(e)) walked.push_back(e);
  EXPECT_EQ(walked, added);
  EXPECT_EQ(t->getNext(added.back()), 0u);
}

TEST_F(TextStorage, EmptyTextIsAnOrdinaryEntry) {
  auto t = makeSkipTable(dir.file("skipped"));
  EXPECT_EQ(t->getHash(""), 0u);
  EXPECT_EQ(t->lookup(""), 0u);
  uint32_t empty = t->addText("");
  EXPECT_NE(empty, 0u);
  EXPECT_EQ(t->lookup(""), empty);
  EXPECT_STREQ(t->getText(empty), "");
}

TEST_F(TextStorage, LookupIgnoresAsciiCaseAndAddTextDoesNotLookUp) {
  auto t = makeWordTable(dir.file("words"));
  uint32_t first = t->addText("Hello");
  EXPECT_EQ(t->lookup("HELLO"), first);
  EXPECT_EQ(t->lookup("hello"), first);
  EXPECT_EQ(t->lookup("hell"), 0u);

  uint32_t second = t->addText("HELLO");
  EXPECT_NE(second, first);
  EXPECT_EQ(t->getEntryCount(), 2u);
  EXPECT_EQ(nextInBucket(*t, first), second);  // behind the first in its chain
  EXPECT_EQ(nextInBucket(*t, second), 0u);
  EXPECT_EQ(t->lookup("hello"), first);
}

TEST_F(TextStorage, HashFoldsHighCapitalsButEqualityIsAsciiOnly) {
  auto t = makeWordTable(dir.file("words"));
  uint32_t upper = t->addText("\xC1Z");
  EXPECT_EQ(t->getHash("\xC1Z"), t->getHash("\xE1z"));
  EXPECT_EQ(t->lookup("\xC1z"), upper);
  EXPECT_EQ(t->lookup("\xE1z"), 0u);
}

TEST_F(TextStorage, ChainsKeepTheOrderOfLinking) {
  // 'a' (97), 'k' (107) and 'u' (117) share bucket 7 of 10.
  CTextStorage t(dir.file("words"), 1024, 4096, 0, 10);
  uint32_t a = t.addText("a");
  uint32_t k = t.addText("k");
  uint32_t u = t.addText("u");
  ASSERT_EQ(t.getHash("a"), 7u);
  ASSERT_EQ(t.getHash("k"), 7u);
  ASSERT_EQ(t.getHash("u"), 7u);
  EXPECT_EQ(nextInBucket(t, a), k);
  EXPECT_EQ(nextInBucket(t, k), u);
  EXPECT_EQ(nextInBucket(t, u), 0u);
  EXPECT_EQ(t.lookup("U"), u);
  EXPECT_EQ(t.lookup("e"), 0u);  // 101: bucket 1, empty
}

TEST_F(TextStorage, RehashDoublesUntilTheEntryCountFits) {
  CTextStorage t(dir.file("words"), 1024, 4096, 4, 4);
  std::vector<uint32_t> offsets;
  for (int i = 0; i < 4; ++i) offsets.push_back(t.addText(wordName(i).c_str()));
  EXPECT_EQ(t.getBucketCount(), 4u);
  offsets.push_back(t.addText(wordName(4).c_str()));
  EXPECT_EQ(t.getBucketCount(), 8u);
  for (int i = 5; i < 9; ++i) offsets.push_back(t.addText(wordName(i).c_str()));
  EXPECT_EQ(t.getBucketCount(), 16u);
  for (int i = 0; i < 9; ++i) EXPECT_EQ(t.lookup(wordName(i).c_str()), offsets[i]) << i;
}

TEST_F(TextStorage, WordTableRehashesAtThe40001stWord) {
  auto t = makeWordTable(dir.file("words"));
  std::vector<uint32_t> offsets;
  offsets.reserve(40001);
  for (int i = 0; i < 40000; ++i) offsets.push_back(t->addText(wordName(i).c_str()));
  EXPECT_EQ(t->getBucketCount(), 40000u);
  offsets.push_back(t->addText(wordName(40000).c_str()));
  EXPECT_EQ(t->getBucketCount(), 80000u);
  EXPECT_EQ(t->getEntryCount(), 40001u);
  for (int i = 0; i <= 40000; ++i) {
    ASSERT_EQ(t->lookup(wordName(i).c_str()), offsets[i]) << i;
  }
}

TEST_F(TextStorage, StoredDescriptionHoldsCountsAndBuckets) {
  CTextStorage t(dir.file("words"), 1024, 4096, 16, 5);
  uint32_t a = t.addText("apple");
  uint32_t b = t.addText("pear");
  Stream s;
  ASSERT_TRUE(t.store(s.get()));
  const std::string bytes = s.bytes();
  ASSERT_EQ(bytes.size(), 4u * (5 + 5));
  EXPECT_EQ(wordAt(bytes, 0), 12350001u);
  EXPECT_EQ(wordAt(bytes, 4), 20u);
  EXPECT_EQ(wordAt(bytes, 8), 2u);
  EXPECT_EQ(wordAt(bytes, 12), 12340001u);
  EXPECT_EQ(wordAt(bytes, 16), 5u);
  EXPECT_EQ(wordAt(bytes, 20 + 4 * t.getHash("apple")), a);
  if (t.getHash("pear") != t.getHash("apple")) {
    EXPECT_EQ(wordAt(bytes, 20 + 4 * t.getHash("pear")), b);
  }
}

TEST_F(TextStorage, HashEntriesRecordRoundTrips) {
  const uint32_t buckets[3] = {36, 0, 77};
  Stream s;
  ASSERT_TRUE(storeHashEntries(s.get(), 3, buckets));
  EXPECT_EQ(s.bytes(), storage_test::wordBytes({12340001, 3, 36, 0, 77}));
  s.rewind();
  uint32_t count = 0;
  uint32_t *read = readHashEntries(s.get(), count);
  ASSERT_NE(read, nullptr);
  EXPECT_EQ(count, 3u);
  EXPECT_EQ(read[0], 36u);
  EXPECT_EQ(read[2], 77u);
  delete[] read;
}

TEST_F(TextStorage, HashEntriesRecordWithWrongMagicOrShortIsRefused) {
  Stream bad;
  bad.writeWords({12340002, 1, 36});
  bad.rewind();
  uint32_t count = 0;
  EXPECT_EQ(readHashEntries(bad.get(), count), nullptr);

  Stream shortRecord;
  shortRecord.writeWords({12340001, 4, 36});
  shortRecord.rewind();
  EXPECT_EQ(readHashEntries(shortRecord.get(), count), nullptr);
}

TEST_F(TextStorage, ClosedAndReopenedTableGivesBackEveryEntry) {
  const std::string path = dir.file("words");
  Stream s;
  std::vector<uint32_t> offsets;
  {
    auto t = makeWordTable(path);
    for (int i = 0; i < 3000; ++i) {
      uint32_t e = t->addText(wordName(i).c_str());
      store32(t->getData(e) + word_data::kListPosition, static_cast<uint32_t>(i) * 7 + 1);
      offsets.push_back(e);
    }
    ASSERT_TRUE(t->store(s.get()));
  }
  s.rewind();
  CapturedMessages msgs;
  CTextStorage t(path, s.get());
  EXPECT_TRUE(msgs.errors.empty());
  EXPECT_EQ(t.getEntryCount(), 3000u);
  EXPECT_EQ(t.getPrefixSize(), 20u);
  EXPECT_EQ(t.getBucketCount(), 40000u);
  for (int i = 0; i < 3000; ++i) {
    ASSERT_EQ(t.lookup(wordName(i).c_str()), offsets[i]) << i;
    EXPECT_EQ(load32(t.getData(offsets[i]) + word_data::kListPosition),
              static_cast<uint32_t>(i) * 7 + 1);
  }
  uint32_t n = 0;
  for (uint32_t e = t.getFirst(); e != 0; e = t.getNext(e)) ASSERT_EQ(e, offsets[n++]);
  EXPECT_EQ(n, 3000u);
}

TEST_F(TextStorage, BadDescriptionRaisesStorageReadErrorWithThePath) {
  const std::string path = dir.file("words");
  { CTextStorage made(path, 1024, 4096, 0, 2); }
  const std::vector<std::vector<uint32_t>> descriptions = {
      {12350002, 4, 0, 12340001, 2, 0, 0},  // wrong table magic
      {12350001, 4, 0, 12340002, 2, 0, 0},  // wrong bucket magic
      {12350001, 4},                        // cut short
      {12350001, 4, 0, 12340001, 2, 0},     // buckets cut short
  };
  for (size_t i = 0; i < descriptions.size(); ++i) {
    SCOPED_TRACE(i);
    Stream s;
    s.writeWords(descriptions[i]);
    s.rewind();
    CapturedMessages msgs;
    EXPECT_TRUE(throwsKurvo([&] { CTextStorage t(path, s.get()); }));
    ASSERT_EQ(msgs.errors.size(), 1u);
    EXPECT_EQ(msgs.errors[0].key, "StorageReadError");
    EXPECT_EQ(msgs.errors[0].argument, path);
  }
}
