// Speed of the plain-text analyzer: indexing a file and making its display text.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <fstream>
#include <memory>
#include <string>

#include "analyzers/file_analyzer.h"
#include "index/kurvo_index.h"
#include "scratch_folder.h"

namespace {

// An index with letters as word characters and a text file of `bytes` bytes
// of words drawn from a vocabulary of a few thousand.
class AnalyzerSetup {
 public:
  explicit AnalyzerSetup(size_t bytes) {
    m_index = std::make_unique<CKurvoIndex>(true, m_folder.storage());
    for (int c = 0; c < 256; ++c) {
      const bool letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
      m_index->setValidCharMask(c, letter);
      m_index->setValidViewableMask(c, c >= ' ' && c < 127);
    }
    m_index->MaxPerFileRead = 1 << 30;
    m_index->newFileLinks();
    m_analyzer = std::make_unique<CFileAnalyzer>(m_index.get());
    m_file = m_index->files->addFile("text.txt");
    m_path = m_folder.file("text.txt");
    std::ofstream out(m_path, std::ios::binary);
    uint32_t x = 2463534242u;
    for (size_t written = 0; written < bytes;) {
      x ^= x << 13;
      x ^= x >> 17;
      x ^= x << 5;
      std::string word = "w" + std::to_string(x % 5000);
      for (char &ch : word)
        if (ch >= '0' && ch <= '9') ch = static_cast<char>('a' + (ch - '0'));
      word += (x % 12 == 0) ? "\n" : " ";
      out << word;
      written += word.size();
    }
  }

  CFileAnalyzer &analyzer() { return *m_analyzer; }
  const char *path() const { return m_path.c_str(); }
  uint32_t file() const { return m_file; }

 private:
  ScratchFolder m_folder;  // outlives the index, which maps files in it
  std::unique_ptr<CKurvoIndex> m_index;
  std::unique_ptr<CFileAnalyzer> m_analyzer;
  std::string m_path;
  uint32_t m_file = 0;
};

void BM_IndexFile(benchmark::State &state) {
  AnalyzerSetup setup(static_cast<size_t>(state.range(0)));
  for (auto _ : state) benchmark::DoNotOptimize(setup.analyzer().indexFile(setup.path(), setup.file()));
  state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_IndexFile)->Arg(64 << 10)->Arg(4 << 20);

void BM_FillDisplayBuffer(benchmark::State &state) {
  AnalyzerSetup setup(static_cast<size_t>(state.range(0)));
  for (auto _ : state) {
    char *text = setup.analyzer().fillDisplayBuffer(setup.path(), setup.file(), 1u << 30, 80, true);
    benchmark::DoNotOptimize(text);
    std::free(text);
  }
  state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_FillDisplayBuffer)->Arg(64 << 10)->Arg(4 << 20);

}  // namespace
