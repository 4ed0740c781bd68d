// CFileStorage: record layout, lookup by name and parent, obsolete records, times, reopening.

#include "test_support.h"

using namespace kurvo_test;

namespace {

class FileStorage : public ::testing::Test {
 protected:
  static uint32_t add(CFileStorage &t, const char *name, uint32_t parent, uint32_t size = 0) {
    const uint32_t n = t.addFile(name);
    file_record::setParent(t.getData(n), parent);
    file_record::setSize(t.getData(n), size);
    return n;
  }

  TempDir dir;
};

}  // namespace

TEST_F(FileStorage, RecordsFrom36AreFoundByNameAndParentIgnoringCaseUnlessObsolete) {
  CFileStorage t(dir.file("files"), 1000);
  const uint32_t folder = add(t, "/top", 0);
  EXPECT_EQ(folder, 36u);
  const uint32_t file = add(t, "Notes.TXT", folder);
  EXPECT_EQ(file, 36u + 5u + 20u);  // "/top" and its NUL, then the next prefix
  const uint32_t elsewhere = add(t, "notes.txt", 99);
  EXPECT_EQ(t.getData(file), t.getText(file) - 16);
  EXPECT_EQ(t.lookupFile("/TOP", 0), folder);
  EXPECT_EQ(t.lookupFile("NOTES.txt", folder), file);
  EXPECT_EQ(t.lookupFile("Notes.TXT", 99), elsewhere);
  EXPECT_EQ(t.lookupFile("Notes.TXT", 0), 0u);
  EXPECT_EQ(t.lookupFile("Notes.TX", folder), 0u);

  // An obsolete record is walked but not found; an empty name stays as it is.
  file_record::markObsolete(t.getData(file));
  EXPECT_EQ(std::string(t.getText(file)), "\xFFotes.TXT");
  EXPECT_EQ(t.lookupFile("notes.txt", folder), 0u);
  EXPECT_EQ(t.getNext(folder), file);
  const uint32_t again = add(t, "notes.txt", folder);
  EXPECT_EQ(t.lookupFile("Notes.txt", folder), again);
  char *empty = t.getData(add(t, "", folder));
  file_record::markObsolete(empty);
  EXPECT_STREQ(file_record::name(empty), "");
}

TEST_F(FileStorage, HostTimesAreSecondsSince1904TruncatedTowardZero) {
  CFileStorage t(dir.file("files"), 1000);
  char *rec = t.getData(t.addFile("t"));
  for (const auto &[macTime, stored] :
       {std::pair<double, int32_t>{2082844801.9, 1}, {2082844798.5, -1}, {0.0, -2082844800}}) {
    file_record::setMacTime(rec, macTime);
    EXPECT_EQ(file_record::time(rec), stored) << macTime;
    EXPECT_DOUBLE_EQ(file_record::macTime(rec), stored + 2082844800.0) << macTime;
  }
}

TEST_F(FileStorage, ClosedAndReopenedTableGivesBackEveryRecord) {
  const std::string path = dir.file("files");
  Stream s;
  std::vector<uint32_t> numbers;
  {
    CFileStorage t(path, 1000);
    numbers.push_back(add(t, "/data/top", 0));
    for (uint32_t i = 0; i < 2500; ++i) numbers.push_back(add(t, ("file" + std::to_string(i)).c_str(), numbers[0], i));
    ASSERT_TRUE(t.store(s.get()));
    EXPECT_EQ(wordBytes({12370001, 20, 12340001, 1000}), s.bytes().substr(0, 16));
  }
  s.rewind();
  CapturedMessages msgs;
  CFileStorage t(path, s.get());
  EXPECT_TRUE(msgs.errors.empty());
  EXPECT_EQ(t.lookupFile("/data/top", 0), numbers[0]);
  for (uint32_t i = 0; i < 2500; ++i) {
    const uint32_t n = t.lookupFile(("FILE" + std::to_string(i)).c_str(), numbers[0]);
    ASSERT_EQ(n, numbers[i + 1]) << i;
    EXPECT_EQ(file_record::size(t.getData(n)), i);
  }
  size_t walked = 0;
  for (uint32_t n = t.getFirst(); n != 0; n = t.getNext(n)) ASSERT_EQ(n, numbers[walked++]);
  EXPECT_EQ(walked, numbers.size());
}

TEST_F(FileStorage, BadDescriptionRaisesStorageReadError) {
  const std::string path = dir.file("files");
  { CFileStorage made(path, 2); }
  // A text table's magic, wrong bucket magic, cut short.
  expectBadDescriptions<CFileStorage>(
      path, {{12350001, 20, 12340001, 2, 0, 0}, {12370001, 20, 12340002, 2, 0, 0}, {12370001}});
}
