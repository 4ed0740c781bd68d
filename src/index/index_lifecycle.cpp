// CKurvoIndex lifecycle: starting afresh, collecting links, and storing the tables.
#include <cstdio>
#include <ctime>

#include "api/message_keys.h"
#include "api/reporting.h"
#include "index/kurvo_index.h"

void CKurvoIndex::emptyIndex() {
  IsUpdate = 0;
  delete files;
  files = nullptr;
  delete words;
  words = nullptr;
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
  words = new CTextStorage(storagePath + "words", 131071, 1048575, 16, 40000);
  // Make the first progress report of the run due at once.
  lastStatusTime = std::time(nullptr) - 2;
}

void CKurvoIndex::newFileLinks() {
  // A table still held (a freshly created index has links) is let go before
  // its file is made anew.
  delete links;
  links = nullptr;
  delete wordLinks;
  wordLinks = nullptr;

  links = new CFileLinks(storagePath + "links", 65535, 1048575, UseRanking);
  // The first word after the header stays reserved: list blocks start at 20.
  links->getSpace(4);
  wordLinks = new CWordLinks(storagePath + "temp", 65535, 1048575, UseRanking);
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
  if (!files || !words || !skipWords || !links)
    throwKurvoError(kurvo_keys::kAssertionFailed, "");
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
