// Time and peak memory of the PDF analyzer on streams that inflate to far more than the file holds.
#include <benchmark/benchmark.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <zlib.h>

#include <fstream>
#include <memory>
#include <string>

#include "analyzers/containers/pdf_text.h"
#include "analyzers/file_analyzer.h"
#include "index/kurvo_index.h"
#include "scratch_folder.h"

namespace {

// A zlib stream of a text block, `mebibytes` of blanks and another text block.
std::string deflatedBomb(uint64_t mebibytes) {
  z_stream zs{};
  deflateInit(&zs, 9);
  std::string out;
  char buffer[1 << 16];
  const std::string blanks(1 << 20, ' ');
  auto feed = [&](const std::string &data, int flush) {
    zs.next_in = reinterpret_cast<Bytef *>(const_cast<char *>(data.data()));
    zs.avail_in = static_cast<uInt>(data.size());
    do {
      zs.next_out = reinterpret_cast<Bytef *>(buffer);
      zs.avail_out = sizeof buffer;
      deflate(&zs, flush);
      out.append(buffer, sizeof buffer - zs.avail_out);
    } while (zs.avail_out == 0);
  };
  feed("BT\n(opening) Tj\nET\n", Z_NO_FLUSH);
  for (uint64_t i = 0; i < mebibytes; ++i) feed(blanks, Z_NO_FLUSH);
  feed("BT\n(closing) Tj\nET\n", Z_FINISH);
  deflateEnd(&zs);
  return out;
}

std::string pdfWithStreams(const std::string &stream, int count) {
  std::string pdf = "%PDF-1.4\n";
  for (int i = 0; i < count; ++i)
    pdf += "1 0 obj\n<</Filter/FlateDecode>>\nstream\n" + stream + "\nendstream\nendobj\n";
  return pdf + "%%EOF\n";
}

// Indexes the file in a child process and returns the child's peak resident
// size in MiB, so each case is measured from a fresh start.
double indexInChild(const ScratchFolder &folder, const std::string &path) {
  const pid_t pid = fork();
  if (pid == 0) {
    CKurvoIndex index(true, folder.storage());
    for (int c = 'a'; c <= 'z'; ++c) index.setValidCharMask(c, 1);
    index.MaxPerFileRead = 1 << 20;
    index.newFileLinks();
    index.createAnalyzers();
    index.analyzerNamed("pdf")->indexFile(path.c_str(), index.files->addFile("bomb.pdf"));
    _exit(0);
  }
  int status = 0;
  struct rusage usage {};
  wait4(pid, &status, 0, &usage);
  return static_cast<double>(usage.ru_maxrss) / 1024.0;
}

// range(0): MiB each stream inflates to; range(1): streams in the file.
void BM_PdfInflationBomb(benchmark::State &state) {
  ScratchFolder folder;
  const std::string path = folder.file("bomb.pdf");
  const std::string pdf =
      pdfWithStreams(deflatedBomb(static_cast<uint64_t>(state.range(0))), static_cast<int>(state.range(1)));
  std::ofstream(path, std::ios::binary) << pdf;
  double peak = 0;
  for (auto _ : state) peak = indexInChild(folder, path);
  state.counters["file_KiB"] = static_cast<double>(pdf.size()) / 1024.0;
  state.counters["inflates_MiB"] = static_cast<double>(state.range(0) * state.range(1));
  state.counters["peak_rss_MiB"] = peak;
}
BENCHMARK(BM_PdfInflationBomb)
    ->Args({10, 1})
    ->Args({1024, 1})
    ->Args({10, 600})
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

// Text extraction alone, over page descriptions like pdflatex's (TJ arrays
// with kerning, Td moves) and over blanks outside any text block.
void BM_ClearText(benchmark::State &state) {
  std::string input;
  const char *line = "0 -11.955 Td [(harv)28(ested)-334(pumpkins)-333(in)-333(Octob)-28(er.)]TJ\n";
  if (state.range(0) == 0) {
    input = "BT\n";
    while (input.size() < (8u << 20)) input += line;
    input += "ET\n";
  } else {
    input.assign(8u << 20, ' ');
  }
  input.push_back('\0');
  std::string output(input.size(), '\0');
  const uint32_t length = static_cast<uint32_t>(input.size() - 1);
  for (auto _ : state) {
    benchmark::DoNotOptimize(clearText(input.data(), length, &output[0], length + 1, 10000));
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * length);
}
BENCHMARK(BM_ClearText)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

}  // namespace
