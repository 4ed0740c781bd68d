// Fuzzes one analyzer's word cutting and display text with arbitrary bytes, cut into two buffers.
// The analyzer is the registry name in KURVO_FUZZ_ANALYZER ("generic" by default).
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "analyzers/file_analyzer.h"
#include "index/kurvo_index.h"

#ifndef KURVO_FUZZ_ANALYZER
#define KURVO_FUZZ_ANALYZER "generic"
#endif

namespace {

struct Harness {
  Harness() {
    char pattern[] = "/tmp/kurvo-fuzz-XXXXXX";
    std::string root = mkdtemp(pattern);
    std::string store = root + "/a/b/c/";
    std::system(("mkdir -p " + store).c_str());
    index = std::make_unique<CKurvoIndex>(true, store);
    for (int c = 0; c < 256; ++c) {
      index->setValidCharMask(c, (c >= 'a' && c <= 'z') || c >= 0xC0);
      index->setValidTrailingMask(c, c == '\'' || c == '-');
      index->setValidViewableMask(c, c >= ' ');
      index->setNonAlphaCharMask(c, c >= '0' && c <= '9');
    }
    index->newFileLinks();
    index->createAnalyzers();
    analyzer = index->analyzerNamed(KURVO_FUZZ_ANALYZER);
    if (!analyzer) std::abort();
    file = index->files->addFile("fuzz.txt");
  }
  std::unique_ptr<CKurvoIndex> index;
  CFileAnalyzer *analyzer = nullptr;
  uint32_t file = 0;
};

// The buffer as the analyzers get it from a file: what the last buffer
// carried, then the bytes read, then a spare NUL.
std::vector<char> withCarry(const char *carry, const unsigned char *data, size_t size) {
  std::vector<char> buffer(carry, carry + std::strlen(carry));
  buffer.insert(buffer.end(), data, data + size);
  buffer.push_back('\0');
  return buffer;
}

void indexInTwo(Harness &h, const unsigned char *data, size_t size, size_t split) {
  h.index->partialWord[0] = '\0';
  std::vector<char> first = withCarry("", data, split);
  h.analyzer->indexBuffer(first.data(), first.size() - 1, h.file, true);
  std::string carried = h.index->partialWord;
  h.index->partialWord[0] = '\0';
  std::vector<char> second = withCarry(carried.c_str(), data + split, size - split);
  h.analyzer->indexBuffer(second.data(), second.size() - 1, h.file, false);
}

void showInTwo(Harness &h, const unsigned char *data, size_t size, size_t split, bool displayFlag) {
  int state = 0;
  h.index->partialWord[0] = '\0';
  std::vector<char> first = withCarry("", data, split);
  std::vector<char> output(2 * first.size() + 2);
  h.analyzer->stripBuffer(first.data(), first.size() - 1, output.data(), output.size(), 40, displayFlag, true, &state);
  std::string carried = h.index->partialWord;
  h.index->partialWord[0] = '\0';
  std::vector<char> second = withCarry(carried.c_str(), data + split, size - split);
  output.assign(2 * second.size() + 2, '\0');
  h.analyzer->stripBuffer(second.data(), second.size() - 1, output.data(), output.size(), 0, displayFlag, false,
                          &state);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, size_t size) {
  static Harness harness;
  if (size == 0) return 0;
  // The first byte chooses where the rest is cut in two and the display flag.
  const size_t split = size > 1 ? data[0] % size : 0;
  const bool displayFlag = (data[0] & 0x80) != 0;
  ++data;
  --size;
  const size_t cut = split < size ? split : size;
  indexInTwo(harness, data, size, cut);
  showInTwo(harness, data, size, cut, displayFlag);
  return 0;
}
