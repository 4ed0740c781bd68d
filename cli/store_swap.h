// Builds a new index state in a work folder beside the store and swaps it in
// only once it is stored, so a failed or interrupted run changes nothing.
#pragma once

#include <string>

namespace kurvo_cli {

class StoreSwap {
 public:
  // storeDir ends in "/". The work folder is the store's sibling "*.new/".
  explicit StoreSwap(std::string storeDir);
  ~StoreSwap();  // removes the work folder unless committed
  StoreSwap(const StoreSwap &) = delete;
  StoreSwap &operator=(const StoreSwap &) = delete;

  // An empty work folder, for a full build.
  void prepareEmpty();
  // A copy of the current store, for an update.
  void prepareCopy();
  // The work folder, ending in "/".
  const std::string &workDir() const { return m_workDir; }
  // Replaces the store with the work folder.
  void commit();

 private:
  std::string m_storeDir;  // without the trailing "/"
  std::string m_workDir;
  bool m_committed = false;
};

}  // namespace kurvo_cli
