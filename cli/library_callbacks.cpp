// The host's callbacks: errors and warnings are recorded, statuses drive the
// progress line, and Ctrl-C turns the next status answer into "stop".
#include "library_callbacks.h"

#include <sys/statvfs.h>
#include <unistd.h>

#include <csignal>
#include <cstring>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "host_error.h"
#include "kurvo.h"
#include "messages.h"
#include "output.h"

namespace kurvo_cli {

namespace {

std::vector<LibraryMessage> g_errors;
std::vector<LibraryMessage> g_warnings;
std::vector<LibraryMessage> g_notices;
StatusListener g_listener;
std::string g_storageFolder;
std::vector<std::string> g_skipped;
volatile std::sig_atomic_t g_interrupted = 0;
// Test hook: KURVO_HALT_AFTER=N answers "stop" from the N-th library status on.
long g_haltAfter = 0;
long g_statusCount = 0;

void onError(const char *key, const char *argument) { g_errors.push_back({key ? key : "", argument ? argument : ""}); }

void onWarning(const char *key, const char *argument) {
  g_warnings.push_back({key ? key : "", argument ? argument : ""});
}

// Statuses that the user must see whether or not progress is shown.
bool isNotice(const char *key) {
  for (const char *notice : {"ExternalAnalyzerRejected", "ArchiveTooDeep", "ArchiveTooLarge", "PdfTooLarge"})
    if (std::strcmp(key, notice) == 0) return true;
  return false;
}

// Called for every status, in a small update once for each word: it
// allocates nothing unless it keeps what it is told.
int onStatus(const char *key, const char *argument, int fromLibrary) {
  if (fromLibrary) ++g_statusCount;
  if (!key) key = "";
  if (!argument) argument = "";
  if (std::strcmp(key, "FileSkipped") == 0) {
    g_skipped.push_back(argument);
    return 1;
  }
  if (isNotice(key)) {
    g_notices.push_back({key, argument});
    return 1;
  }
  if (g_listener) g_listener(key, argument);
  return haltRequested() ? 0 : 1;
}

// "; the disk holding F has 1.2 MB free; the previous index is unchanged".
std::string roomLeft(const std::string &folder) {
  struct statvfs disk {};
  if (::statvfs(folder.c_str(), &disk) != 0) return "";
  const double free = static_cast<double>(disk.f_bavail) * static_cast<double>(disk.f_frsize);
  return "; the disk holding " + folder + " has " + humanBytes(free) + " free; the previous index is unchanged";
}

// A store that cannot be opened: missing, not ours to read, or damaged. The
// library names the store's folder or one of its files.
std::string describeStore(const std::string &named) {
  std::error_code ec;
  std::string folder = named;
  while (folder.size() > 1 && folder.back() == '/') folder.pop_back();
  if (!std::filesystem::is_directory(folder, ec)) folder = std::filesystem::path(folder).parent_path().string();
  if (folder.empty() || !std::filesystem::exists(folder + "/hash", ec)) {
    return "there is no index at " + folder + "; build one with `kurvo index FOLDER`";
  }
  if (::access(folder.c_str(), R_OK | X_OK) != 0 || ::access((folder + "/hash").c_str(), R_OK) != 0) {
    return "the index at " + folder + " cannot be read: permission denied (it belongs to another user?)";
  }
  return "the index at " + folder + " is damaged; rebuild it with `kurvo index`";
}

void onInterrupt(int signal) {
  g_interrupted = 1;
  // A second Ctrl-C (or SIGTERM, SIGHUP) ends the process at once; the stored
  // index is untouched either way because runs work on a separate folder.
  std::signal(signal, SIG_DFL);
}

}  // namespace

void installLibraryCallbacks() {
  kSetThrowCallBack(onError);
  kSetWarningCallBack(onWarning);
  kSetStatusCallBack(onStatus);
  std::signal(SIGINT, onInterrupt);
  std::signal(SIGTERM, onInterrupt);
  std::signal(SIGHUP, onInterrupt);
  if (const char *halt = std::getenv("KURVO_HALT_AFTER")) g_haltAfter = std::atol(halt);
}

void clearLibraryMessages() {
  g_errors.clear();
  g_warnings.clear();
}

const std::vector<LibraryMessage> &libraryWarnings() { return g_warnings; }

void clearLibraryNotices() { g_notices.clear(); }

const std::vector<LibraryMessage> &libraryNotices() { return g_notices; }

void setStorageFolder(const std::string &folder) { g_storageFolder = folder; }

const std::vector<std::string> &skippedEntries() { return g_skipped; }

std::string storageRoomNote() { return g_storageFolder.empty() ? "" : roomLeft(g_storageFolder); }

void throwIfLibraryFailed() {
  if (g_errors.empty()) return;
  const LibraryMessage &first = g_errors.front();
  if (first.key == "HaltRequested") throw HostError("interrupted; the index was left as it was", kExitInterrupted);
  if (first.key == "StorageReadError") throw HostError(describeStore(first.argument));
  std::string text = describeMessage(first.key, first.argument);
  if (first.key == "MemFileExtendFail") text += storageRoomNote();
  throw HostError(text);
}

bool haltRequested() { return g_interrupted != 0 || (g_haltAfter > 0 && g_statusCount >= g_haltAfter); }

void setStatusListener(StatusListener listener) { g_listener = std::move(listener); }

}  // namespace kurvo_cli
