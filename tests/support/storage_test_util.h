// Helpers shared by the storage tests: description streams, raw words, bad descriptions.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "storage/byte_io.h"
#include "test_support.h"

namespace storage_test {

// An anonymous temporary stream for table descriptions, closed on destruction.
class Stream {
 public:
  Stream() : m_file(std::tmpfile()) {}
  ~Stream() { std::fclose(m_file); }
  Stream(const Stream &) = delete;
  Stream &operator=(const Stream &) = delete;

  FILE *get() const { return m_file; }
  void rewind() const { std::rewind(m_file); }
  // Everything written so far; leaves the stream at its end.
  std::string bytes() const {
    std::fflush(m_file);
    std::string out(static_cast<size_t>(std::ftell(m_file)), '\0');
    std::rewind(m_file);
    out.resize(std::fread(out.data(), 1, out.size(), m_file));
    std::fseek(m_file, 0, SEEK_END);
    return out;
  }

 private:
  FILE *m_file;
};

inline uint32_t wordAt(const std::string &bytes, size_t offset) { return load32(bytes.data() + offset); }

// The host-order bytes of the given words, back to back.
inline std::string wordBytes(const std::vector<uint32_t> &words) {
  std::string out(words.size() * 4, '\0');
  for (size_t i = 0; i < words.size(); ++i) store32(&out[i * 4], words[i]);
  return out;
}

// Opening Table from path with each description must raise "StorageReadError" naming path.
template <typename Table>
void expectBadDescriptions(const std::string &path, const std::vector<std::vector<uint32_t>> &descriptions) {
  for (const std::vector<uint32_t> &words : descriptions) {
    SCOPED_TRACE(words.size());
    Stream s;
    const std::string bytes = wordBytes(words);
    std::fwrite(bytes.data(), 1, bytes.size(), s.get());
    s.rewind();
    kurvo_test::CapturedMessages msgs;
    EXPECT_TRUE(kurvo_test::throwsKurvo([&] { Table t(path, s.get()); }));
    ASSERT_EQ(msgs.errors.size(), 1u);
    EXPECT_EQ(msgs.errors[0].key, "StorageReadError");
    EXPECT_EQ(msgs.errors[0].argument, path);
  }
}

}  // namespace storage_test
