// `kurvo compact` and `kurvo check`: rewriting the lists and checking a store.
#include <filesystem>
#include <iostream>

#include "commands.h"
#include "host_error.h"
#include "index_location.h"
#include "index_lock.h"
#include "index_session.h"
#include "kurvo.h"
#include "library_callbacks.h"
#include "output.h"
#include "store_swap.h"

namespace kurvo_cli {

namespace {

IndexLocation existingIndex(const GlobalOptions &global) {
  IndexLocation loc = locateIndex(global.index, global.store);
  if (!indexExists(loc)) {
    throw HostError("there is no index \"" + loc.name + "\" yet; build it with: kurvo index FOLDER");
  }
  return loc;
}

}  // namespace

int runCompact(const GlobalOptions &global) {
  IndexLocation loc = existingIndex(global);
  IndexLock lock(loc.lockPath, global.noWait, global.quiet);
  Settings settings = loadSettings(settingsToRead(loc));
  prepareHome(loc);
  StoreSwap swap(loc.storeDir);
  swap.prepareCopy();
  const double before = storeFileBytes(swap.workDir(), "links");
  double live = 0, dead = 0;
  {
    IndexSession session(swap.workDir(), false);
    void *index = session.handle();
    runStep([&] { kidxGetLinkSpace(index, &live, &dead); });
    runStep([&] { kidxCompactLinks(index); });
    runStep([&] { kidxStoreStorage(index, swap.workDir().c_str()); });
  }
  settings.linksLive = live;
  saveSettings(swap.workDir() + "settings.json", settings);
  swap.commit();
  std::error_code ignored;
  std::filesystem::remove(loc.legacySettingsPath, ignored);
  if (!global.quiet) {
    std::cout << "Compacted the word lists: " << humanBytes(before) << " before, "
              << humanBytes(storeFileBytes(loc.storeDir, "links")) << " now\n";
  }
  return kExitFound;
}

int runCheck(const GlobalOptions &global) {
  IndexLocation loc = existingIndex(global);
  // A run swaps a whole new store in; holding the lock keeps it from doing so mid-check.
  IndexLock lock(loc.lockPath, global.noWait, global.quiet);
  struct Found {
    unsigned shown = 0;
    bool verbose;
  } found{0, global.verbose};
  const unsigned damages = kCheckStorage(
      loc.storeDir.c_str(),
      [](const char *file, unsigned offset, const char *what, void *context) {
        Found &f = *static_cast<Found *>(context);
        if (f.shown++ < 20 || f.verbose)
          std::cerr << "kurvo: " << file << " at byte " << offset << ": " << what << "\n";
      },
      &found);
  if (damages == 0) {
    if (!global.quiet) std::cout << "The index at " << loc.storeDir << " is sound\n";
    return kExitFound;
  }
  if (damages > 20 && !global.verbose)
    std::cerr << "kurvo: ... and " << damages - 20 << " more (--verbose lists all)\n";
  throw HostError("the index is damaged (" + std::to_string(damages) + (damages == 1 ? " problem" : " problems") +
                  "); rebuild it with `kurvo index`");
}

}  // namespace kurvo_cli
