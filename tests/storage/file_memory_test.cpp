// CFileMemory: growth, the on-disk header, addressing and the read-only path.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "storage/file_memory.h"
#include "storage_test_util.h"
#include "test_support.h"

using kurvo_test::CapturedMessages;
using kurvo_test::TempDir;
using kurvo_test::throwsKurvo;
using storage_test::wordAt;

namespace {

struct GrowthStep {
  uint32_t size;
  uint32_t offset;  // returned by getNewSpace
  uint32_t length;  // region length afterwards
};

// Initial size 100, increment 1000: doubles while shorter than the increment,
// then grows by one increment; a request that fits exactly never grows.
const std::vector<GrowthStep> kGrowth = {
    {84, 16, 100},    // used reaches the length exactly
    {1, 100, 200},    // 100 < 1000: doubled
    {99, 101, 200},   // exact fit again
    {1, 200, 400},
    {199, 201, 400},
    {1, 400, 800},
    {399, 401, 800},
    {1, 800, 1600},   // 800 < 1000: still doubled
    {799, 801, 1600},
    {1, 1600, 2600},  // 1600 >= 1000: one increment
    {999, 1601, 2600},
    {1000, 2600, 3600},
};

}  // namespace

TEST(FileMemoryGrowth, DoublesBelowTheIncrementThenAddsIt) {
  TempDir dir;
  CFileMemory mem(dir.file("region"), 100, 1000);
  EXPECT_EQ(mem.getLength(), 100u);
  EXPECT_EQ(mem.getUsed(), 16u);
  for (const GrowthStep &step : kGrowth) {
    SCOPED_TRACE(step.offset);
    EXPECT_EQ(mem.getNewSpace(step.size), step.offset);
    EXPECT_EQ(mem.getUsed(), step.offset + step.size);
    EXPECT_EQ(mem.getLength(), step.length);
  }
  EXPECT_TRUE(mem.isWritable());
}

TEST(FileMemoryGrowth, RequestBeyondTheDoubledLengthGetsExactlyWhatItNeeds) {
  TempDir dir;
  CFileMemory mem(dir.file("region"), 20, 1000);
  EXPECT_EQ(mem.getLength(), 20u);
  EXPECT_EQ(mem.getNewSpace(500), 16u);
  EXPECT_EQ(mem.getLength(), 516u);  // 2 * 20 would not hold used + size
  EXPECT_EQ(mem.getUsed(), 516u);
  EXPECT_EQ(kurvo_test::readFile(dir.file("region")).size(), 516u);
}

TEST(FileMemoryGrowth, InitialSizeBelowTheHeaderGivesSixteenBytes) {
  TempDir dir;
  CFileMemory mem(dir.file("region"), 8, 100);
  EXPECT_EQ(mem.getLength(), 16u);
  EXPECT_EQ(mem.getUsed(), 16u);
  EXPECT_EQ(mem.getPointer(16), nullptr);
}

TEST(FileMemoryGrowth, NewBytesAreZero) {
  TempDir dir;
  CFileMemory mem(dir.file("region"), 32, 1000);
  uint32_t first = mem.getNewSpace(16);
  std::memset(mem.getPointer(first), 0x5A, 16);
  uint32_t second = mem.getNewSpace(100);  // grows past the old length
  const char *p = mem.getPointer(second);
  ASSERT_NE(p, nullptr);
  for (uint32_t i = 0; i < 100; ++i) EXPECT_EQ(p[i], 0) << i;
  EXPECT_EQ(static_cast<unsigned char>(*mem.getPointer(first)), 0x5Au);
}

TEST(FileMemoryGrowth, RequestOfExactlyTheIncrementSucceedsOneMoreByteFails) {
  TempDir dir;
  CFileMemory mem(dir.file("region"), 64, 64);
  EXPECT_EQ(mem.getNewSpace(64), 16u);
  EXPECT_EQ(mem.getUsed(), 80u);
  EXPECT_EQ(mem.getLength(), 128u);

  CapturedMessages msgs;
  EXPECT_TRUE(throwsKurvo([&] { mem.getNewSpace(65); }));
  ASSERT_EQ(msgs.errors.size(), 1u);
  EXPECT_EQ(msgs.errors[0].key, "GetHugeSpace");
  EXPECT_EQ(msgs.errors[0].argument, "65");
  EXPECT_EQ(mem.getUsed(), 80u);
  EXPECT_EQ(mem.getLength(), 128u);
}

