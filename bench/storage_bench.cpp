// Speed of the word table (add and lookup) and of file-table lookups.
#include <benchmark/benchmark.h>

#include <stdlib.h>

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "scratch_folder.h"
#include "storage/file_storage.h"
#include "storage/text_storage.h"

namespace {

namespace fs = std::filesystem;

// Words shaped roughly like real text: mixed length, some capitals.
std::vector<std::string> makeWords(size_t count) {
  std::vector<std::string> words;
  words.reserve(count);
  uint32_t x = 12345;
  for (size_t i = 0; i < count; ++i) {
    x = x * 1103515245u + 12345u;
    std::string w = (i % 7 == 0 ? "Word" : "word") + std::to_string(i);
    w.append(static_cast<size_t>((x >> 16) % 6), static_cast<char>('a' + (x >> 8) % 26));
    words.push_back(std::move(w));
  }
  return words;
}

std::unique_ptr<CTextStorage> makeWordTable(const std::string &path) {
  return std::make_unique<CTextStorage>(path, 131071, 1048575, 16, 40000);
}

// The indexer's pattern: look each word up and add it when new; every word
// is met twice, so half the lookups hit.
void BM_TextStorageAddText(benchmark::State &state) {
  const auto words = makeWords(static_cast<size_t>(state.range(0)));
  ScratchFolder folder;
  for (auto _ : state) {
    auto table = makeWordTable(folder.file("words"));
    for (int pass = 0; pass < 2; ++pass)
      for (const std::string &w : words)
        if (!table->lookup(w.c_str())) table->addText(w.c_str());
    benchmark::DoNotOptimize(table->getEntryCount());
  }
  state.SetItemsProcessed(state.iterations() * state.range(0) * 2);
}
BENCHMARK(BM_TextStorageAddText)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

void BM_TextStorageLookup(benchmark::State &state) {
  const auto words = makeWords(static_cast<size_t>(state.range(0)));
  ScratchFolder folder;
  auto table = makeWordTable(folder.file("words"));
  for (const std::string &w : words) table->addText(w.c_str());
  size_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(table->lookup(words[i].c_str()));
    if (++i == words.size()) i = 0;
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_TextStorageLookup)->Arg(10000)->Arg(100000)->Arg(500000);

// File lookups by name and parent; the file table never rehashes, so its
// 1000 chains grow with the number of records.
void BM_FileStorageLookupFile(benchmark::State &state) {
  const int count = static_cast<int>(state.range(0));
  ScratchFolder folder;
  CFileStorage files(folder.file("files"), 1000);
  std::vector<uint32_t> parents;
  for (int f = 0; f < 50; ++f) {
    std::string name = "/data/folder" + std::to_string(f);
    uint32_t n = files.addFile(name.c_str());
    file_record::setParent(files.getData(n), 0);
    parents.push_back(n);
  }
  std::vector<std::pair<std::string, uint32_t>> names;
  for (int i = 0; i < count; ++i) {
    std::string name = "document" + std::to_string(i) + ".txt";
    uint32_t parent = parents[static_cast<size_t>(i) % parents.size()];
    uint32_t n = files.addFile(name.c_str());
    file_record::setParent(files.getData(n), parent);
    names.emplace_back(std::move(name), parent);
  }
  size_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(files.lookupFile(names[i].first.c_str(), names[i].second));
    if (++i == names.size()) i = 0;
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_FileStorageLookupFile)->Arg(1000)->Arg(10000)->Arg(50000);

}  // namespace
