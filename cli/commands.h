// The subcommands of kurvo and the options they share.
#pragma once

#include <string>
#include <vector>

#include "settings.h"

namespace kurvo_cli {

struct GlobalOptions {
  std::string index = "default";
  std::string store;
  bool quiet = false;
  bool verbose = false;
  bool noWait = false;  // fail at once when another run writes the index
};

// Options of `kurvo index` that change the index's settings when given.
struct IndexCommandOptions {
  std::vector<std::string> folders;
  bool add = false;
  std::vector<std::string> forget;  // top folders to drop (a rebuild without them)
  int minWordLength = -1;
  int maxWordLength = -1;
  int maxFileRead = -1;
  int ranking = -1;  // -1: keep, 0 off, 1 on
  int trackAll = -1;
  std::string tempDir;
  int converterTimeout = -1;         // seconds; -1: keep
  double converterMaxOutput = -1;    // bytes; -1: keep
  int readAhead = -1;                // files; -1: keep
  std::vector<std::string> include;  // PATTERN or PATTERN=ANALYZER
  std::vector<std::string> exclude;
  bool defaultPatterns = false;  // forget custom patterns
  std::string wordChars;         // extra word characters
};

struct SearchOptions {
  std::string query;
  bool outline = false;
  bool json = false;
  int limit = 0;  // 0: all
};

struct ShowOptions {
  std::string path;
  std::string query;
  bool outline = false;
};

int runIndex(const GlobalOptions &global, const IndexCommandOptions &options);
int runUpdate(const GlobalOptions &global);
int runSearch(const GlobalOptions &global, const SearchOptions &options);
int runShow(const GlobalOptions &global, const ShowOptions &options);
int runWords(const GlobalOptions &global, const std::string &pattern, bool json);
int runStats(const GlobalOptions &global, bool json);
// Rewrites the word lists without dead space; the answers stay the same.
int runCompact(const GlobalOptions &global);
// Checks every storage file; damage gives status 2.
int runCheck(const GlobalOptions &global);

// The query language explained, for `kurvo help search`.
const char *queryLanguageHelp();
const char *convertersHelp();

}  // namespace kurvo_cli
