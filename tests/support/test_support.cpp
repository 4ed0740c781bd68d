// The one test support layer: scratch folders, callback capture, table readers and the index fixtures.
#include "test_support.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cctype>
#include <fstream>
#include <sstream>

#include "report/reporting.h"

namespace kurvo_test {

namespace fs = std::filesystem;

TempDir::TempDir() {
  const char *base = std::getenv("KURVO_TEST_TMP");
  std::string root = base && *base ? base : "/tmp";
  fs::create_directories(root);
  std::string made = root + "/kurvo-XXXXXX";
  if (!mkdtemp(made.data())) throw std::runtime_error("mkdtemp failed");
  m_path = made + "/a/b/c/store/";
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

bool exists(const std::string &path) { return access(path.c_str(), F_OK) == 0; }

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
  if (active->statusMicroseconds) usleep(static_cast<useconds_t>(active->statusMicroseconds));
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

std::string Stream::bytes() const {
  std::fflush(m_file);
  std::string out(static_cast<size_t>(std::ftell(m_file)), '\0');
  std::rewind(m_file);
  out.resize(std::fread(out.data(), 1, out.size(), m_file));
  std::fseek(m_file, 0, SEEK_END);
  return out;
}

std::string wordBytes(const std::vector<uint32_t> &words) {
  std::string out(words.size() * 4, '\0');
  for (size_t i = 0; i < words.size(); ++i) store32(&out[i * 4], words[i]);
  return out;
}

void setMTime(const std::string &path, int32_t seconds) {
  const struct timespec times[2] = {{seconds, 0}, {seconds, 0}};
  utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW);
}

int32_t mtimeOf(const std::string &path) {
  struct stat info;
  return stat(path.c_str(), &info) == 0 ? static_cast<int32_t>(info.st_mtime) : -1;
}

std::string scratchRoot(const TempDir &tmp) {
  const std::string &p = tmp.path();
  return p.substr(0, p.size() - std::string("a/b/c/store/").size());
}

void setWordMasks(CKurvoIndex &index) {
  for (int c = 0; c < 256; ++c) {
    const bool letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
    const bool digit = c >= '0' && c <= '9';
    index.setValidCharMask(c, letter || digit);
    index.setValidTrailingMask(c, false);
    index.setValidViewableMask(c, c >= 32 && c < 127);
    index.setNonAlphaCharMask(c, digit);
  }
}

void configureIndex(CKurvoIndex &index, const std::vector<std::string> &excludes) {
  setWordMasks(index);
  index.MaxPerFileRead = 1000000;
  index.ShowStatus = 0;
  index.createAnalyzers();
  index.setIncludeCount(1);
  index.setIncludePattern(0, "*.txt", "generic");
  index.setExcludeCount(static_cast<int>(excludes.size()));
  for (size_t i = 0; i < excludes.size(); ++i) index.setExcludePattern(static_cast<int>(i), excludes[i].c_str());
}

std::unique_ptr<CKurvoIndex> startFullBuild(const TempDir &tmp, const std::string &skipWords,
                                            const std::vector<std::string> &excludes) {
  auto index = std::make_unique<CKurvoIndex>(true, tmp.path());
  configureIndex(*index, excludes);
  index->emptyIndex();
  index->newFileLinks();
  index->skipFilePath = tmp.path() + "skipfile.txt";
  writeFile(index->skipFilePath, skipWords);
  index->indexExclusions();
  return index;
}

uint32_t addTopFolder(CKurvoIndex &index, const std::string &path) {
  const uint32_t record = index.files->addFile(path.c_str());
  char *data = index.files->getData(record);
  file_record::setParent(data, 0);
  file_record::setTime(data, mtimeOf(path));
  file_record::setAttributes(data, 0);
  return record;
}

std::map<std::string, RecordCopy> recordsByPath(const CFileStorage &files) {
  std::map<std::string, RecordCopy> out;
  for (uint32_t n = files.getFirst(); n; n = files.getNext(n)) {
    const char *data = files.getData(n);
    const uint32_t parent = file_record::parent(data);
    const std::string name = file_record::name(data);
    out.emplace(
        parent ? std::string(files.getText(parent)) + "/" + name : name,
        RecordCopy{n, parent, file_record::time(data), file_record::size(data), file_record::attributes(data), name});
  }
  return out;
}

WordFiles readWordFiles(const CKurvoIndex &index, uint32_t word) {
  WordFiles out;
  const char *data = index.words->getData(word);
  out.current = load32(data + word_data::kCurrentFile);
  out.counter = load16(data + word_data::kCounter);
  uint32_t position = load32(data + word_data::kListPosition);
  while (position && out.blocks.size() < 100) {
    std::vector<FileLink> block;
    for (;;) {
      unsigned char count = 0;
      const uint32_t file = index.links->getFile(position, count);
      if (!file) break;
      block.push_back({file, count});
    }
    out.blocks.push_back(block);
    position = index.links->getNextList(position);
  }
  return out;
}

std::map<std::string, uint32_t> allWords(const CTextStorage &words) {
  std::map<std::string, uint32_t> out;
  for (uint32_t w = words.getFirst(); w; w = words.getNext(w)) out[words.getText(w)] = w;
  return out;
}

std::set<std::string> wordSet(const CTextStorage &words) {
  std::set<std::string> out;
  for (uint32_t w = words.getFirst(); w; w = words.getNext(w)) out.insert(words.getText(w));
  return out;
}

std::string displayText(CFileAnalyzer &analyzer, uint32_t file, const std::string &path, unsigned long maxLength,
                        int width, bool displayFlag) {
  char *block = analyzer.fillDisplayBuffer(path.c_str(), file, maxLength, width, displayFlag);
  std::string out = block ? block : "";
  std::free(block);
  return out;
}

void AnalyzerTest::SetUp() {
  analyzer.reset();
  index.reset();
  index = std::make_unique<CKurvoIndex>(true, store.path());
  for (int c = 0; c < 256; ++c) {
    index->setValidCharMask(c, c < 128 && std::isalnum(c));
    index->setValidViewableMask(c, c > ' ' && c < 127);
  }
  index->MaxPerFileRead = 1 << 20;
  index->ShowStatus = 0;
  index->newFileLinks();
  index->createAnalyzers();
  analyzer = std::make_unique<CFileAnalyzer>(index.get());
  fileNumber = index->files->addFile("doc.txt");
}

void AnalyzerTest::cut(std::string text) {
  text.push_back('\0');  // spare byte, never part of the data
  analyzer->indexBuffer(text.data(), text.size() - 1, fileNumber, true);
}

std::string AnalyzerTest::dataFile(const std::string &name, const std::string &bytes) const {
  data.write(name, bytes);
  return data.file(name);
}

std::set<std::string> AnalyzerTest::wordsOf(const std::string &analyzerName, const std::string &path) {
  SetUp();
  EXPECT_TRUE(index->analyzerNamed(analyzerName)->indexFile(path.c_str(), fileNumber)) << path;
  return words();
}

}  // namespace kurvo_test
