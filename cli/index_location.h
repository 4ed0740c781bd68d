// Where an index lives: the kurvo home, the storage folder and its settings.
#pragma once

#include <string>

namespace kurvo_cli {

struct IndexLocation {
  std::string home;      // kurvo home, holds skipfile.txt and externanalyzers.txt
  std::string storeDir;  // storage folder, ends in "/"
  // The index's settings live inside the store, so that both are replaced
  // together; indexes made before that keep them beside the store.
  std::string settingsPath;
  std::string legacySettingsPath;
  std::string lockPath;  // held by the one run that writes the index
  std::string name;      // index name, or the storage folder for --store
};

// The settings file to read: the one in the store, else the older one.
std::string settingsToRead(const IndexLocation &location);

// $KURVO_HOME (default ~/.kurvo) made absolute; created on demand.
std::string kurvoHome();

// A named index lives at HOME/indexes/NAME/store/; storeOption (when not
// empty) names a storage folder directly. Throws HostError on bad names.
IndexLocation locateIndex(const std::string &name, const std::string &storeOption);

// Creates the home folder and an empty skip-word file if they are missing.
void prepareHome(const IndexLocation &location);

// True when the storage folder holds a stored index.
bool indexExists(const IndexLocation &location);

// Bytes of a file in a storage folder (ending in "/"); 0 when it is missing.
double storeFileBytes(const std::string &storeDir, const char *name);

}  // namespace kurvo_cli
