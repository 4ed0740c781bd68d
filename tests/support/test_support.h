// Shared test helpers: scratch folders, file writing and callback capture.
#pragma once

#include <string>
#include <vector>

namespace kurvo_test {

// A fresh folder (ending in "/") under $KURVO_TEST_TMP or /tmp, deep enough
// that the storage-path rules (four '/' from the end) always apply; removed
// with everything in it when the object goes.
class TempDir {
 public:
  TempDir();
  ~TempDir();
  TempDir(const TempDir &) = delete;
  TempDir &operator=(const TempDir &) = delete;

  const std::string &path() const { return m_path; }  // ends in "/"
  std::string file(const std::string &name) const { return m_path + name; }
  // Creates subfolders as needed.
  void write(const std::string &name, const std::string &bytes) const;
  std::string read(const std::string &name) const;

 private:
  std::string m_path;
};

struct Message {
  std::string key;
  std::string argument;
};

// Installs recording callbacks for the life of the object and removes them
// afterwards. statusAnswer is what the status callback returns.
class CapturedMessages {
 public:
  CapturedMessages();
  ~CapturedMessages();

  std::vector<Message> errors;
  std::vector<Message> warnings;
  std::vector<Message> statuses;
  std::vector<int> statusFromLibrary;
  int statusAnswer = 1;
  // Answer 0 from the n-th status on (1-based); 0 disables.
  int haltAtStatus = 0;

  const Message *lastError() const { return errors.empty() ? nullptr : &errors.back(); }
};

// Runs f and returns true when it threw the library's int exception.
template <typename F>
bool throwsKurvo(F &&f) {
  try {
    f();
  } catch (int) {
    return true;
  }
  return false;
}

std::string readFile(const std::string &path);
void writeFile(const std::string &path, const std::string &bytes);

}  // namespace kurvo_test
