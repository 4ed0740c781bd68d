// A growable byte region kept in one storage file through a shared mapping.
#pragma once

#include <cstdint>
#include <string>

// On disk: a 16-byte header of four host-order 32-bit words (length, used,
// initial size, increment) followed by the owning table's records, which are
// addressed by byte offset so that the region can move when it grows.
class CFileMemory {
 public:
  // Opens an existing region read-only; a missing file or one shorter than
  // 4 bytes leaves the object detached (getPointer then yields null).
  explicit CFileMemory(const std::string &path);
  // Creates a new region of initialSize bytes (at least the 16-byte header)
  // that grows by doubling up to increment and then by increment.
  CFileMemory(const std::string &path, uint32_t initialSize, uint32_t increment);
  virtual ~CFileMemory();

  CFileMemory(const CFileMemory &) = delete;
  CFileMemory &operator=(const CFileMemory &) = delete;

  // Allocates size bytes after the used part and returns their offset.
  // Raises "GetHugeSpace" when size exceeds the increment.
  uint32_t getNewSpace(uint32_t size) {
    if (size > m_nIncrement || !m_bMapped || !m_bWritable || static_cast<uint64_t>(m_nUsed) + size > m_nLength)
      return getSpaceSlowly(size);
    const uint32_t offset = m_nUsed;
    m_nUsed += size;
    return offset;
  }
  // Address of the byte at offset, or null when unmapped or offset >= used.
  // Good only until the next getNewSpace.
  char *getPointer(uint32_t offset) const {
    if (!m_bMapped || offset >= m_nUsed) return nullptr;
    return m_pBase + offset;
  }
  // Address of size bytes at offset when all of them lie below used, else null.
  const char *getRange(uint32_t offset, uint32_t size) const {
    if (!m_bMapped || static_cast<uint64_t>(offset) + size > m_nUsed) return nullptr;
    return m_pBase + offset;
  }
  // Length of the NUL-terminated text at offset, or kNoText when offset is
  // not addressable or no NUL ends it below used (a damaged file).
  static constexpr uint32_t kNoText = UINT32_MAX;
  uint32_t textLength(uint32_t offset) const;

  bool openForRead();
  bool openForWrite();
  bool enableWrite();
  bool disableWrite();
  void clearAll();
  // The mapping and the open file, handed over to be let go of elsewhere
  // (unmapped and closed, nothing written); the region is left empty.
  struct Handover {
    char *base;
    size_t length;
    int fd;
  };
  Handover handOver();
  static void letGo(const Handover &region);

  std::string getStoragePath() const;
  void setStoragePath(const std::string &path);

  uint32_t getUsed() const { return m_nUsed; }
  uint32_t getLength() const { return m_nLength; }
  uint32_t getInitialSize() const { return m_nInitialSize; }
  uint32_t getIncrement() const { return m_nIncrement; }
  // Beyond the classic behaviour: a request larger than the growth step is
  // granted (the file grows by the request) instead of refused.
  void setGrowByRequest(bool on) { m_bGrowByRequest = on; }
  bool isMapped() const { return m_bMapped != 0; }
  bool isWritable() const { return m_bWritable != 0; }

 protected:
  int32_t m_nFileDescriptor = -1;
  int32_t m_bFileOpen = 0;
  int32_t m_bMapped = 0;
  int32_t m_bWritable = 0;
  uint32_t m_nInitialSize = 0;
  uint32_t m_nIncrement = 0;
  bool m_bGrowByRequest = false;
  uint32_t m_nLength = 0;
  uint32_t m_nUsed = 0;
  char *m_pBase = nullptr;
  char *m_pHeader = nullptr;
  std::string m_sStoragePath;

 private:
  bool openAndMap(int flags, int protection);
  bool readLengthWord(uint32_t &length);
  void writeHeader();
  void closeFile();
  // getNewSpace when the region must grow, become writable or refuse.
  uint32_t getSpaceSlowly(uint32_t size);
  void grow(uint32_t needed);
  void dropMapping();
  void populate(uint32_t from);
  void writeZeros(uint64_t from);
  bool reserve(uint32_t oldLength, uint64_t newLength);
};
