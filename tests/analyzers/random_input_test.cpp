// Arbitrary bytes as a file: indexing and display must neither fault nor overrun.
#include <cstring>
#include <random>

#include "test_support.h"

using namespace kurvo_test;

namespace {

// Bytes weighted towards what stresses the cutter and the display: NULs,
// control bytes, line ends, high-bit runs and long words.
std::string randomFile(std::mt19937 &random) {
  static const unsigned char kSpecial[] = {0, 1, 7, 8, 9, 10, 13, 14, 31, ' ', 127, 128, 227, 255};
  const size_t sizes[] = {0, 1, 2, 1021, 1023, 1024, 65534, 65535, 65536, 70000};
  size_t size = random() % 2 ? sizes[random() % 10] : random() % 140000;
  std::string bytes;
  bytes.reserve(size);
  while (bytes.size() < size) {
    switch (random() % 4) {
      case 0:
        bytes += static_cast<char>(kSpecial[random() % sizeof kSpecial]);
        break;
      case 1:
        bytes += static_cast<char>(random());
        break;
      default:
        bytes.append(random() % 3 ? random() % 12 : random() % 2000, static_cast<char>('a' + random() % 26));
    }
  }
  bytes.resize(size);
  return bytes;
}

}  // namespace

TEST_F(AnalyzerTest, RandomFilesIndexAndDisplayWithinTheirLimits) {
  std::mt19937 random(7);
  for (int round = 0; round < 40; ++round) {
    SCOPED_TRACE(round);
    index->MaxWordLength = static_cast<int>(random() % 3) * 40;
    index->MaxPerFileRead = random() % 2 ? 1 << 20 : static_cast<int>(random() % 100000);
    for (int c = 0; c < 256; ++c) {
      index->setNonAlphaCharMask(c, random() % 8 == 0);
      index->setValidTrailingMask(c, random() % 8 == 0);
    }
    const std::string path = dataFile("random.bin", randomFile(random));
    EXPECT_TRUE(analyzer->indexFile(path.c_str(), fileNumber));
    const unsigned long maxLength = random() % 3 ? 200000 : random() % 100;
    char *text =
        analyzer->fillDisplayBuffer(path.c_str(), fileNumber, maxLength, static_cast<int>(random() % 3) * 30, true);
    ASSERT_NE(text, nullptr);
    EXPECT_LE(std::strlen(text), maxLength);
    std::free(text);
  }
}
