// Reads a stored index through the exported table functions: file records
// with their full paths, words, and the files each word occurs in.
#include "index_reader.h"

#include <strings.h>

#include <algorithm>
#include <cstring>
#include <set>

#include "host_error.h"
#include "kurvo.h"
#include "library_callbacks.h"
#include "query_parser.h"

namespace kurvo_cli {

IndexReader::IndexReader(void *index) : m_index(index) {
  // Records are read as paths need them; a file table whose first record,
  // always a top folder, cannot be read is refused at once.
  const FileRecord *first = nullptr;
  clearLibraryMessages();
  callLibrary([&] {
    const uint32_t number = kfsGetFirst(kidxGetFiles(m_index));
    if (number != 0) first = record(number);
    if (number != 0 && (!first || first->parent != 0)) {
      throw HostError("the index is damaged (its file table is unreadable); rebuild it with `kurvo index`");
    }
  });
}

namespace {

// Fills a record the table has just made, in the table's own memory.
const FileRecord &fillRecord(FileRecord &record, void *info) {
  record.parent = kfiGetFileParentID(info);
  const char *name = kfiGetFileName(info);
  record.name = name ? name : "";
  record.deleted = !record.name.empty() && static_cast<unsigned char>(record.name[0]) == 0xFF;
  record.macTime = kfiGetFileTimeLastWritten(info);
  record.size = kfiGetFileSize(info);
  return record;
}

}  // namespace

const RecordTable &IndexReader::records() {
  if (m_allLoaded) return m_records;
  clearLibraryMessages();
  callLibrary([&] {
    void *files = kidxGetFiles(m_index);
    for (uint32_t r = kfsGetFirst(files); r != 0; r = kfsGetNext(files, r)) {
      void *info = kfsGetInfo(files, r);
      if (!info) throw HostError("the index is damaged (its file table is unreadable); rebuild it with `kurvo index`");
      auto [slot, added] = m_records.try_emplace(r);
      if (added) fillRecord(slot->second, info);
    }
  });
  m_allLoaded = true;
  return m_records;
}

const FileRecord *IndexReader::record(uint32_t number) {
  auto known = m_records.find(number);
  if (known != m_records.end()) return &known->second;
  if (m_allLoaded || number == 0) return nullptr;
  void *info = nullptr;
  callLibrary([&] { info = kfsGetInfo(kidxGetFiles(m_index), number); });
  if (!info) return nullptr;
  return &fillRecord(m_records.try_emplace(number).first->second, info);
}

std::string_view IndexReader::filePath(uint32_t number) {
  // The path is built from the parent chain, so its records come first.
  uint32_t r = number;
  for (int depth = 0; depth < 100 && r != 0; ++depth) {
    const FileRecord *known = record(r);
    r = known ? known->parent : 0;
  }
  return m_paths.filePath(number);
}

uint32_t IndexReader::findFile(const std::string &path) {
  records();
  return m_paths.findFile(path);
}

namespace {

// Damage that a query meets costs the user wrong paths; say what to do.
HostError damaged(const std::string &what) {
  return HostError("the index is damaged (" + what + "); `kurvo check` tells more, `kurvo index` rebuilds it");
}

// Deleted records keep their number in lists; 1 replaces a removed one.
constexpr uint32_t kRemovedFile = 1;

}  // namespace

bool IndexReader::foundUnderItsName(uint32_t record) {
  const FileRecord &r = *this->record(record);
  if (r.found >= 0) return r.found != 0;
  uint32_t found = 0;
  callLibrary([&] { found = kfsLookupFile(kidxGetFiles(m_index), r.name.c_str(), r.parent); });
  // Names differing only in case share a lookup: the first of them answers.
  const FileRecord *other = found ? this->record(found) : nullptr;
  bool ok =
      found == record || (other && other->parent == r.parent && strcasecmp(other->name.c_str(), r.name.c_str()) == 0);
  r.found = ok;  // before the parents, so a looping chain ends
  if (ok && r.parent != 0) ok = this->record(r.parent) && foundUnderItsName(r.parent);
  r.found = ok;
  return ok;
}

std::string_view IndexReader::checkedPath(uint32_t record) {
  // Parents are recorded before what they hold.
  const FileRecord *known = this->record(record);
  if (!known) throw damaged("a word's list names no file");
  for (uint32_t r = record, parent = known->parent; parent != 0; r = parent, parent = known->parent) {
    known = this->record(parent);
    if (parent >= r || !known) throw damaged("a file's folder is no earlier record");
  }
  const std::string_view path = m_paths.filePath(record);  // its chain is read now
  if (path.empty()) return path;
  if (!foundUnderItsName(record)) throw damaged("the file table does not find " + std::string(path));
  bool inside = m_topFolders.empty();
  for (const std::string &folder : m_topFolders) {
    inside = inside || (path.size() > folder.size() && path.compare(0, folder.size(), folder) == 0 &&
                        (path[folder.size()] == '/' || folder == "/"));
  }
  if (!inside) throw damaged("a path lies outside the indexed folders: " + std::string(path));
  return path;
}

std::vector<std::pair<uint32_t, std::string>> IndexReader::matchingWords(const std::string &term) {
  std::vector<std::pair<uint32_t, std::string>> out;
  clearLibraryMessages();
  callLibrary([&] {
    void *words = kidxGetWords(m_index);
    if (!hasWildcard(term)) {
      uint32_t entry = ktsLookup(words, term.c_str());
      if (entry != 0) out.emplace_back(entry, term);
      return;
    }
    auto take = [&](uint32_t w) {
      const char *text = ktsGetText(words, w);
      if (text && kidxDoesWordMatch(m_index, text, term.c_str())) out.emplace_back(w, text);
    };
    std::vector<uint32_t> candidates;
    if (wordsWithPrefix(literalPrefix(term), candidates)) {
      for (uint32_t w : candidates) take(w);
    } else {
      for (uint32_t w = ktsGetFirst(words); w != 0; w = ktsGetNext(words, w)) take(w);
    }
  });
  return out;
}

bool IndexReader::wordsWithPrefix(const std::string &prefix, std::vector<uint32_t> &entries) {
  // Without a literal start every word is a candidate: walking them is as quick.
  if (prefix.empty()) return false;
  entries.resize(64);
  int count = kidxWordsWithPrefix(m_index, prefix.c_str(), entries.data(), static_cast<unsigned>(entries.size()));
  if (count > static_cast<int>(entries.size())) {
    entries.resize(static_cast<size_t>(count));
    count = kidxWordsWithPrefix(m_index, prefix.c_str(), entries.data(), static_cast<unsigned>(entries.size()));
  }
  if (count < 0) return false;
  entries.resize(std::min(entries.size(), static_cast<size_t>(count)));
  return true;
}

std::vector<WordFile> IndexReader::filesOfWord(uint32_t word) {
  std::vector<WordFile> out;
  clearLibraryMessages();
  callLibrary([&] {
    const unsigned char *data = static_cast<const unsigned char *>(ktsGetData(kidxGetWords(m_index), word));
    if (!data) return;
    uint32_t current = 0;
    uint16_t counter = 0;
    uint32_t position = 0;
    std::memcpy(&current, data, 4);
    std::memcpy(&counter, data + 4, 2);
    std::memcpy(&position, data + 8, 4);
    if (current != 0 && !record(current)) throw damaged("a word names no file");
    if (current != 0) out.push_back({current, static_cast<unsigned>(counter & 0xFF)});
    void *links = kidxGetLinks(m_index);
    std::set<uint32_t> seenBlocks;  // a damaged chain must not loop forever
    while (position != 0 && seenBlocks.insert(position).second) {
      unsigned cursor[2] = {position, 0};
      for (;;) {
        unsigned file = kflGetFile(links, cursor);
        if (file == 0) break;
        if (file != kRemovedFile && !record(file)) throw damaged("a word's list names no file");
        out.push_back({file, cursor[1]});
      }
      position = kflGetNextList(links, cursor[0]);
    }
  });
  return out;
}

uint32_t IndexReader::wordCount() {
  uint32_t count = 0;
  clearLibraryMessages();
  callLibrary([&] {
    void *words = kidxGetWords(m_index);
    for (uint32_t w = ktsGetFirst(words); w != 0; w = ktsGetNext(words, w)) ++count;
  });
  return count;
}

}  // namespace kurvo_cli