TEST(FileMemoryGrowth, HugeRequestReportsTheSizeInDecimal) {
  TempDir dir;
  CFileMemory mem(dir.file("region"), 64, 1048575);
  CapturedMessages msgs;
  EXPECT_TRUE(throwsKurvo([&] { mem.getNewSpace(3000000000u); }));
  ASSERT_EQ(msgs.errors.size(), 1u);
  EXPECT_EQ(msgs.errors[0].key, "GetHugeSpace");
  EXPECT_EQ(msgs.errors[0].argument, "3000000000");
}

TEST(FileMemoryCreate, ReusedFileIsCutToLengthAndZeroed) {
  TempDir dir;
  dir.write("region", std::string(200, 'x'));
  {
    CFileMemory mem(dir.file("region"), 64, 1000);
    EXPECT_EQ(mem.getNewSpace(48), 16u);
    const char *p = mem.getPointer(16);
    for (uint32_t i = 0; i < 48; ++i) EXPECT_EQ(p[i], 0) << i;
  }
  EXPECT_EQ(dir.read("region").size(), 64u);
}

TEST(FileMemoryAddressing, PointerOnlyBelowUsed) {
  TempDir dir;
  CFileMemory mem(dir.file("region"), 256, 1000);
  uint32_t at = mem.getNewSpace(10);
  EXPECT_NE(mem.getPointer(0), nullptr);
  EXPECT_EQ(mem.getPointer(at), mem.getPointer(0) + at);
  EXPECT_NE(mem.getPointer(mem.getUsed() - 1), nullptr);
  EXPECT_EQ(mem.getPointer(mem.getUsed()), nullptr);
  EXPECT_EQ(mem.getPointer(mem.getUsed() + 1), nullptr);
  EXPECT_EQ(mem.getPointer(200), nullptr);  // inside the file, beyond used
  EXPECT_EQ(mem.getPointer(0xFFFFFFFFu), nullptr);
}

TEST(FileMemoryAddressing, DetachedRegionAddressesNothing) {
  TempDir dir;
  CFileMemory mem(dir.file("region"), 256, 1000);
  mem.getNewSpace(10);
  mem.clearAll();
  EXPECT_FALSE(mem.isMapped());
  EXPECT_EQ(mem.getPointer(0), nullptr);
  EXPECT_EQ(mem.getPointer(16), nullptr);
  EXPECT_EQ(mem.getUsed(), 0u);
  EXPECT_EQ(mem.getLength(), 0u);
  EXPECT_EQ(mem.getStoragePath(), ".");
}

TEST(FileMemoryHeader, DisableWriteSavesTheHeaderAndPathConstructorRestoresIt) {
  TempDir dir;
  const std::string path = dir.file("region");
  CFileMemory mem(path, 100, 1000);
  mem.getNewSpace(50);
  uint32_t marker = mem.getNewSpace(50);  // grows to 200
  std::memcpy(mem.getPointer(marker), "mark", 4);
  ASSERT_TRUE(mem.disableWrite());
  EXPECT_TRUE(mem.isMapped());
  EXPECT_FALSE(mem.isWritable());

  const std::string bytes = kurvo_test::readFile(path);
  ASSERT_EQ(bytes.size(), 200u);
  EXPECT_EQ(wordAt(bytes, 0), 200u);
  EXPECT_EQ(wordAt(bytes, 4), 116u);
  EXPECT_EQ(wordAt(bytes, 8), 100u);
  EXPECT_EQ(wordAt(bytes, 12), 1000u);

  CFileMemory again(path);
  EXPECT_TRUE(again.isMapped());
  EXPECT_FALSE(again.isWritable());
  EXPECT_EQ(again.getLength(), 200u);
  EXPECT_EQ(again.getUsed(), 116u);
  EXPECT_EQ(again.getInitialSize(), 100u);
  EXPECT_EQ(again.getIncrement(), 1000u);
  ASSERT_NE(again.getPointer(marker), nullptr);
  EXPECT_EQ(std::string(again.getPointer(marker), 4), "mark");
  EXPECT_EQ(again.getPointer(116), nullptr);
}

