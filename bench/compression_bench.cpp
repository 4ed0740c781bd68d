// Speed of link compression after a first build.
#include <benchmark/benchmark.h>

#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include "index/kurvo_index.h"
#include "scratch_folder.h"

namespace {

// A first build's word links: 2,800 files of 1,300 words each, drawn from
// 200,000 words with a Zipf-like skew, as the compare corpus has them.
std::unique_ptr<CKurvoIndex> indexedRun(const ScratchFolder &folder) {
  std::filesystem::create_directories(folder.path() + "/a/b/c/store");
  auto index = std::make_unique<CKurvoIndex>(true, folder.path() + "/a/b/c/store/");
  index->ShowStatus = 0;
  index->emptyIndex();
  index->newFileLinks();
  std::vector<std::string> vocabulary;
  for (int i = 0; i < 200000; ++i) vocabulary.push_back("w" + std::to_string(i * 7919 % 200000));
  uint32_t x = 1;
  for (uint32_t file = 1; file <= 2800; ++file) {
    for (int i = 0; i < 1300; ++i) {
      x = x * 1103515245u + 12345u;
      const double u = static_cast<double>(x >> 8) / (1u << 24);
      index->indexWord(vocabulary[static_cast<size_t>(std::pow(200000.0, u)) - 1].c_str(), file * 40);
    }
  }
  return index;
}

void BM_CompressLinks(benchmark::State &state) {
  for (auto _ : state) {
    state.PauseTiming();
    ScratchFolder folder;
    auto index = indexedRun(folder);
    state.ResumeTiming();
    index->compressLinks();
    state.PauseTiming();
    index.reset();
    state.ResumeTiming();
  }
}
BENCHMARK(BM_CompressLinks)->Iterations(6)->Unit(benchmark::kMillisecond);

}  // namespace
