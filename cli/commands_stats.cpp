// `kurvo stats`: counters, sizes on disk, folders and the last run.
#include <filesystem>
#include <iostream>

#include <nlohmann/json.hpp>

#include "commands.h"
#include "host_error.h"
#include "json_values.h"
#include "output.h"
#include "reading_session.h"

using nlohmann::json;
namespace fs = std::filesystem;

namespace kurvo_cli {

int runStats(const GlobalOptions &global, bool asJson) {
  ReadingSession rs = openForReading(global);
  unsigned files = 0, folders = 0, deleted = 0;
  for (const auto &entry : rs.reader->records()) {
    if (entry.second.deleted)
      ++deleted;
    else if (entry.second.parent == 0)
      ++folders;
    else if (rs.reader->isLiveFile(entry.first))
      ++files;
  }
  uint32_t words = rs.reader->wordCount();
  json sizes = json::object();
  std::uintmax_t total = 0;
  std::error_code ec;
  for (const fs::directory_entry &e : fs::directory_iterator(rs.location.storeDir, ec)) {
    if (!e.is_regular_file()) continue;
    std::uintmax_t size = e.file_size(ec);
    sizes[e.path().filename().string()] = size;
    total += size;
  }
  const Settings &s = rs.settings;
  if (asJson) {
    json doc = {{"index", rs.location.name},
                {"files", files},
                {"folder_records", folders},
                {"deleted_records", deleted},
                {"words", words},
                {"bytes_on_disk", total},
                {"storage_files", sizes},
                {"last_run", s.finishedAt ? json(isoTime(s.finishedAt)) : json(nullptr)},
                {"last_run_kind", s.lastRun.kind},
                {"last_run_seconds", s.lastRun.seconds}};
    putPath(doc, "store", rs.location.storeDir);
    putPaths(doc, "folders", s.folders);
    std::cout << dumpJson(doc, 2) << "\n";
    return kExitFound;
  }
  std::cout << "index:          " << rs.location.name << "\n";
  std::cout << "storage:        " << rs.location.storeDir << "\n";
  for (const std::string &f : s.folders) std::cout << "folder:         " << f << "\n";
  std::cout << "files:          " << files << "\n";
  std::cout << "folder records: " << folders << "\n";
  std::cout << "deleted:        " << deleted << " records (a full `kurvo index` drops them)\n";
  std::cout << "words:          " << words << "\n";
  std::cout << "on disk:        " << humanBytes(static_cast<double>(total));
  std::string detail;
  for (const auto &[name, size] : sizes.items()) {
    detail += (detail.empty() ? "" : ", ") + name + " " + humanBytes(size.get<double>());
  }
  std::cout << " (" << detail << ")\n";
  if (s.finishedAt) {
    std::cout << "last run:       " << localTime(s.finishedAt) << " (" << s.lastRun.kind << ", " << s.lastRun.contents
              << " files read, " << humanBytes(s.lastRun.bytes) << ")\n";
  }
  return kExitFound;
}

}  // namespace kurvo_cli
