// An index's settings file: its folders, the last run, and its options.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "char_classes.h"

namespace kurvo_cli {

struct IncludeRule {
  std::string pattern;   // matched against the full path
  std::string analyzer;  // registered analyzer name
};

struct IndexOptions {
  int minWordLength = 3;
  int maxWordLength = 40;
  int maxFileRead = 8 * 1024 * 1024;  // bytes read from one file
  bool ranking = true;
  bool trackAll = true;
  int proximity = 8;                                // words after the first term for "a < b"
  std::string tempDir;                              // empty: "tmp" in the storage folder
  int converterTimeout = 120;                       // seconds, 0: none
  double converterMaxOutput = 256.0 * 1024 * 1024;  // bytes, 0: none
  int readAhead = 32;                               // files read ahead of the walk, 0: none
  std::vector<IncludeRule> include;
  std::vector<std::string> exclude;
  CharClasses chars;
};

struct RunSummary {
  unsigned folders = 0;
  unsigned files = 0;     // records added
  unsigned contents = 0;  // files whose words were read
  unsigned words = 0;     // new distinct words
  unsigned foreign = 0;   // files holding characters the index cannot hold
  double bytes = 0;
  double seconds = 0;
  std::string kind;  // "index" or "update"
};

struct Settings {
  std::vector<std::string> folders;
  int64_t timeBase = 0;    // Unix time the last completed run started
  int64_t finishedAt = 0;  // Unix time the last completed run ended
  RunSummary lastRun;
  IndexOptions options;
  // Bytes of "links" the lists took when last measured (a full build or a
  // compaction): an update measures again only when "links" has grown past
  // twice that, since only then can dead space pass the live lists.
  double linksLive = 0;
};

IndexOptions defaultOptions();
std::vector<IncludeRule> defaultIncludeRules();
std::vector<std::string> defaultExcludePatterns();

// Missing file: defaults. A file that cannot be parsed: HostError.
Settings loadSettings(const std::string &path);
void saveSettings(const std::string &path, const Settings &settings);

// The temporary folder actually used for an index in storeDir. Converted
// files are kept there under their file numbers, so by default it lies in the
// storage folder and is rebuilt and swapped in with it.
std::string temporaryFolder(const IndexOptions &options, const std::string &storeDir);

}  // namespace kurvo_cli
