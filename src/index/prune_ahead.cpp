// PruneAhead: the stat calls of the next block of records, made before pruning reaches them, on two threads.
#include "index/prune_ahead.h"

#include <algorithm>
#include <cstring>
#include <mutex>
#include <system_error>
#include <thread>

#include "index/folder_stat.h"
#include "index/kurvo_index.h"
#include "index/processor_placement.h"

namespace {

// Below this many records a helper costs more than it saves.
constexpr size_t kRecordsForHelper = 256;
constexpr size_t kChunk = 32;

// Chunks of a block handed out from both ends: the caller's thread from the
// front, the helper from the back.
class Chunks {
 public:
  explicit Chunks(size_t count) : m_back(count) {}
  bool takeFront(size_t &begin, size_t &end) {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (m_front == m_back) return false;
    begin = m_front;
    end = m_front = std::min(m_front + kChunk, m_back);
    return true;
  }
  bool takeBack(size_t &begin, size_t &end) {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (m_front == m_back) return false;
    end = m_back;
    begin = m_back = m_back - std::min(kChunk, m_back - m_front);
    return true;
  }

 private:
  std::mutex m_mutex;
  size_t m_front = 0;
  size_t m_back;
};

}  // namespace

const PruneAhead::Answer *PruneAhead::take(const CKurvoIndex &index, uint32_t record, uint32_t recordLimit) {
  if (m_next == m_records.size()) fill(index, record, recordLimit);
  if (m_next < m_records.size() && m_records[m_next] == record) return &m_answers[m_next++];
  // Out of step with the table (it never should be): start again from the next record.
  m_records.clear();
  m_next = 0;
  return nullptr;
}

void PruneAhead::fill(const CKurvoIndex &index, uint32_t first, uint32_t recordLimit) {
  m_records.clear();
  m_next = 0;
  for (uint32_t record = first; record && record < recordLimit && m_records.size() < kBlock;
       record = index.files->getNext(record))
    m_records.push_back(record);
  m_answers.assign(m_records.size(), Answer());
  // Kept folders are checked by path as pruning meets them.
  if (!index.keptFolders.empty()) return;

  Chunks chunks(m_records.size());
  std::thread helper;
  if (m_records.size() >= kRecordsForHelper) {
    try {
      helper = std::thread([&] {
        try {
          FolderStat folders;
          size_t begin = 0, end = 0;
          while (chunks.takeBack(begin, end)) lookUpRange(index, begin, end, folders);
        } catch (...) {
          // Out of memory: what is left unanswered pruning looks up itself.
        }
      });
      placeAwayFromCaller(helper);
    } catch (const std::system_error &) {
    }
  }
  try {
    FolderStat folders;
    size_t begin = 0, end = 0;
    while (chunks.takeFront(begin, end)) lookUpRange(index, begin, end, folders);
  } catch (...) {
    if (helper.joinable()) helper.join();
    throw;
  }
  if (helper.joinable()) helper.join();
}

// What pruning would stat for each record, found the way it finds it; a
// record it would raise an error for, or not look up, is left unanswered.
void PruneAhead::lookUpRange(const CKurvoIndex &index, size_t begin, size_t end, FolderStat &folders) {
  std::string path;
  for (size_t at = begin; at < end; ++at) {
    const char *data = index.files->getData(m_records[at]);
    if (!data || file_record::isObsolete(data) || !index.quietPath(data, path) || path.empty()) continue;
    Answer &answer = m_answers[at];
    answer.found =
        folders.statRecord(path, std::strlen(file_record::name(data)), file_record::parent(data) == 0, &answer.info);
    answer.path = path;
  }
}
