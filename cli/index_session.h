// One open index: created or reopened on a storage folder and configured
// from the settings (word lengths, character classes, analyzers, patterns).
#pragma once

#include <string>
#include <vector>

#include "settings.h"

namespace kurvo_cli {

class IndexSession {
 public:
  // create: new empty tables; otherwise reopens the stored index.
  IndexSession(const std::string &storeDir, bool create);
  ~IndexSession();  // closes the index without storing it
  IndexSession(const IndexSession &) = delete;
  IndexSession &operator=(const IndexSession &) = delete;

  void *handle() const { return m_index; }
  const std::string &storeDir() const { return m_storeDir; }

  // Settings, masks, temporary folder, skip file, analyzers and patterns.
  // Include patterns whose analyzer this build lacks stay in place without
  // an analyzer (their files are listed without words); they are returned.
  std::vector<IncludeRule> configure(const IndexOptions &options, const std::string &skipFile, bool showStatus);

 private:
  void *m_index = nullptr;
  std::string m_storeDir;
};

}  // namespace kurvo_cli
