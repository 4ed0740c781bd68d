// Field access on one file record's data area, in place in the mapped file table.
#include <cmath>

#include "storage/byte_io.h"
#include "storage/file_storage.h"

int32_t unixFromMacTime(double macTime) {
  // Converting a double outside the int32 range is undefined; such times
  // cannot come from a real file.
  double seconds = std::trunc(macTime - kMacEpochOffset);
  if (!(seconds >= INT32_MIN)) seconds = INT32_MIN;  // NaN too
  if (seconds > INT32_MAX) seconds = INT32_MAX;
  return static_cast<int32_t>(seconds);
}

namespace file_record {

uint32_t parent(const char *record) { return load32(record + kParent); }
int32_t time(const char *record) { return loadSigned32(record + kTime); }
uint32_t size(const char *record) { return load32(record + kSize); }
uint32_t attributes(const char *record) { return load32(record + kAttributes); }
const char *name(const char *record) { return record + kName; }

void setParent(char *record, uint32_t value) { store32(record + kParent, value); }
void setTime(char *record, int32_t value) { storeSigned32(record + kTime, value); }
void setSize(char *record, uint32_t value) { store32(record + kSize, value); }
void setAttributes(char *record, uint32_t value) { store32(record + kAttributes, value); }

double macTime(const char *record) { return static_cast<double>(time(record)) + kMacEpochOffset; }

void setMacTime(char *record, double macTime) { setTime(record, unixFromMacTime(macTime)); }

void markObsolete(char *record) {
  if (record[kName] != '\0') record[kName] = static_cast<char>(0xFF);
}

bool isObsolete(const char *record) { return static_cast<unsigned char>(record[kName]) == 0xFF; }

}  // namespace file_record
