// CFileStorage: record layout, lookup by name and parent, obsolete records, times.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "storage/byte_io.h"
#include "storage/file_storage.h"
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

class FileStorage : public ::testing::Test {
 protected:
  void SetUp() override { mapLowerCaseChars(); }

  // Adds a record the way the indexer does: add, then fill the data area.
  static uint32_t add(CFileStorage &t, const char *name, uint32_t parent, uint32_t size = 0) {
    uint32_t n = t.addFile(name);
    file_record::setParent(t.getData(n), parent);
    file_record::setSize(t.getData(n), size);
    return n;
  }

  TempDir dir;
};

struct TimeCase {
  double macTime;
  int32_t stored;
  double readBack;
};

const std::vector<TimeCase> kTimes = {
    {2082844800.0, 0, 2082844800.0},
    {2082844801.9, 1, 2082844801.0},       // truncated toward zero
    {2082844798.5, -1, 2082844799.0},      // toward zero, not down
    {0.0, -2082844800, 0.0},
    {3786825600.0, 1703980800, 3786825600.0},
};

}  // namespace

TEST_F(FileStorage, FirstRecordIsNumber36AndRecordsLieBackToBack) {
  CFileStorage t(dir.file("files"), 1000);
  EXPECT_EQ(t.getFirst(), 0u);
  uint32_t first = t.addFile("/top/folder");
  EXPECT_EQ(first, 36u);
  uint32_t second = t.addFile("a.txt");
  EXPECT_EQ(second, 36u + 12u + 20u);
  EXPECT_EQ(t.getFirst(), 36u);
  EXPECT_EQ(t.getNext(first), second);
  EXPECT_EQ(t.getNext(second), 0u);
  EXPECT_STREQ(t.getText(second), "a.txt");
  EXPECT_EQ(t.getData(second), t.getText(second) - 16);
  for (int i = 0; i < 16; ++i) EXPECT_EQ(t.getData(second)[i], 0);
  EXPECT_EQ(t.getRecordLimit(), second + 6u);
}

TEST_F(FileStorage, FieldsAreWholeWordsInTheDataArea) {
  CFileStorage t(dir.file("files"), 1000);
  uint32_t n = t.addFile("x");
  char *rec = t.getData(n);
  file_record::setParent(rec, 36);
  file_record::setTime(rec, -5);
  file_record::setSize(rec, 0xFFFFFFF0u);
  file_record::setAttributes(rec, 0x80000001u);
  EXPECT_EQ(load32(rec + 0), 36u);
  EXPECT_EQ(loadSigned32(rec + 4), -5);
  EXPECT_EQ(load32(rec + 8), 0xFFFFFFF0u);
  EXPECT_EQ(load32(rec + 12), 0x80000001u);
  EXPECT_EQ(file_record::parent(rec), 36u);
  EXPECT_EQ(file_record::time(rec), -5);
  EXPECT_EQ(file_record::size(rec), 0xFFFFFFF0u);
  EXPECT_EQ(file_record::attributes(rec), 0x80000001u);
  EXPECT_STREQ(file_record::name(rec), "x");
}

TEST_F(FileStorage, HashIsTheTextStorageHash) {
  CFileStorage t(dir.file("files"), 1000);
  for (const char *name : {"", "a.txt", "READ ME", "\xC9t\xE9"}) {
    EXPECT_EQ(t.getHash(name), hashText(name, 1000)) << name;
  }
  EXPECT_EQ(t.getHash(""), 0u);
}

TEST_F(FileStorage, LookupNeedsTheParentButIgnoresLetterCase) {
  CFileStorage t(dir.file("files"), 1000);
  uint32_t folder = add(t, "/top", 0);
  uint32_t other = add(t, "/other", 0);
  uint32_t file = add(t, "Notes.TXT", folder);
  EXPECT_EQ(t.lookupFile("/top", 0), folder);
  EXPECT_EQ(t.lookupFile("Notes.TXT", folder), file);
  EXPECT_EQ(t.lookupFile("notes.txt", folder), file);
  EXPECT_EQ(t.lookupFile("NOTES.TXT", folder), file);
  EXPECT_EQ(t.lookupFile("Notes.TXT", other), 0u);
  EXPECT_EQ(t.lookupFile("Notes.TX", folder), 0u);
}

TEST_F(FileStorage, SameNameUnderTwoParentsIsToldApartByParent) {
  CFileStorage t(dir.file("files"), 1000);
  uint32_t first = add(t, "index.html", 36);
  uint32_t second = add(t, "index.html", 99);
  EXPECT_EQ(t.lookupFile("index.html", 36), first);
  EXPECT_EQ(t.lookupFile("index.html", 99), second);
  EXPECT_EQ(t.lookupFile("INDEX.html", 99), second);
}

TEST_F(FileStorage, FirstMatchInTheChainWins) {
  CFileStorage t(dir.file("files"), 1);
  uint32_t first = add(t, "dup", 36);
  add(t, "other", 36);
  add(t, "DUP", 36);
  EXPECT_EQ(t.lookupFile("dup", 36), first);
}

