// RecordFinder: hashing, inserting and growing the open-addressing table.
#include "storage/record_finder.h"

#include <array>

namespace {

// ASCII letters folded to lower case, every other byte as it is.
constexpr std::array<unsigned char, 256> kAsciiFold = [] {
  std::array<unsigned char, 256> fold{};
  for (int c = 0; c < 256; ++c) fold[c] = static_cast<unsigned char>(c >= 'A' && c <= 'Z' ? c + 32 : c);
  return fold;
}();

}  // namespace

uint32_t RecordFinder::hashName(const char *name) {
  uint32_t h = 2166136261u;  // FNV-1a
  for (const unsigned char *p = reinterpret_cast<const unsigned char *>(name); *p; ++p)
    h = (h ^ kAsciiFold[*p]) * 16777619u;
  return h;
}

void RecordFinder::clear() {
  m_slots.clear();
  m_count = 0;
  m_built = false;
}

void RecordFinder::insert(uint32_t hash, uint32_t record) {
  if ((m_count + 1) * 2 > m_slots.size()) grow();
  const std::size_t mask = m_slots.size() - 1;
  std::size_t at = hash & mask;
  while (m_slots[at].record != 0) at = (at + 1) & mask;
  m_slots[at] = {hash, record};
  ++m_count;
}

void RecordFinder::grow() {
  std::vector<Slot> old;
  old.swap(m_slots);
  m_slots.assign(old.empty() ? 1024 : old.size() * 2, Slot{0, 0});
  m_count = 0;
  for (const Slot &slot : old)
    if (slot.record != 0) insert(slot.hash, slot.record);
}
