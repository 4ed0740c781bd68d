// CKurvoIndex analyzer registry: one analyzer object of each kind, by name, and the converters the list declares.
#include <cstdio>
#include <memory>

#include "analyzers/charset_analyzers.h"
#include "analyzers/containers/gzip_analyzer.h"
#include "analyzers/containers/mbox_analyzer.h"
#include "analyzers/containers/pdf_analyzer.h"
#include "analyzers/containers/tar_analyzer.h"
#include "analyzers/containers/zip_analyzer.h"
#include "analyzers/auto_analyzer.h"
#include "analyzers/external_analyzer.h"
#include "analyzers/external_analyzer_list.h"
#include "analyzers/file_analyzer.h"
#include "analyzers/html_analyzer.h"
#include "analyzers/rtf_analyzer.h"
#include "analyzers/utf8_analyzer.h"
#include "index/kurvo_index.h"
#include "report/message_keys.h"
#include "report/reporting.h"

namespace {

// A converter list of this many bytes or more is refused whole.
constexpr unsigned long kMaxListSize = 65535;

}  // namespace

void CKurvoIndex::createAnalyzers() {
  clearAnalyzers();
  // Built-in analyzers.
  analyzers["generic"] = new CFileAnalyzer(this);
  analyzers["macroman"] = new CMacRomanAnalyzer(this);
  analyzers["dosoem"] = new CDosOemAnalyzer(this);
  analyzers["html"] = new CHtmlAnalyzer(this);
  analyzers["rtf"] = new CRtfAnalyzer(this);
  analyzers["zip"] = new CZipAnalyzer(this);
  analyzers["tar"] = new CTarAnalyzer(this);
  analyzers["gzip"] = new CGZipAnalyzer(this);
  analyzers["mbox"] = new CMBoxAnalyzer(this);
  analyzers["pdf"] = new CPdfAnalyzer(this);
  // Beyond the classic set: UTF-8 text, and a choice by content for names
  // no pattern knows.
  analyzers["utf8"] = new CUtf8Analyzer(this);
  analyzers["auto"] = new CAutoAnalyzer(this);
  // After the built-ins, so that a converter can take a built-in's name.
  readExternalAnalyzers();
}

void CKurvoIndex::clearAnalyzers() {
  for (auto &entry : analyzers) delete entry.second;
  analyzers.clear();
}

CFileAnalyzer *CKurvoIndex::analyzerNamed(const std::string &name) const {
  auto it = analyzers.find(name);
  return it == analyzers.end() ? nullptr : it->second;
}

void CKurvoIndex::readExternalAnalyzers() {
  const std::string path = configurationFolder() + "externanalyzers.txt";
  FILE *file = std::fopen(path.c_str(), "rb");
  if (!file) return;
  std::unique_ptr<char[]> buffer(new char[kMaxListSize]);
  const unsigned long length = std::fread(buffer.get(), 1, kMaxListSize, file);
  std::fclose(file);
  if (length == kMaxListSize) throwKurvoError(kurvo_keys::kExternalAnalyzersFileTooBig, path);

  for (ExternalAnalyzerEntry &entry : parseExternalAnalyzerList(buffer.get(), length)) {
    // An entry that cannot run is left out when read, and the host is told
    // which; the rest of the list still counts.
    if (!hasBothPlaceholdersOnce(entry.command)) {
      setStatus(kurvo_keys::kExternalAnalyzerRejected, entry.name);
      continue;
    }
    CFileAnalyzer *&slot = analyzers[entry.name];
    delete slot;
    slot = new CExternalAnalyzer(this, entry.extension.c_str(), entry.command.data());
  }
}