TEST(FileMemoryHeader, DestructorSavesTheHeader) {
  TempDir dir;
  const std::string path = dir.file("region");
  {
    CFileMemory mem(path, 64, 1000);
    mem.getNewSpace(30);
    mem.getNewSpace(30);  // grows to 128
  }
  const std::string bytes = kurvo_test::readFile(path);
  ASSERT_EQ(bytes.size(), 128u);
  EXPECT_EQ(wordAt(bytes, 0), 128u);
  EXPECT_EQ(wordAt(bytes, 4), 76u);
  EXPECT_EQ(wordAt(bytes, 8), 64u);
  EXPECT_EQ(wordAt(bytes, 12), 1000u);
}

TEST(FileMemoryOpen, ShortOrMissingFileLeavesTheRegionDetachedQuietly) {
  TempDir dir;
  CapturedMessages msgs;
  for (const std::string &content : {std::string(), std::string("a"), std::string("abc")}) {
    SCOPED_TRACE(content.size());
    dir.write("short", content);
    CFileMemory mem(dir.file("short"));
    EXPECT_FALSE(mem.isMapped());
    EXPECT_EQ(mem.getPointer(0), nullptr);
    EXPECT_FALSE(mem.openForRead());
  }
  CFileMemory missing(dir.file("missing"));
  EXPECT_FALSE(missing.isMapped());
  EXPECT_EQ(missing.getPointer(0), nullptr);
  EXPECT_TRUE(msgs.errors.empty());
}

TEST(FileMemoryOpen, EnableWriteMakesAReopenedRegionWritable) {
  TempDir dir;
  const std::string path = dir.file("region");
  uint32_t at;
  {
    CFileMemory mem(path, 64, 1000);
    at = mem.getNewSpace(8);
  }
  CFileMemory mem(path);
  ASSERT_TRUE(mem.isMapped());
  ASSERT_TRUE(mem.enableWrite());
  EXPECT_TRUE(mem.isWritable());
  std::memcpy(mem.getPointer(at), "written!", 8);
  ASSERT_TRUE(mem.disableWrite());
  EXPECT_EQ(kurvo_test::readFile(path).substr(at, 8), "written!");
}

TEST(FileMemoryOpen, EnableWriteOnADetachedRegionFails) {
  TempDir dir;
  CFileMemory mem(dir.file("missing"));
  EXPECT_FALSE(mem.enableWrite());
  EXPECT_FALSE(mem.isWritable());
}

TEST(FileMemoryOpen, AllocationFromAReopenedRegionContinuesAtUsed) {
  TempDir dir;
  const std::string path = dir.file("region");
  { CFileMemory mem(path, 128, 1000); }
  CFileMemory mem(path);
  ASSERT_TRUE(mem.isMapped());
  EXPECT_EQ(mem.getNewSpace(10), 16u);
  EXPECT_EQ(mem.getUsed(), 26u);
  EXPECT_EQ(mem.getLength(), 128u);
}

TEST(FileMemoryPath, StoragePathIsKeptAndReplaced) {
  TempDir dir;
  CFileMemory mem(dir.file("region"), 64, 1000);
  EXPECT_EQ(mem.getStoragePath(), dir.file("region"));
  mem.setStoragePath("/elsewhere/x");
  EXPECT_EQ(mem.getStoragePath(), "/elsewhere/x");
}

TEST(FileMemoryCreate, UnopenableFileRaisesMemFileOpenFailWithThePath) {
  TempDir dir;
  const std::string path = dir.file("no-such-folder/region");
  CapturedMessages msgs;
  EXPECT_TRUE(throwsKurvo([&] { CFileMemory mem(path, 64, 1000); }));
  ASSERT_EQ(msgs.errors.size(), 1u);
  EXPECT_EQ(msgs.errors[0].key, "MemFileOpenFail");
  EXPECT_EQ(msgs.errors[0].argument, path);
}
