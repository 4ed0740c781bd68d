// CFileMemory: growth, the huge-request limit and the on-disk header.

#include <cstring>

#include "storage/file_memory.h"
#include "test_support.h"

using namespace kurvo_test;

namespace {

struct GrowthStep {
  uint32_t size;
  uint32_t offset;  // returned by getNewSpace
  uint32_t length;  // region length afterwards
};

}  // namespace

TEST(FileMemory, GrowsToTwiceTheLengthThenByTheIncrementOrToWhatIsNeeded) {
  struct Case {
    uint32_t initial, increment;
    std::vector<GrowthStep> steps;
  };
  // Doubles while shorter than the increment; an exact fit never grows. When
  // neither 2L nor L + increment holds used + size: exactly used + size.
  // clang-format off
  const Case cases[] = {
      {100, 1000, {{84, 16, 100}, {1, 100, 200}, {99, 101, 200}, {1, 200, 400}, {199, 201, 400}, {1, 400, 800},
                   {399, 401, 800}, {1, 800, 1600}, {799, 801, 1600}, {1, 1600, 2600}, {999, 1601, 2600},
                   {1000, 2600, 3600}}},
      {20, 1000, {{500, 16, 516}}}};
  // clang-format on
  for (const Case &c : cases) {
    TempDir dir;
    CFileMemory mem(dir.file("region"), c.initial, c.increment);
    for (const GrowthStep &step : c.steps) {
      SCOPED_TRACE(step.offset);
      EXPECT_EQ(mem.getNewSpace(step.size), step.offset);
      EXPECT_EQ(mem.getUsed(), step.offset + step.size);
      EXPECT_EQ(mem.getLength(), step.length);
      EXPECT_EQ(mem.getPointer(step.offset)[step.size - 1], 0);
    }
    EXPECT_EQ(readFile(dir.file("region")).size(), c.steps.back().length);
  }
}

TEST(FileMemory, RequestAboveTheIncrementRaisesGetHugeSpace) {
  TempDir dir;
  CFileMemory mem(dir.file("region"), 64, 64);
  EXPECT_EQ(mem.getNewSpace(64), 16u);
  for (uint32_t size : {65u, 3000000000u}) {
    CapturedMessages msgs;
    EXPECT_EQ(raised(msgs, [&] { mem.getNewSpace(size); }), (Message{"GetHugeSpace", std::to_string(size)}));
    EXPECT_EQ(mem.getUsed(), 80u);
  }
}

TEST(FileMemory, DisableWriteSavesTheHeaderAndThePathConstructorReadsIt) {
  TempDir dir;
  const std::string path = dir.file("region");
  CFileMemory mem(path, 100, 1000);
  mem.getNewSpace(50);
  const uint32_t marker = mem.getNewSpace(50);  // grows to 200
  std::memcpy(mem.getPointer(marker), "mark", 4);
  ASSERT_TRUE(mem.disableWrite());
  EXPECT_FALSE(mem.isWritable());
  const std::string bytes = readFile(path);
  ASSERT_EQ(bytes.size(), 200u);
  EXPECT_EQ(wordBytes({200, 116, 100, 1000}), bytes.substr(0, 16));

  CFileMemory again(path);
  EXPECT_FALSE(again.isWritable());
  EXPECT_EQ(std::make_tuple(again.getLength(), again.getUsed(), again.getInitialSize(), again.getIncrement()),
            std::make_tuple(200u, 116u, 100u, 1000u));
  EXPECT_EQ(std::string(again.getPointer(marker), 4), "mark");
  EXPECT_EQ(again.getPointer(116), nullptr);
  ASSERT_TRUE(again.enableWrite());
  EXPECT_EQ(again.getNewSpace(10), 116u);
}

TEST(FileMemory, FileShorterThanTheHeaderLeavesTheRegionDetachedQuietly) {
  TempDir dir;
  CapturedMessages msgs;
  for (const char *content : {"", "a", "abc"}) {
    dir.write("short", content);
    CFileMemory mem(dir.file("short"));
    EXPECT_FALSE(mem.isMapped()) << content;
    EXPECT_EQ(mem.getPointer(0), nullptr);
    EXPECT_FALSE(mem.enableWrite());
  }
  EXPECT_TRUE(msgs.errors.empty());
}
