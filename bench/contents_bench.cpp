// Speed of the viewer's hit search: counting hits, proximity queries and outlines.
#include <benchmark/benchmark.h>

#include <stdlib.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "analyzers/file_analyzer.h"
#include "contents/file_contents.h"
#include "index/kurvo_index.h"
#include "scratch_folder.h"
#include "storage/file_storage.h"

namespace {

namespace fs = std::filesystem;

// Hands the viewer a prepared text instead of reading a file.
class PreparedText : public CFileAnalyzer {
 public:
  PreparedText(CKurvoIndex *index, const std::string &text) : CFileAnalyzer(index), m_text(text) {}
  char *fillDisplayBuffer(const char *, unsigned long, unsigned long, int, bool) override {
    char *block = static_cast<char *>(std::malloc(m_text.size() + 1));
    std::memcpy(block, m_text.c_str(), m_text.size() + 1);
    return block;
  }

 private:
  std::string m_text;
};

// An index in a scratch storage folder with one file record whose display
// text is `lines` lines of ten words, one line in `hitEvery` holding "needle".
class ViewerSetup {
 public:
  ViewerSetup(int lines, int hitEvery) {
    std::string storage = m_folder.storage();
    m_index = std::make_unique<CKurvoIndex>(true, storage);
    for (int c = 'a'; c <= 'z'; ++c) {
      m_index->setValidCharMask(c, true);
      m_index->setValidTrailingMask(c, true);
    }
    std::string text;
    for (int line = 0; line < lines; ++line) {
      text += line % hitEvery == 0 ? "alpha needle" : "alpha beta";
      text += " gamma delta epsilon zeta eta theta iota kappa\n";
    }
    m_index->analyzers["generic"] = new PreparedText(m_index.get(), text);
    uint32_t folder = m_index->files->addFile((m_folder.path() + "/docs").c_str());
    m_file = m_index->files->addFile("f.txt");
    file_record::setParent(m_index->files->getData(m_file), folder);
    fs::create_directories(m_folder.path() + "/docs");
    std::ofstream(m_folder.path() + "/docs/f.txt") << "x";
  }

  std::unique_ptr<CFileContents> open() const {
    return std::make_unique<CFileContents>(m_index.get(), m_file, 1u << 30, 0, false, 5);
  }

 private:
  ScratchFolder m_folder;  // outlives the index, which maps files in it
  std::unique_ptr<CKurvoIndex> m_index;
  uint32_t m_file = 0;
};

void BM_CountHits(benchmark::State &state) {
  ViewerSetup setup(static_cast<int>(state.range(0)), 10);
  auto viewer = setup.open();
  for (auto _ : state) {
    uint32_t offset = 0, hits = 0;
    while (uint32_t at = viewer->searchBuffer(offset, "needle")) {
      offset = at - 1 + viewer->tokenLength(at - 1);
      ++hits;
    }
    benchmark::DoNotOptimize(hits);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0) * 10);
}
BENCHMARK(BM_CountHits)->Arg(1000)->Arg(10000);

// Every line starts a proximity test that fails, so the whole text is searched.
void BM_ProximityQuery(benchmark::State &state) {
  ViewerSetup setup(static_cast<int>(state.range(0)), 10);
  auto viewer = setup.open();
  for (auto _ : state) benchmark::DoNotOptimize(viewer->containsHit("alpha <2 zzz"));
  state.SetItemsProcessed(state.iterations() * state.range(0) * 10);
}
BENCHMARK(BM_ProximityQuery)->Arg(1000)->Arg(10000);

void BM_Outline(benchmark::State &state) {
  ViewerSetup setup(static_cast<int>(state.range(0)), 10);
  for (auto _ : state) {
    state.PauseTiming();
    auto viewer = setup.open();
    state.ResumeTiming();
    viewer->convertToOutline("needle");
    benchmark::DoNotOptimize(viewer->contents());
  }
  state.SetItemsProcessed(state.iterations() * state.range(0) * 10);
}
BENCHMARK(BM_Outline)->Arg(1000)->Arg(10000);

}  // namespace
