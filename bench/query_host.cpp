// A host's query in process through kurvo.h: a word's (or a prefix's) files with every path, timed over rounds.
// Usage: kurvo_query_host STORE TERM [ROUNDS]; TERM ending in '*' is a prefix. Prints the paths' count and the
// median microseconds of one query on an index opened once.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <unordered_map>
#include <vector>

#include "kurvo.h"

namespace {

// Paths of records, as a host keeps them: the paths of folders (and of
// archives holding members) cached for every later query, and each answer's
// paths written one a line into one buffer, as a host prints or hands them on.
class PathBuilder {
 public:
  explicit PathBuilder(void *files) : m_files(files) {}

  void append(unsigned record, std::string &out) {
    void *info = kfsGetInfo(m_files, record);
    if (!info) return;
    if (const unsigned parent = kfiGetFileParentID(info)) {
      out += container(parent);
      out += '/';
    }
    out += kfiGetFileName(info);
    out += '\n';
  }

 private:
  const std::string &container(unsigned record) {
    auto known = m_containers.find(record);
    if (known != m_containers.end()) return known->second;
    std::string path;
    append(record, path);
    if (!path.empty()) path.pop_back();
    return m_containers.emplace(record, std::move(path)).first->second;
  }

  void *m_files;
  std::unordered_map<unsigned, std::string> m_containers;
};

void addFilesOfWord(void *index, unsigned word, std::vector<unsigned> &files) {
  const char *data = static_cast<const char *>(ktsGetData(kidxGetWords(index), word));
  unsigned current = 0, position = 0;
  std::memcpy(&current, data, 4);
  std::memcpy(&position, data + 8, 4);
  if (current) files.push_back(current);
  void *links = kidxGetLinks(index);
  while (position) {
    unsigned cursor[2] = {position, 0};
    while (unsigned file = kflGetFile(links, cursor)) files.push_back(file);
    position = kflGetNextList(links, cursor[0]);
  }
}

// The paths of the files the term's words are in, each once, one a line in
// out, whose memory the host keeps from one query to the next.
size_t query(void *index, PathBuilder &paths, const std::string &term, std::string &out) {
  std::vector<unsigned> words;
  if (!term.empty() && term.back() == '*') {
    const std::string prefix = term.substr(0, term.size() - 1);
    words.resize(4096);
    int count = kidxWordsWithPrefix(index, prefix.c_str(), words.data(), static_cast<unsigned>(words.size()));
    if (count < 0) {
      std::fprintf(stderr, "query_host: the index has no word order\n");
      std::exit(2);
    }
    words.resize(std::min(words.size(), static_cast<size_t>(count)));
  } else if (unsigned word = ktsLookup(kidxGetWords(index), term.c_str())) {
    words.push_back(word);
  }
  std::vector<unsigned> files;
  for (unsigned word : words) addFilesOfWord(index, word, files);
  std::sort(files.begin(), files.end());
  files.erase(std::unique(files.begin(), files.end()), files.end());
  out.clear();
  for (unsigned file : files) paths.append(file, out);
  return files.size();
}

}  // namespace

int main(int argc, char **argv) {
  if (argc < 3) {
    std::fprintf(stderr, "usage: kurvo_query_host STORE TERM [ROUNDS]\n");
    return 2;
  }
  const int rounds = argc > 3 ? std::atoi(argv[3]) : 50;
  std::string store = argv[1];
  if (store.back() != '/') store += '/';
  void *index = kCreateNewIndex(0, store.c_str());
  if (!index) return 2;
  PathBuilder paths(kidxGetFiles(index));
  std::vector<double> micros;
  size_t found = 0;
  std::string out;
  for (int i = 0; i < rounds; ++i) {
    const auto start = std::chrono::steady_clock::now();
    found = query(index, paths, argv[2], out);
    micros.push_back(std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - start).count());
  }
  std::sort(micros.begin(), micros.end());
  std::printf("%zu files, median %.1f us\n", found, micros[micros.size() / 2]);
  kidxClearIndex(index);
  return 0;
}
