// `kurvo show`: the display text of one indexed file, hits highlighted.
#include <algorithm>
#include <filesystem>
#include <iostream>

#include "commands.h"
#include "contents_view.h"
#include "host_error.h"
#include "output.h"
#include "query_support.h"
#include "reading_session.h"

namespace fs = std::filesystem;

namespace kurvo_cli {

namespace {

// The path as the index spells it: absolute, and for archive members the
// container's path followed by "::member" parts as given.
std::string indexedPath(const std::string &given) {
  size_t members = given.find("::");
  std::string outer = given.substr(0, members);
  std::error_code ec;
  fs::path p = fs::canonical(outer, ec);
  if (ec) p = fs::absolute(outer).lexically_normal();
  return p.string() + (members == std::string::npos ? "" : given.substr(members));
}

// An archive has no text of its own: a gzip file's one member is shown in
// its place, and an archive of several names them.
uint32_t recordToShow(ReadingSession &rs, uint32_t record, const std::string &path, bool quiet) {
  std::vector<std::string> members;
  uint32_t only = 0;
  for (const auto &[number, r] : rs.reader->records()) {
    if (r.parent != record || r.deleted || !rs.reader->isLiveFile(number)) continue;
    members.emplace_back(rs.reader->filePath(number));
    only = number;
  }
  if (members.empty()) return record;
  if (members.size() == 1) {
    if (!quiet) std::cerr << "kurvo: note: showing " << members.front() << ", the file inside " << path << "\n";
    return only;
  }
  std::sort(members.begin(), members.end());
  std::string list;
  for (size_t i = 0; i < members.size() && i < 10; ++i) list += "\n  " + members[i];
  if (members.size() > 10) list += "\n  ... (" + std::to_string(members.size() - 10) + " more)";
  throw HostError(path + " is an archive; show one of its members:" + list);
}

}  // namespace

int runShow(const GlobalOptions &global, const ShowOptions &options) {
  if (options.outline && options.query.empty()) throw HostError("--outline needs a query to find the lines");
  ReadingSession rs = openForReading(global);
  const IndexOptions &o = rs.settings.options;
  std::string path = indexedPath(options.path);
  uint32_t record = rs.reader->findFile(path);
  if (record == 0) throw HostError(path + " is not in the index");
  record = recordToShow(rs, record, path, global.quiet);

  std::string viewerText;
  if (!options.query.empty()) {
    QueryNode query = parseUserQuery(options.query, o, global.quiet);
    noteUnsearchableTerms(query, rs, global.quiet);
    viewerText = viewerQuery(query);
  }
  ContentsView view(rs.index(), record, static_cast<unsigned>(o.maxFileRead), o.proximity);
  if (options.outline) view.reduceToOutline(viewerText);
  std::vector<std::pair<size_t, size_t>> hits;
  if (!viewerText.empty()) hits = view.hits(viewerText);
  writeHighlighted(std::cout, view.text(), hits, colourOutput());
  if (!viewerText.empty() && hits.empty()) return kExitNothing;
  return kExitFound;
}

}  // namespace kurvo_cli
