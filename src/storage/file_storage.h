// The table of folders, files and archive members, hashed by name in a memory file.
#pragma once

#include <cstdint>
#include <cstdio>

#include "storage/hashed_storage.h"
#include "kurvo.h"
#include "storage/record_finder.h"

constexpr uint32_t kFileStorageMagic = 12370001;
// Seconds from 1904-01-01 (the host's epoch) to 1970-01-01.
constexpr double kMacEpochOffset = KURVO_MAC_EPOCH_OFFSET;
// A host time (seconds since 1904) as stored seconds since 1970, truncated
// toward zero; times outside the 32-bit range are pinned to its ends.
int32_t unixFromMacTime(double macTime);

// Record layout: u32 next-in-bucket, then the 16-byte data area (u32 parent,
// i32 time last written, u32 size, u32 attributes), then the name with its
// NUL. A record is known by the offset of its name; the first is 36.
class CFileStorage : public CHashedStorage {
 public:
  CFileStorage(const std::string &path, uint32_t bucketCount);
  // Raises "StorageReadError" with path when the file or the description
  // cannot be read.
  CFileStorage(const std::string &path, FILE *stream);

  bool read(FILE *stream);
  bool store(FILE *stream);

  // Appends a record with zero fields; callers look up first and then set
  // the fields. The bucket table never grows.
  uint32_t addFile(const char *name);
  // The first record named name (ASCII case ignored) under parentId, or 0.
  uint32_t lookupFile(const char *name, uint32_t parentId);

  // The number the next record would get: records at or above it were
  // added later.
  uint32_t getRecordLimit() const { return getUsed(); }
  // The record's 16-byte data area (name address - 16), or null.
  char *getData(uint32_t fileNumber) const;

 private:
  // Built from the table once chain walks have cost about what building it
  // costs (chainLookupsBeforeFinder), then kept up by addFile.
  RecordFinder m_finder;
  uint32_t chainLookupsBeforeFinder() const;
  uint32_t m_chainLookups = 0;
};

// Field access on a record's data area (the address getData returns).
namespace file_record {
constexpr uint32_t kParent = 0;
constexpr uint32_t kTime = 4;
constexpr uint32_t kSize = 8;
constexpr uint32_t kAttributes = 12;
constexpr uint32_t kName = 16;

uint32_t parent(const char *record);
int32_t time(const char *record);
uint32_t size(const char *record);
uint32_t attributes(const char *record);
const char *name(const char *record);
void setParent(char *record, uint32_t value);
void setTime(char *record, int32_t value);
void setSize(char *record, uint32_t value);
void setAttributes(char *record, uint32_t value);
// 1904-based double <-> stored seconds since 1970 (truncated toward zero).
double macTime(const char *record);
void setMacTime(char *record, double macTime);
// First name byte becomes 0xFF unless the name is empty.
void markObsolete(char *record);
bool isObsolete(const char *record);
}  // namespace file_record
