// Helpers shared by the storage tests: description streams and raw word access.
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "storage/byte_io.h"

namespace storage_test {

// An anonymous temporary stream for table descriptions, closed on destruction.
class Stream {
 public:
  Stream() : m_file(std::tmpfile()) {}
  ~Stream() {
    if (m_file) std::fclose(m_file);
  }
  Stream(const Stream &) = delete;
  Stream &operator=(const Stream &) = delete;

  FILE *get() const { return m_file; }
  void rewind() const { std::rewind(m_file); }
  // Everything written so far; leaves the stream at its end.
  std::string bytes() const {
    std::fflush(m_file);
    long end = std::ftell(m_file);
    std::string out(static_cast<size_t>(end), '\0');
    std::rewind(m_file);
    size_t got = std::fread(out.data(), 1, out.size(), m_file);
    out.resize(got);
    std::fseek(m_file, 0, SEEK_END);
    return out;
  }
  void writeWords(const std::vector<uint32_t> &words) const {
    for (uint32_t w : words) std::fwrite(&w, sizeof w, 1, m_file);
  }

 private:
  FILE *m_file;
};

inline uint32_t wordAt(const std::string &bytes, size_t offset) {
  return load32(bytes.data() + offset);
}

// The host-order bytes of the given words, back to back.
inline std::string wordBytes(const std::vector<uint32_t> &words) {
  std::string out(words.size() * 4, '\0');
  for (size_t i = 0; i < words.size(); ++i) store32(&out[i * 4], words[i]);
  return out;
}

}  // namespace storage_test
