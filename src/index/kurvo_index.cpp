// CKurvoIndex: construction, clearing, settings and progress reporting.
#include "index/kurvo_index.h"

#include <cstdio>
#include <cstring>
#include <system_error>

#include "report/message_keys.h"
#include "report/reporting.h"
#include "storage/byte_io.h"
#include "storage/lower_case_table.h"
#include "storage/table_sizes.h"

namespace {

// Position of the fourth '/' counted from the end of path, or npos when the
// path holds fewer than four.
std::string::size_type fourthSlashFromEnd(const std::string &path) {
  std::string::size_type hit = path.size();
  for (int found = 0; found < 4; ++found) {
    if (hit == 0) return std::string::npos;
    hit = path.rfind('/', hit - 1);
    if (hit == std::string::npos) return std::string::npos;
  }
  return hit;
}

// The summary file starts with the file table's magic. Reversed, it tells an
// index stored on a machine of the other byte order, whose every stored word
// would read wrong here: name that cause rather than a damaged index.
void refuseOtherByteOrder(FILE *hash, const std::string &storagePath) {
  unsigned char first[4];
  const bool swapped =
      std::fread(first, 1, sizeof first, hash) == sizeof first && load32(first) == swapBytes32(kFileStorageMagic);
  std::rewind(hash);
  if (swapped) throwKurvoError(kurvo_keys::kStorageByteOrder, storagePath);
}

}  // namespace

CKurvoIndex::CKurvoIndex(bool create, const std::string &storagePath) : storagePath(storagePath) {
  // The host sets the four classes it relies on; start them all at 0.
  std::memset(validCharMask, 0, sizeof validCharMask);
  std::memset(validTrailingMask, 0, sizeof validTrailingMask);
  std::memset(validViewableMask, 0, sizeof validViewableMask);
  std::memset(nonAlphaCharMask, 0, sizeof nonAlphaCharMask);
  partialWord[0] = 0;

  // The walk never enters the folder three levels above the storage folder
  // (none, left empty, when the path is too shallow to have one).
  std::string::size_type cut = fourthSlashFromEnd(storagePath);
  if (cut != std::string::npos) skippedFolder = storagePath.substr(0, cut);

  // Control bytes: 1-6, 8 and 14-31; bell and the line and page layout bytes
  // 9-13 are left out on purpose.
  std::memset(controlCharMask, 0, sizeof controlCharMask);
  mapLowerCaseChars();
  for (int c = 1; c <= 8; ++c) controlCharMask[c] = 1;
  controlCharMask[7] = 0;
  for (int c = 14; c <= 31; ++c) controlCharMask[c] = 1;

  clear();

  const std::string filesName = storagePath + "files";
  const std::string wordsName = storagePath + "words";
  const std::string skippedName = storagePath + "skipped";
  const std::string linksName = storagePath + "links";

  if (create) {
    forgetWordOrder();
    try {
      files = new CFileStorage(filesName, 1000);
      words = new CTextStorage(wordsName, table_sizes::kWords.initial, table_sizes::kWords.increment, 16, 40000);
      skipWords =
          new CTextStorage(skippedName, table_sizes::kSkipped.initial, table_sizes::kSkipped.increment, 0, 1000);
      links = new CFileLinks(linksName, table_sizes::kLinks.initial, table_sizes::kLinks.increment, UseRanking);
    } catch (...) {
      freeMemFiles();
      throw;
    }
  } else {
    FILE *hash = std::fopen((storagePath + "hash").c_str(), "rb");
    if (!hash) throwKurvoError(kurvo_keys::kStorageReadError, storagePath);
    try {
      refuseOtherByteOrder(hash, storagePath);
      files = new CFileStorage(filesName, hash);
      words = new CTextStorage(wordsName, hash);
      skipWords = new CTextStorage(skippedName, hash);
      links = new CFileLinks(linksName, hash);
    } catch (...) {
      std::fclose(hash);
      freeMemFiles();
      throw;
    }
    std::fclose(hash);
  }

  fillEntities();
}

CKurvoIndex::~CKurvoIndex() { clear(); }

void CKurvoIndex::clear() {
  waitForLetGo();
  clearAnalyzers();
  freeMemFiles();
  NumberHandling = 0;
  UseRanking = 1;
  MinWordLength = 3;
  MaxWordLength = 16;
  IsUpdate = 0;
  TrackAll = 1;
  setIncludeCount(0);
  setExcludeCount(0);
}

void CKurvoIndex::letGoInBackground(const CFileMemory::Handover &region) {
  waitForLetGo();
  try {
    m_letGoThread = std::thread([region] { CFileMemory::letGo(region); });
  } catch (const std::system_error &) {
    CFileMemory::letGo(region);
  }
}

void CKurvoIndex::waitForLetGo() {
  if (m_letGoThread.joinable()) m_letGoThread.join();
}

void CKurvoIndex::freeMemFiles() {
  delete files;
  files = nullptr;
  delete words;
  words = nullptr;
  delete skipWords;
  skipWords = nullptr;
  delete wordLinks;
  wordLinks = nullptr;
  delete links;
  links = nullptr;
}

void CKurvoIndex::setTimeBase(double macTime) { TimeBase = unixFromMacTime(macTime); }

std::string CKurvoIndex::configurationFolder() const {
  std::string::size_type cut = fourthSlashFromEnd(storagePath);
  // A shallower storage path has no such folder; configuration file names
  // are then taken relative to the working folder.
  if (cut == std::string::npos) return std::string();
  return storagePath.substr(0, cut + 1);
}

void CKurvoIndex::reportBytesRead(const char *path) {
  if (ShowStatus <= 1) return;
  char number[64];
  std::snprintf(number, sizeof number, "%f", BytesRead);
  setStatus(kurvo_keys::kBytesIndexing, std::string(number) + '\t' + path);
}

void CKurvoIndex::reportSkipped(const char *reason, const std::string &path) {
  if (ReportSkipped) setStatus(kurvo_keys::kFileSkipped, std::string(reason) + '\t' + path);
}

void CKurvoIndex::reportProgress(const char *key, const std::string &argument) {
  if (ShowStatus == 0) return;
  time_t now = std::time(nullptr);
  if (now <= lastStatusTime) return;
  if (setStatus(key, argument) == 0) throwKurvoError(kurvo_keys::kHaltRequested, "");
  lastStatusTime = now;
}
