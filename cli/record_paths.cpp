// Full paths of file records, rebuilt from their parent chains.
#include "record_paths.h"

namespace kurvo_cli {

namespace {

// Archives are nested far less deeply than this; deeper chains are loops.
constexpr int kMaxDepth = 100;
const std::string kNoPath;

}  // namespace

std::string RecordPaths::buildPath(uint32_t number, int depth) {
  auto it = m_records.find(number);
  if (it == m_records.end() || it->second.deleted || depth > kMaxDepth) return {};
  const FileRecord &record = it->second;
  if (record.parent == 0) return record.name;
  auto parent = m_records.find(record.parent);
  if (parent == m_records.end()) return {};
  std::string base = buildPath(record.parent, depth + 1);
  if (base.empty()) return {};
  if (parent->second.parent != 0) return base + "::" + record.name;  // archive member
  return base.back() == '/' ? base + record.name : base + "/" + record.name;
}

const std::string &RecordPaths::filePath(uint32_t record) {
  auto cached = m_paths.find(record);
  if (cached != m_paths.end()) return cached->second;
  auto it = m_records.find(record);
  if (it == m_records.end() || it->second.parent == 0) return kNoPath;
  return m_paths.emplace(record, buildPath(record, 0)).first->second;
}

uint32_t RecordPaths::findFile(const std::string &path) {
  if (!m_byPathComplete) {
    for (const auto &entry : m_records) {
      const std::string &p = filePath(entry.first);
      // A re-indexed file leaves its old record deleted; only live ones count.
      if (!p.empty()) m_byPath[p] = entry.first;
    }
    m_byPathComplete = true;
  }
  auto it = m_byPath.find(path);
  return it == m_byPath.end() ? 0 : it->second;
}

}  // namespace kurvo_cli
