// Builds a new index state in a work folder beside the store and swaps it in
// only once it is stored, so a failed or interrupted run changes nothing.
#include "store_swap.h"

#include <fcntl.h>
#include <stdio.h>

#include <filesystem>
#include <system_error>

#include "host_error.h"

namespace fs = std::filesystem;

namespace kurvo_cli {

StoreSwap::StoreSwap(std::string storeDir) : m_storeDir(std::move(storeDir)) {
  while (m_storeDir.size() > 1 && m_storeDir.back() == '/') m_storeDir.pop_back();
  m_workDir = m_storeDir + ".new/";
}

StoreSwap::~StoreSwap() {
  if (m_committed) return;
  std::error_code ec;
  fs::remove_all(m_workDir, ec);
}

void StoreSwap::prepareEmpty() {
  std::error_code ec;
  fs::remove_all(m_workDir, ec);  // left over from a run that was killed
  fs::create_directories(m_workDir, ec);
  if (ec) throw HostError("the folder " + m_workDir + " cannot be created: " + ec.message());
}

void StoreSwap::prepareCopy() {
  prepareEmpty();
  std::error_code ec;
  for (const fs::directory_entry &entry : fs::directory_iterator(m_storeDir, ec)) {
    // The tables, and the folder of kept converter output and mailbox cache
    // files, which the viewer reads by file number.
    if (entry.is_directory()) {
      fs::copy(entry.path(), m_workDir + entry.path().filename().string(), fs::copy_options::recursive, ec);
    } else if (entry.is_regular_file()) {
      fs::copy_file(entry.path(), m_workDir + entry.path().filename().string(), ec);
    } else {
      continue;
    }
    if (ec) throw HostError("the index cannot be copied to " + m_workDir + ": " + ec.message());
  }
  if (ec) throw HostError("the index at " + m_storeDir + " cannot be read: " + ec.message());
}

void StoreSwap::commit() {
  std::string work = m_workDir.substr(0, m_workDir.size() - 1);
  std::error_code ec;
  if (!fs::exists(m_storeDir, ec)) {
    fs::create_directories(fs::path(m_storeDir).parent_path(), ec);
    if (::rename(work.c_str(), m_storeDir.c_str()) != 0) {
      throw HostError("the new index cannot be moved to " + m_storeDir);
    }
    m_committed = true;
    return;
  }
  // Exchange both folders in one step where the system allows it, so there
  // is never a moment without an index; otherwise move the old one aside.
  if (::renameat2(AT_FDCWD, work.c_str(), AT_FDCWD, m_storeDir.c_str(), RENAME_EXCHANGE) != 0) {
    std::string old = m_storeDir + ".old";
    fs::remove_all(old, ec);
    if (::rename(m_storeDir.c_str(), old.c_str()) != 0 || ::rename(work.c_str(), m_storeDir.c_str()) != 0) {
      throw HostError("the new index cannot be moved to " + m_storeDir);
    }
    fs::remove_all(old, ec);
  }
  // After the exchange the work folder's name holds the old index.
  fs::remove_all(work, ec);
  m_committed = true;
}

}  // namespace kurvo_cli
