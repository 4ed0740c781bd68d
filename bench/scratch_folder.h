// A scratch folder for benchmarks under $TMPDIR (or /tmp), removed with its files.
#pragma once

#include <stdlib.h>

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

class ScratchFolder {
 public:
  ScratchFolder() {
    const char *base = std::getenv("TMPDIR");
    std::string pattern = std::string(base && *base ? base : "/tmp") + "/kurvo-bench-XXXXXX";
    std::vector<char> buf(pattern.begin(), pattern.end());
    buf.push_back('\0');
    if (!mkdtemp(buf.data())) throw std::runtime_error("mkdtemp failed");
    m_path = buf.data();
  }
  ~ScratchFolder() {
    std::error_code ec;
    std::filesystem::remove_all(m_path, ec);
  }
  ScratchFolder(const ScratchFolder &) = delete;
  ScratchFolder &operator=(const ScratchFolder &) = delete;

  const std::string &path() const { return m_path; }
  std::string file(const char *name) const { return m_path + "/" + name; }
  // A storage folder deep enough for the index's path rules, made on demand.
  std::string storage() const {
    std::string p = m_path + "/a/b/c/store/";
    std::filesystem::create_directories(p);
    return p;
  }

 private:
  std::string m_path;
};
