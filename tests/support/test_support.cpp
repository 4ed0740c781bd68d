// Shared test helpers: scratch folders, file writing and callback capture.
#include "test_support.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "report/reporting.h"

namespace kurvo_test {

namespace fs = std::filesystem;

TempDir::TempDir() {
  const char *base = std::getenv("KURVO_TEST_TMP");
  std::string root = base && *base ? base : "/tmp";
  fs::create_directories(root);
  std::string pattern = root + "/kurvo-XXXXXX";
  std::vector<char> buf(pattern.begin(), pattern.end());
  buf.push_back('\0');
  char *made = mkdtemp(buf.data());
  if (!made) throw std::runtime_error("mkdtemp failed");
  m_path = std::string(made) + "/a/b/c/store/";
  fs::create_directories(m_path);
}

TempDir::~TempDir() {
  std::error_code ec;
  fs::remove_all(fs::path(m_path).parent_path().parent_path().parent_path().parent_path().parent_path(), ec);
}

void TempDir::write(const std::string &name, const std::string &bytes) const { writeFile(file(name), bytes); }

std::string TempDir::read(const std::string &name) const { return readFile(file(name)); }

std::string readFile(const std::string &path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream out;
  out << in.rdbuf();
  return out.str();
}

void writeFile(const std::string &path, const std::string &bytes) {
  fs::path p(path);
  if (p.has_parent_path()) fs::create_directories(p.parent_path());
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

namespace {
CapturedMessages *active = nullptr;

void onError(const char *key, const char *argument) {
  if (active) active->errors.push_back({key, argument});
}
void onWarning(const char *key, const char *argument) {
  if (active) active->warnings.push_back({key, argument});
}
int onStatus(const char *key, const char *argument, int fromLibrary) {
  if (!active) return 1;
  active->statuses.push_back({key, argument});
  active->statusFromLibrary.push_back(fromLibrary);
  if (active->haltAtStatus > 0 && static_cast<int>(active->statuses.size()) >= active->haltAtStatus) return 0;
  return active->statusAnswer;
}
}  // namespace

CapturedMessages::CapturedMessages() {
  active = this;
  kSetThrowCallBack(onError);
  kSetWarningCallBack(onWarning);
  kSetStatusCallBack(onStatus);
}

CapturedMessages::~CapturedMessages() {
  kSetThrowCallBack(nullptr);
  kSetWarningCallBack(nullptr);
  kSetStatusCallBack(nullptr);
  active = nullptr;
}

}  // namespace kurvo_test
