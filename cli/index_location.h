// Where an index lives: the kurvo home, the storage folder and its settings.
#pragma once

#include <string>

namespace kurvo_cli {

struct IndexLocation {
  std::string home;          // kurvo home, holds skipfile.txt and externanalyzers.txt
  std::string storeDir;      // storage folder, ends in "/"
  std::string settingsPath;  // the index's settings file, beside the store
  std::string name;          // index name, or the storage folder for --store
};

// $KURVO_HOME (default ~/.kurvo) made absolute; created on demand.
std::string kurvoHome();

// A named index lives at HOME/indexes/NAME/store/; storeOption (when not
// empty) names a storage folder directly. Throws HostError on bad names.
IndexLocation locateIndex(const std::string &name, const std::string &storeOption);

// Creates the home folder and an empty skip-word file if they are missing.
void prepareHome(const IndexLocation &location);

// True when the storage folder holds a stored index.
bool indexExists(const IndexLocation &location);

}  // namespace kurvo_cli
