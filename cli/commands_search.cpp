// `kurvo search`: the files matching a query, best first.
#include <iostream>

#include <nlohmann/json.hpp>

#include "commands.h"
#include "contents_view.h"
#include "host_error.h"
#include "index_term_source.h"
#include "json_values.h"
#include "kurvo.h"
#include "library_callbacks.h"
#include "output.h"
#include "query_eval.h"
#include "query_support.h"
#include "reading_session.h"
#include "terminal_text.h"

using nlohmann::json;

namespace kurvo_cli {

namespace {

std::string outlineOf(ReadingSession &rs, uint32_t record, const std::string &viewerText,
                      std::vector<std::pair<size_t, size_t>> &hits) {
  const IndexOptions &o = rs.settings.options;
  ContentsView view(rs.index(), record, static_cast<unsigned>(o.maxFileRead), o.proximity);
  view.reduceToOutline(viewerText);
  hits = view.hits(viewerText);
  return view.text();
}

// One path a line, written in large pieces: a common word can have many
// thousands of files.
void printPaths(const std::vector<RankedFile> &results) {
  std::string out;
  out.reserve(1 << 16);
  for (const RankedFile &r : results) {
    out.append(r.path).push_back('\n');
    if (out.size() >= (1 << 16) - 4096) {
      std::cout.write(out.data(), static_cast<std::streamsize>(out.size()));
      out.clear();
    }
  }
  std::cout.write(out.data(), static_cast<std::streamsize>(out.size()));
}

std::vector<std::string> splitLines(const std::string &text) {
  std::vector<std::string> lines;
  size_t start = 0;
  while (start < text.size()) {
    size_t end = text.find('\n', start);
    if (end == std::string::npos) end = text.size();
    lines.push_back(text.substr(start, end - start));
    start = end + 1;
  }
  return lines;
}

}  // namespace

int runSearch(const GlobalOptions &global, const SearchOptions &options) {
  ReadingSession rs = openForReading(global);
  const IndexOptions &o = rs.settings.options;
  QueryNode query = parseUserQuery(options.query, o, global.quiet);
  noteUnsearchableTerms(query, rs, global.quiet);

  IndexTermSource source(*rs.reader, wordCharactersOf(o), o.ranking, static_cast<unsigned>(o.maxFileRead), o.proximity);
  ScoredFiles scored = evaluateQuery(query, source);
  std::vector<RankedFile> results;
  results.reserve(scored.size());
  for (const auto &[file, score] : scored) results.push_back({file, score, rs.reader->checkedPath(file)});
  rankResults(results);
  size_t total = results.size();
  if (options.limit > 0 && results.size() > static_cast<size_t>(options.limit)) results.resize(options.limit);

  if (!options.json && !options.outline) {
    printPaths(results);
    return total > 0 ? kExitFound : kExitNothing;
  }
  std::string viewerText = viewerQuery(query);
  bool colour = colourOutput();
  json jsonResults = json::array();
  for (const RankedFile &r : results) {
    const FileRecord &record = *rs.reader->record(r.file);
    std::string outline;
    std::vector<std::pair<size_t, size_t>> hits;
    std::string outlineError;
    if (options.outline) {
      try {
        outline = outlineOf(rs, r.file, viewerText, hits);
      } catch (const HostError &e) {
        outlineError = e.what();
      }
    }
    if (options.json) {
      json item = {{"score", r.score}, {"size", record.size}, {"modified", isoTime(unixFromMac(record.macTime))}};
      putPath(item, "path", std::string(r.path));
      if (options.outline) item["lines"] = splitLines(asUtf8(outline));
      if (!outlineError.empty()) item["error"] = outlineError;
      jsonResults.push_back(item);
      continue;
    }
    std::cout << r.path << "\n";
    if (!outlineError.empty())
      std::cout << "    (" << outlineError << ")\n";
    else if (options.outline)
      writeHighlighted(std::cout, outline, hits, colour, "    ");
  }
  if (options.json) {
    json doc = {{"query", options.query}, {"total", total}, {"results", jsonResults}};
    std::cout << dumpJson(doc, 2) << "\n";
  }
  return total > 0 ? kExitFound : kExitNothing;
}

}  // namespace kurvo_cli
