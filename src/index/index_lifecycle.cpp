// CKurvoIndex lifecycle: starting afresh, collecting links, and storing the tables.
#include <cstdio>
#include <ctime>
#include <memory>

#include "report/message_keys.h"
#include "report/reporting.h"
#include "storage/byte_io.h"
#include "index/kurvo_index.h"
#include "storage/link_compaction.h"
#include "storage/table_sizes.h"

void CKurvoIndex::emptyIndex() {
  IsUpdate = 0;
  delete files;
  files = nullptr;
  delete words;
  words = nullptr;
  forgetWordOrder();
  delete links;
  links = nullptr;

  WordsIndexed = 0;
  DirectoriesRead = 0;
  ContentsIndexed = 0;
  FilesIndexed = 0;
  BytesRead = 0.0;
  ForeignCharacters = 0;
  FilesWithForeignText = 0;

  // Skip words survive, so a rebuild need not read the skip file again.
  files = new CFileStorage(storagePath + "files", 1000);
  words =
      new CTextStorage(storagePath + "words", table_sizes::kWords.initial, table_sizes::kWords.increment, 16, 40000);
  // Make the first progress report of the run due at once.
  lastStatusTime = std::time(nullptr) - 2;
}

void CKurvoIndex::forgetWordOrder() {
  // An order beside new tables describes the ones they replace: an update
  // would take it for the start of this table's order.
  wordOrder.reset();
  std::remove((storagePath + "wordorder").c_str());
}

void CKurvoIndex::newFileLinks() {
  // A table still held (a freshly created index has links) is let go before
  // its file is made anew.
  delete links;
  links = nullptr;
  delete wordLinks;
  wordLinks = nullptr;

  links = new CFileLinks(storagePath + "links", table_sizes::kLinks.initial, table_sizes::kLinks.increment, UseRanking);
  // The first word after the header stays reserved: list blocks start at 20.
  links->getSpace(4);
  wordLinks =
      new CWordLinks(storagePath + "temp", table_sizes::kLinks.initial, table_sizes::kLinks.increment, UseRanking);
}

void CKurvoIndex::enableWrite(bool on) {
  CFileMemory *tables[] = {words, files, skipWords, links};
  for (CFileMemory *table : tables) {
    if (!table) continue;
    if (on)
      table->enableWrite();
    else
      table->disableWrite();
  }
}

void CKurvoIndex::storeStorage(const std::string &folder) {
  enableWrite(false);
  if (!files || !words || !skipWords || !links) throwKurvoError(kurvo_keys::kAssertionFailed, "");
  // Opening "hash" for writing empties it, and buckets may be mapped from it.
  files->keepBucketsInMemory();
  words->keepBucketsInMemory();
  skipWords->keepBucketsInMemory();
  FILE *hash = std::fopen((folder + "hash").c_str(), "wb");
  // Same key as for reading: the host treats both as an unusable storage.
  if (!hash) throwKurvoError(kurvo_keys::kStorageReadError, folder);
  try {
    files->store(hash);
    words->store(hash);
    skipWords->store(hash);
    links->store(hash);
  } catch (...) {
    std::fclose(hash);
    throw;
  }
  std::fclose(hash);
}

void CKurvoIndex::storeWordOrder(const std::string &folder) {
  if (!words) throwKurvoError(kurvo_keys::kAssertionFailed, "");
  // An order that still fits (no word was added since it was written) stays.
  const std::string path = folder + "wordorder";
  const CWordOrder earlier(path);
  if (earlier.usable(*words)) return;
  if (m_sortedWordsUsed != 0 && m_sortedWordsUsed == words->getUsed())
    writeWordOrder(*words, path, std::move(m_sortedWords));
  else
    writeWordOrder(*words, path, earlier);
  m_sortedWords.clear();
  m_sortedWordsUsed = 0;
  wordOrder.reset();  // read again on first use
}

void CKurvoIndex::measureLinkSpace(double &live, double &dead) const {
  if (!links || !words || !files) throwKurvoError(kurvo_keys::kAssertionFailed, "");
  const LinkSpace space = measureLinks(*words, *files, *links);
  live = static_cast<double>(space.live);
  dead = static_cast<double>(space.dead);
}

void CKurvoIndex::compactLinks() {
  // Between a run's indexing and its compression the word links still
  // point at list positions that compaction would move.
  if (!links || !words || !files || wordLinks) throwKurvoError(kurvo_keys::kAssertionFailed, "");
  const std::string path = storagePath + "links";
  const std::string newPath = path + ".compact";
  const LinkSpace space = measureLinks(*words, *files, *links);
  const uint64_t needed = kFirstBlock + space.live;
  const uint32_t initialSize =
      needed < table_sizes::kLinks.initial ? table_sizes::kLinks.initial : static_cast<uint32_t>(needed);
  if (needed > UINT32_MAX) throwKurvoError(kurvo_keys::kGetHugeSpace, std::to_string(needed));

  std::vector<NewListPosition> positions;
  auto compacted =
      std::make_unique<CFileLinks>(newPath, initialSize, table_sizes::kLinks.increment, links->hasCounts() ? 1 : 0);
  try {
    compacted->setGrowByRequest(true);
    compacted->getSpace(4);
    positions = ::compactLinks(*words, *files, *links, *compacted);
    if (!words->isWritable() && !words->enableWrite())
      throwKurvoError(kurvo_keys::kFileMapWriteFail, storagePath + "words");
    compacted->disableWrite();
    if (std::rename(newPath.c_str(), path.c_str()) != 0) throwKurvoError(kurvo_keys::kFileMapWriteFail, path);
  } catch (...) {
    compacted.reset();
    std::remove(newPath.c_str());
    throw;
  }
  // The open region is the renamed file: it reopens by its new name.
  compacted->setStoragePath(path);
  delete links;
  links = compacted.release();
  for (const NewListPosition &p : positions) {
    store32(words->getData(p.word) + word_data::kListPosition, p.position);
  }
}
