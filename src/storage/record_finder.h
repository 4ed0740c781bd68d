// RecordFinder: an in-memory table from a file name's hash to its records, beside the file table's buckets.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

// The file table has a fixed 1,000 buckets, so its chains grow with the
// number of files. This open-addressing table finds the records of a name
// in steps that do not; it lives in memory only and is rebuilt from the
// table when needed.
class RecordFinder {
 public:
  // A hash of name with ASCII letters folded, as file names are compared.
  static uint32_t hashName(const char *name);

  bool isBuilt() const { return m_built; }
  void markBuilt() { m_built = true; }
  void clear();
  void insert(uint32_t hash, uint32_t record);
  // The lowest record with this hash for which matches(record) holds, or 0:
  // the one a walk of the bucket chain, which keeps the order added, finds.
  template <typename Match>
  uint32_t findFirst(uint32_t hash, Match matches) const;

 private:
  struct Slot {
    uint32_t hash;
    uint32_t record;  // 0: empty
  };
  void grow();

  std::vector<Slot> m_slots;
  std::size_t m_count = 0;
  bool m_built = false;
};

template <typename Match>
uint32_t RecordFinder::findFirst(uint32_t hash, Match matches) const {
  if (m_slots.empty()) return 0;
  const std::size_t mask = m_slots.size() - 1;
  uint32_t best = 0;
  for (std::size_t at = hash & mask; m_slots[at].record != 0; at = (at + 1) & mask) {
    const Slot &slot = m_slots[at];
    if (slot.hash == hash && (best == 0 || slot.record < best) && matches(slot.record)) best = slot.record;
  }
  return best;
}