TEST_F(FileStorage, ObsoleteRecordIsWalkedButNotFound) {
  CFileStorage t(dir.file("files"), 1000);
  uint32_t gone = add(t, "gone.txt", 36);
  uint32_t kept = add(t, "kept.txt", 36);
  file_record::markObsolete(t.getData(gone));
  EXPECT_TRUE(file_record::isObsolete(t.getData(gone)));
  EXPECT_EQ(static_cast<unsigned char>(t.getText(gone)[0]), 0xFFu);
  EXPECT_STREQ(t.getText(gone) + 1, "one.txt");
  EXPECT_EQ(t.lookupFile("gone.txt", 36), 0u);
  EXPECT_EQ(t.lookupFile("kept.txt", 36), kept);

  EXPECT_EQ(t.getFirst(), gone);
  EXPECT_EQ(t.getNext(gone), kept);

  uint32_t again = add(t, "gone.txt", 36);
  EXPECT_EQ(t.lookupFile("gone.txt", 36), again);
}

TEST_F(FileStorage, EmptyNameIsNotMarked) {
  CFileStorage t(dir.file("files"), 1000);
  uint32_t empty = add(t, "", 36);
  file_record::markObsolete(t.getData(empty));
  EXPECT_EQ(t.getText(empty)[0], '\0');
  EXPECT_FALSE(file_record::isObsolete(t.getData(empty)));
  EXPECT_EQ(t.lookupFile("", 36), empty);
  EXPECT_EQ(t.getNext(empty), 0u);
}

TEST_F(FileStorage, HostTimesAreSecondsSince1904) {
  CFileStorage t(dir.file("files"), 1000);
  char *rec = t.getData(t.addFile("t"));
  for (const TimeCase &c : kTimes) {
    SCOPED_TRACE(c.macTime);
    file_record::setMacTime(rec, c.macTime);
    EXPECT_EQ(file_record::time(rec), c.stored);
    EXPECT_DOUBLE_EQ(file_record::macTime(rec), c.readBack);
  }
  EXPECT_DOUBLE_EQ(kMacEpochOffset, 2082844800.0);
}

TEST_F(FileStorage, StoredDescriptionHoldsPrefixAndBuckets) {
  CFileStorage t(dir.file("files"), 3);
  uint32_t n = t.addFile("a");
  Stream s;
  ASSERT_TRUE(t.store(s.get()));
  const std::string bytes = s.bytes();
  ASSERT_EQ(bytes.size(), 4u * (4 + 3));
  EXPECT_EQ(wordAt(bytes, 0), 12370001u);
  EXPECT_EQ(wordAt(bytes, 4), 20u);
  EXPECT_EQ(wordAt(bytes, 8), 12340001u);
  EXPECT_EQ(wordAt(bytes, 12), 3u);
  EXPECT_EQ(wordAt(bytes, 16 + 4 * t.getHash("a")), n);
}

TEST_F(FileStorage, ClosedAndReopenedTableGivesBackEveryRecord) {
  const std::string path = dir.file("files");
  Stream s;
  std::vector<uint32_t> numbers;
  {
    CFileStorage t(path, 1000);
    uint32_t folder = add(t, "/data/top", 0);
    numbers.push_back(folder);
    for (int i = 0; i < 2500; ++i) {
      std::string name = "file" + std::to_string(i) + ".txt";
      uint32_t n = add(t, name.c_str(), folder, static_cast<uint32_t>(i));
      file_record::setTime(t.getData(n), 1000000 + i);
      numbers.push_back(n);
    }
    ASSERT_TRUE(t.store(s.get()));
  }
  s.rewind();
  CapturedMessages msgs;
  CFileStorage t(path, s.get());
  EXPECT_TRUE(msgs.errors.empty());
  EXPECT_EQ(t.getBucketCount(), 1000u);
  EXPECT_EQ(t.lookupFile("/data/top", 0), numbers[0]);
  for (int i = 0; i < 2500; ++i) {
    std::string name = "FILE" + std::to_string(i) + ".txt";
    uint32_t n = t.lookupFile(name.c_str(), numbers[0]);
    ASSERT_EQ(n, numbers[i + 1]) << i;
    EXPECT_EQ(file_record::size(t.getData(n)), static_cast<uint32_t>(i));
    EXPECT_EQ(file_record::time(t.getData(n)), 1000000 + i);
  }
  size_t walked = 0;
  for (uint32_t n = t.getFirst(); n != 0; n = t.getNext(n)) ASSERT_EQ(n, numbers[walked++]);
  EXPECT_EQ(walked, numbers.size());
}

TEST_F(FileStorage, BadDescriptionRaisesStorageReadErrorWithThePath) {
  const std::string path = dir.file("files");
  { CFileStorage made(path, 2); }
  const std::vector<std::vector<uint32_t>> descriptions = {
      {12350001, 20, 12340001, 2, 0, 0},  // a text table's magic
      {12370001, 20, 12340002, 2, 0, 0},  // wrong bucket magic
      {12370001},                         // cut short
  };
  for (size_t i = 0; i < descriptions.size(); ++i) {
    SCOPED_TRACE(i);
    Stream s;
    s.writeWords(descriptions[i]);
    s.rewind();
    CapturedMessages msgs;
    EXPECT_TRUE(throwsKurvo([&] { CFileStorage t(path, s.get()); }));
    ASSERT_EQ(msgs.errors.size(), 1u);
    EXPECT_EQ(msgs.errors[0].key, "StorageReadError");
    EXPECT_EQ(msgs.errors[0].argument, path);
  }
}
