// An index opened for queries: its location, settings, session and reader.
#pragma once

#include <memory>

#include "index_location.h"
#include "index_reader.h"
#include "index_session.h"
#include "settings.h"

namespace kurvo_cli {

struct GlobalOptions;

struct ReadingSession {
  IndexLocation location;
  Settings settings;
  std::unique_ptr<IndexSession> session;
  std::unique_ptr<IndexReader> reader;

  void *index() const { return session->handle(); }
};

// Opens the stored index read-only; HostError when there is none or it
// cannot be read.
ReadingSession openForReading(const GlobalOptions &global);

}  // namespace kurvo_cli
