// An index opened for queries: its location, settings, session and reader.
#include "reading_session.h"

#include "commands.h"
#include "host_error.h"

namespace kurvo_cli {

ReadingSession openForReading(const GlobalOptions &global) {
  ReadingSession rs;
  rs.location = locateIndex(global.index, global.store);
  if (!indexExists(rs.location)) {
    throw HostError("there is no index \"" + rs.location.name + "\" yet; build it with: kurvo index FOLDER");
  }
  rs.settings = loadSettings(settingsToRead(rs.location));
  rs.session = std::make_unique<IndexSession>(rs.location.storeDir, false);
  // The viewer and word matching read the analyzers, patterns and masks.
  rs.session->configure(rs.settings.options, rs.location.home + "/skipfile.txt", false);
  rs.reader = std::make_unique<IndexReader>(rs.index());
  rs.reader->setTopFolders(rs.settings.folders);
  return rs;
}

}  // namespace kurvo_cli
