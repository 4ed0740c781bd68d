// Full paths of file records, rebuilt from their parent chains.
#include "record_paths.h"

namespace kurvo_cli {

namespace {

// Archives are nested far less deeply than this; deeper chains are loops.
constexpr int kMaxDepth = 100;
constexpr std::string_view kNoPath;

}  // namespace

std::string_view RecordPaths::pathOf(const FileRecord &record, int depth) {
  if (record.deleted || depth > kMaxDepth) return kNoPath;
  if (record.pathBuilt) return record.path;
  std::pmr::string path(record.path.get_allocator());
  auto parent = record.parent == 0 ? m_records.end() : m_records.find(record.parent);
  if (record.parent == 0) {
    path = record.name;
  } else if (parent != m_records.end()) {
    // Cached, so the folders and containers of many files are built once.
    const std::string_view base = pathOf(parent->second, depth + 1);
    if (!base.empty()) {
      const char *separator = parent->second.parent != 0 ? "::" : base.back() == '/' ? "" : "/";
      path.reserve(base.size() + 2 + record.name.size());
      path.append(base).append(separator).append(record.name);
    }
  }
  record.path = std::move(path);
  record.pathBuilt = true;
  return record.path;
}

std::string_view RecordPaths::filePath(uint32_t record) {
  auto it = m_records.find(record);
  if (it == m_records.end() || it->second.parent == 0) return kNoPath;
  return pathOf(it->second, 0);
}

uint32_t RecordPaths::findFile(const std::string &path) {
  if (!m_byPathComplete) {
    for (const auto &entry : m_records) {
      const std::string_view p = filePath(entry.first);
      // A re-indexed file leaves its old record deleted; only live ones count.
      if (!p.empty()) m_byPath[std::string(p)] = entry.first;
    }
    m_byPathComplete = true;
  }
  auto it = m_byPath.find(path);
  return it == m_byPath.end() ? 0 : it->second;
}

}  // namespace kurvo_cli
