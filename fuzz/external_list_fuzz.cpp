// Fuzzes the reading of a converter list and the building of each entry's command.
#include <cstdlib>
#include <string>

#include "analyzers/external_analyzer.h"
#include "analyzers/external_analyzer_list.h"
#include "index/kurvo_index.h"

namespace {

CKurvoIndex &fuzzIndex() {
  static CKurvoIndex *index = [] {
    std::system("mkdir -p /tmp/kurvo-fuzz-list/a/b/c");
    return new CKurvoIndex(true, "/tmp/kurvo-fuzz-list/a/b/c/");
  }();
  return *index;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, size_t size) {
  CKurvoIndex &index = fuzzIndex();
  const char *text = reinterpret_cast<const char *>(data);
  for (ExternalAnalyzerEntry &entry : parseExternalAnalyzerList(text, size)) {
    CExternalAnalyzer analyzer(&index, entry.extension.c_str(), entry.command.data());
    char tempPath[1024];
    analyzer.makeTemporaryPath(entry.name.c_str(), tempPath, size);
    if (analyzer.isUsable()) analyzer.buildCommand(entry.name.c_str(), tempPath);
  }
  return 0;
}
