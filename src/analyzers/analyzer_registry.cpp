// CKurvoIndex analyzer registry: one analyzer object of each kind, by name.
#include "analyzers/file_analyzer.h"
#include "index/kurvo_index.h"

void CKurvoIndex::createAnalyzers() {
  clearAnalyzers();
  // Built-in analyzers.
  analyzers["generic"] = new CFileAnalyzer(this);
  // External converters from "externanalyzers.txt" are registered here,
  // after the built-ins, so that one of them can take a built-in's name.
}

void CKurvoIndex::clearAnalyzers() {
  for (auto &entry : analyzers) delete entry.second;
  analyzers.clear();
}

CFileAnalyzer *CKurvoIndex::analyzerNamed(const std::string &name) const {
  auto it = analyzers.find(name);
  return it == analyzers.end() ? nullptr : it->second;
}
