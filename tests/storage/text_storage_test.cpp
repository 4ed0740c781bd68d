// CTextStorage: entry layout, hashing, lookup, rehash and the stored description.

#include "storage/text_storage.h"
#include "test_support.h"

using namespace kurvo_test;

namespace {

std::string wordName(uint32_t i) { return "w" + std::to_string(i); }

class TextStorage : public ::testing::Test {
 protected:
  // The index's word table.
  CTextStorage wordTable() const { return CTextStorage(dir.file("words"), 131071, 1048575, 16, 40000); }
  TempDir dir;
};

}  // namespace

TEST_F(TextStorage, HashFoldsCaseAndAddsSignedBytes) {
  // h = h * 33 + folded byte taken as signed, wrapping at 32 bits; 1000 buckets.
  // DEL folds to 0 and ends the hashed part; 0xE9 adds 2^32 - 23 and 0xC9 folds to it.
  // clang-format off
  const std::pair<const char *, uint32_t> cases[] = {
      {"", 0}, {"Q", 113}, {"ab", 299}, {"AB", 299}, {"ab\x7F" "cd", 299}, {"\xE9", 273}, {"\xC9", 273}};
  // clang-format on
  CTextStorage t(dir.file("words"), 1024, 4096, 0, 1000);
  for (const auto &[text, bucket] : cases) EXPECT_EQ(t.getHash(text), bucket) << text;
}

TEST_F(TextStorage, LookupIgnoresAsciiCaseAndAddTextDoesNotLookUp) {
  CTextStorage t(dir.file("words"), 1024, 4096, 16, 10);
  const uint32_t first = t.addText("Hello\xC1");
  EXPECT_EQ(t.lookup("HELLO\xC1"), first);
  EXPECT_EQ(t.lookup("hello\xE1"), 0u);  // same bucket, but equality is ASCII-only
  EXPECT_EQ(t.lookup("hell"), 0u);
  const uint32_t second = t.addText("HELLO\xC1");
  EXPECT_NE(second, first);
  EXPECT_EQ(load32(t.getText(first) - 20), second);  // behind the first in its chain
  EXPECT_EQ(t.lookup("hello\xC1"), first);
  // The skip table's entries have only the next word in front (the word
  // table's 20-byte prefix is checked byte for byte by the word indexing test).
  CTextStorage skip(dir.file("skipped"), 1024, 4096, 0, 10);
  EXPECT_EQ(skip.addText("the"), 20u);
  EXPECT_EQ(skip.addText("and"), 28u);
  EXPECT_EQ(skip.getData(20), skip.getText(20));

  // A chain entry whose text has no NUL below the used part is damage, whether it matches or not.
  CapturedMessages messages;
  CTextStorage one(dir.file("one"), 1024, 4096, 16, 1);
  const uint32_t last = one.addText("abc");
  one.getPointer(last)[3] = 'x';
  for (const char *word : {"abd", "abcx", "abcxy"}) {
    EXPECT_TRUE(throwsKurvo([&] { one.lookup(word); })) << word;
    EXPECT_EQ(messages.lastError()->key, "AssertionFailed");
  }
}

TEST_F(TextStorage, WordTableRehashesAtThe40001stWord) {
  CTextStorage t = wordTable();
  std::vector<uint32_t> offsets;
  for (uint32_t i = 0; i < 40000; ++i) offsets.push_back(t.addText(wordName(i).c_str()));
  EXPECT_EQ(t.getBucketCount(), 40000u);
  offsets.push_back(t.addText(wordName(40000).c_str()));
  EXPECT_EQ(t.getBucketCount(), 80000u);
  for (uint32_t i = 0; i <= 40000; ++i) ASSERT_EQ(t.lookup(wordName(i).c_str()), offsets[i]) << i;
}

TEST_F(TextStorage, ClosedAndReopenedTableGivesBackEveryEntry) {
  const std::string path = dir.file("words");
  Stream s;
  std::vector<uint32_t> offsets;
  {
    CTextStorage t = wordTable();
    for (uint32_t i = 0; i < 3000; ++i) {
      offsets.push_back(t.addText(wordName(i).c_str()));
      store32(t.getData(offsets.back()) + word_data::kListPosition, i * 7 + 1);
    }
    ASSERT_TRUE(t.store(s.get()));
    EXPECT_EQ(wordBytes({12350001, 20, 3000, 12340001, 40000}), s.bytes().substr(0, 20));
  }
  s.rewind();
  CapturedMessages msgs;
  CTextStorage t(path, s.get());
  EXPECT_TRUE(msgs.errors.empty());
  EXPECT_EQ(t.getEntryCount(), 3000u);
  for (uint32_t i = 0; i < 3000; ++i) {
    ASSERT_EQ(t.lookup(wordName(i).c_str()), offsets[i]) << i;
    EXPECT_EQ(load32(t.getData(offsets[i]) + word_data::kListPosition), i * 7 + 1);
  }
  uint32_t n = 0;
  for (uint32_t e = t.getFirst(); e != 0; e = t.getNext(e)) ASSERT_EQ(e, offsets[n++]);
  EXPECT_EQ(n, 3000u);
}

TEST_F(TextStorage, BadDescriptionRaisesStorageReadError) {
  const std::string path = dir.file("words");
  { CTextStorage made(path, 1024, 4096, 0, 2); }
  // Wrong table magic, wrong bucket magic, cut short, buckets cut short.
  // clang-format off
  expectBadDescriptions<CTextStorage>(path, {{12350002, 4, 0, 12340001, 2, 0, 0}, {12350001, 4, 0, 12340002, 2, 0, 0},
                                             {12350001, 4}, {12350001, 4, 0, 12340001, 2, 0}});
  // clang-format on
}
