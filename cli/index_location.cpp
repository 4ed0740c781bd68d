// Where an index lives: the kurvo home, the storage folder and its settings.
#include "index_location.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "host_error.h"

namespace fs = std::filesystem;

namespace kurvo_cli {

namespace {

// Absolute and without "." or ".." so that the library's comparisons of
// folder paths (which folder to skip) see the same text the walk builds.
std::string absoluteFolder(const std::string &path) {
  std::error_code ec;
  fs::path p = fs::weakly_canonical(fs::absolute(path), ec);
  if (ec) p = fs::absolute(path).lexically_normal();
  std::string text = p.string();
  while (text.size() > 1 && text.back() == '/') text.pop_back();
  return text;
}

size_t countSlashes(const std::string &text) {
  size_t n = 0;
  for (char c : text) n += c == '/';
  return n;
}

}  // namespace

std::string kurvoHome() {
  const char *env = std::getenv("KURVO_HOME");
  if (env && *env) return absoluteFolder(env);
  const char *home = std::getenv("HOME");
  if (!home || !*home) throw HostError("neither KURVO_HOME nor HOME is set");
  return absoluteFolder(std::string(home) + "/.kurvo");
}

IndexLocation locateIndex(const std::string &name, const std::string &storeOption) {
  IndexLocation loc;
  loc.home = kurvoHome();
  // The settings of old versions and the lock sit beside the storage folder
  // ("<dir>.lock") or in the named index's own folder ("<dir>/lock").
  std::string beside;
  if (!storeOption.empty()) {
    const std::string dir = absoluteFolder(storeOption);
    // The library finds its skip folder three levels above the storage
    // folder, so the path needs that many levels.
    if (countSlashes(dir) < 3) {
      throw HostError("the storage folder " + dir + " must lie at least three folders deep (like /a/b/c/store)");
    }
    loc.storeDir = dir + "/";
    loc.name = dir;
    beside = dir + ".";
  } else {
    if (name.empty() || name.find('/') != std::string::npos || name == "." || name == "..") {
      throw HostError("the index name \"" + name + "\" is not valid (use letters, digits, '-' or '_')");
    }
    const std::string dir = loc.home + "/indexes/" + name;
    loc.storeDir = dir + "/store/";
    loc.name = name;
    beside = dir + "/";
  }
  loc.settingsPath = loc.storeDir + "settings.json";
  loc.legacySettingsPath = beside + "settings.json";
  loc.lockPath = beside + "lock";
  return loc;
}

void prepareHome(const IndexLocation &location) {
  std::error_code ec;
  fs::create_directories(location.home, ec);
  if (ec) throw HostError("the kurvo home " + location.home + " cannot be created: " + ec.message());
  // Homes made by older versions were open to every user.
  fs::permissions(location.home, fs::perms::owner_all, fs::perm_options::replace, ec);
  std::string skip = location.home + "/skipfile.txt";
  if (!fs::exists(skip, ec)) {
    std::ofstream out(skip);
    if (!out) throw HostError("the skip-word file " + skip + " cannot be created");
  }
}

std::string settingsToRead(const IndexLocation &location) {
  std::error_code ec;
  return fs::exists(location.settingsPath, ec) ? location.settingsPath : location.legacySettingsPath;
}

bool indexExists(const IndexLocation &location) {
  std::error_code ec;
  return fs::exists(location.storeDir + "hash", ec);
}

double storeFileBytes(const std::string &storeDir, const char *name) {
  std::error_code ec;
  const auto size = std::filesystem::file_size(storeDir + name, ec);
  return ec ? 0 : static_cast<double>(size);
}

}  // namespace kurvo_cli
