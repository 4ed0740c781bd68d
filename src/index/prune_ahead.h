// PruneAhead: the stat calls of the next block of records, made before pruning reaches them, on two threads.
#pragma once

#include <sys/stat.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

class CKurvoIndex;
class FolderStat;

// Pruning asks the disk about every record, one stat at a time. With
// reading ahead on, the next block of records is looked up first, by the
// caller's thread and a helper at once, while nothing changes the table;
// pruning then takes each answer whose path is still the one it would look
// up, and asks the disk itself for any other.
class PruneAhead {
 public:
  struct Answer {
    std::string path;  // empty: not looked up
    int found = -1;    // stat's result
    struct stat info {};
  };

  // The answer for record, the next one pruning visits (records before
  // recordLimit, in table order); null when there is none.
  const Answer *take(const CKurvoIndex &index, uint32_t record, uint32_t recordLimit);

  static constexpr size_t kBlock = 1024;

 private:
  void fill(const CKurvoIndex &index, uint32_t first, uint32_t recordLimit);
  void lookUpRange(const CKurvoIndex &index, size_t begin, size_t end, FolderStat &folders);

  std::vector<uint32_t> m_records;
  std::vector<Answer> m_answers;
  size_t m_next = 0;
};
