// The host's callbacks: errors and warnings are recorded, statuses drive the
// progress line, and Ctrl-C turns the next status answer into "stop".
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "host_error.h"

namespace kurvo_cli {

struct LibraryMessage {
  std::string key;
  std::string argument;
};

// Installs the three callbacks and the SIGINT handler (once per process).
void installLibraryCallbacks();

// Forgets the errors and warnings received so far; warnings since then:
void clearLibraryMessages();
const std::vector<LibraryMessage> &libraryWarnings();

// Statuses the user must see even without progress: rejected converters,
// archives past the unpacking bounds and PDFs past their inflation bounds.
void clearLibraryNotices();
const std::vector<LibraryMessage> &libraryNotices();

// Throws HostError for the first recorded error, if any (status 130 when it
// was a halt).
void throwIfLibraryFailed();

// Runs f, turning the library's int exception into a HostError.
template <typename F>
auto callLibrary(F &&f) -> decltype(f()) {
  try {
    return f();
  } catch (int) {
    throwIfLibraryFailed();
    throw HostError("the library failed without saying why");
  }
}

// True once Ctrl-C was pressed (or the test hook asked to halt).
bool haltRequested();

// One step of a run: a caught library call whose recorded error, or a
// Ctrl-C seen meanwhile, becomes a HostError.
template <typename F>
void runStep(F &&f) {
  clearLibraryMessages();
  callLibrary(f);
  throwIfLibraryFailed();
  if (haltRequested()) throw HostError("interrupted; the index was left as it was", kExitInterrupted);
}

// Files and folders the run left out or read in part, as "reason<TAB>path".
const std::vector<std::string> &skippedEntries();

// The folder a run writes its index into; errors about storage files that
// cannot grow then say how much room its disk has left.
void setStorageFolder(const std::string &folder);
// "; the disk holding F has N free; the previous index is unchanged", or "".
std::string storageRoomNote();

// Receives every status message of the library (key, argument).
using StatusListener = std::function<void(const std::string &, const std::string &)>;
void setStatusListener(StatusListener listener);

}  // namespace kurvo_cli
