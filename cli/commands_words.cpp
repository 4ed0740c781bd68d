// `kurvo words`: index words matching a pattern, with their file counts.
#include <algorithm>
#include <iostream>
#include <set>

#include <nlohmann/json.hpp>

#include "commands.h"
#include "host_error.h"
#include "output.h"
#include "query_parser.h"
#include "reading_session.h"
#include "terminal_text.h"

using nlohmann::json;

namespace kurvo_cli {

int runWords(const GlobalOptions &global, const std::string &pattern, bool asJson) {
  if (pattern.empty()) throw HostError("name a word or pattern, such as: kurvo words 'index*'");
  ReadingSession rs = openForReading(global);
  std::vector<std::pair<std::string, size_t>> rows;
  for (const auto &[entry, text] : rs.reader->matchingWords(foldCase(fromTerminal(pattern, nullptr)))) {
    std::set<uint32_t> files;
    for (const WordFile &wf : rs.reader->filesOfWord(entry)) {
      if (rs.reader->isLiveFile(wf.file)) files.insert(wf.file);
    }
    if (!files.empty()) rows.emplace_back(text, files.size());
  }
  std::sort(rows.begin(), rows.end());
  if (asJson) {
    json list = json::array();
    for (const auto &[word, count] : rows) list.push_back({{"word", asUtf8(word)}, {"files", count}});
    std::cout << dumpJson(list, 2) << "\n";
  } else {
    for (const auto &[word, count] : rows) std::cout << forTerminal(word) << "\t" << count << "\n";
  }
  return rows.empty() ? kExitNothing : kExitFound;
}

}  // namespace kurvo_cli
