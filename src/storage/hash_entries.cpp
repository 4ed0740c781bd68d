// The bucket-array record shared by the saved descriptions of both hashed tables.
#include <cstdint>
#include <cstdio>

#include "storage/lower_case_table.h"
#include "storage/text_storage.h"

namespace {

// No real table comes near this many buckets; a larger count in a summary
// file means the file is damaged.
constexpr uint32_t kMaxBuckets = 1u << 28;

bool writeWord(FILE *stream, uint32_t word) { return std::fwrite(&word, 4, 1, stream) == 1; }

bool readWord(FILE *stream, uint32_t &word) { return std::fread(&word, 4, 1, stream) == 1; }

}  // namespace

bool storeHashEntries(FILE *stream, uint32_t count, const uint32_t *buckets) {
  if (!writeWord(stream, kHashEntriesMagic) || !writeWord(stream, count)) return false;
  return count == 0 || std::fwrite(buckets, 4, count, stream) == count;
}

uint32_t *readHashEntries(FILE *stream, uint32_t &count) {
  uint32_t magic = 0;
  if (!readWord(stream, magic) || magic != kHashEntriesMagic) return nullptr;
  if (!readWord(stream, count) || count > kMaxBuckets) return nullptr;
  uint32_t *buckets = new uint32_t[count ? count : 1]();
  if (count && std::fread(buckets, 4, count, stream) != count) {
    delete[] buckets;
    return nullptr;
  }
  return buckets;
}

uint32_t hashText(const char *text, uint32_t bucketCount) {
  uint32_t h = 0;
  for (const unsigned char *p = reinterpret_cast<const unsigned char *>(text); *p; ++p) {
    signed char folded = static_cast<signed char>(lowerCase(*p));
    if (folded == 0) break;
    h = h * 33 + static_cast<uint32_t>(static_cast<int32_t>(folded));
  }
  return bucketCount ? h % bucketCount : 0;
}
