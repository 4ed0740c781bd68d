// CKurvoIndex: one index in one storage folder, its tables, settings and masks.
#pragma once

#include <cstdint>
#include <cstring>
#include <ctime>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "index/prune_ahead.h"
#include "storage/file_links.h"
#include "storage/file_storage.h"
#include "storage/text_storage.h"
#include "storage/word_links.h"
#include "storage/word_order.h"

class CFileAnalyzer;
class CReadAhead;
class FolderStat;
struct stat;

class CKurvoIndex {
 public:
  // Builds new empty tables in storagePath (create) or reopens the ones stored
  // there from its "hash" file; raises "StorageReadError" when there is none.
  CKurvoIndex(bool create, const std::string &storagePath);
  ~CKurvoIndex();

  CKurvoIndex(const CKurvoIndex &) = delete;
  CKurvoIndex &operator=(const CKurvoIndex &) = delete;

  // Lifecycle.
  void clear();
  void freeMemFiles();
  void emptyIndex();
  void newFileLinks();
  void enableWrite(bool on);
  void storeStorage(const std::string &folder);
  // Beyond the classic behaviour: folder + "wordorder", every word entry in
  // byte order of its text, for wordsWithPrefix.
  void storeWordOrder(const std::string &folder);

  // Character classes.
  void setValidCharMask(int c, bool on) { validCharMask[c] = on ? 1 : 0; }
  void setValidTrailingMask(int c, bool on) { validTrailingMask[c] = on ? 1 : 0; }
  void setValidViewableMask(int c, bool on) { validViewableMask[c] = on ? 1 : 0; }
  void setNonAlphaCharMask(int c, bool on) { nonAlphaCharMask[c] = on ? 1 : 0; }
  // Stores macTime - 2082844800 truncated toward zero.
  void setTimeBase(double macTime);

  // Include and exclude patterns.
  void setIncludeCount(int count);
  void setExcludeCount(int count);
  void setIncludePattern(int i, const char *pattern, const char *analyzerName);
  void setExcludePattern(int i, const char *pattern);
  int dirMatch(const char *path, const char *pattern) const;
  int isExcluded(const char *name) const;
  CFileAnalyzer *analyzerThatMatches(const char *name) const;

  // Analyzer registry.
  void createAnalyzers();
  // Adds one external analyzer per entry of "externanalyzers.txt".
  void readExternalAnalyzers();
  void clearAnalyzers();
  CFileAnalyzer *analyzerNamed(const std::string &name) const;

  // Word indexing and skip words.
  uint32_t indexWord(const char *word, uint32_t fileNumber) { return indexWord(word, fileNumber, textHash(word)); }
  // The same with the word's hash (textHash) already known.
  uint32_t indexWord(const char *word, uint32_t fileNumber, uint32_t hash) {
    return indexWord(word, fileNumber, hash, std::strlen(word));
  }
  // And with its length (strlen) too; times > 1 records that many
  // occurrences in a row, as that many calls would.
  uint32_t indexWord(const char *word, uint32_t fileNumber, uint32_t hash, size_t length, uint32_t times = 1);
  // Hints that words of these hashes are about to be indexed: first the
  // word table's buckets, then the entries they lead to (always inlined, or
  // the optimizer drops them).
  [[gnu::always_inline]] void prefetchWordBucket(uint32_t hash) const {
    if (words) words->prefetchBucket(hash);
  }
  [[gnu::always_inline]] void prefetchWordEntry(uint32_t hash) const {
    if (words) words->prefetchChain(hash);
  }
  uint32_t indexExcludedWord(const char *word);
  void indexExcludeBuffer(char *buffer, uint32_t length);
  void indexExclusions();

  // Walking, updating and compressing.
  void indexDirectory(const char *folderPath, uint32_t parentId);
  void updateDirectory(const char *folderPath, uint32_t folderId);
  void prune();
  // Beyond the classic behaviour: whether prune would find a record that
  // vanished or changed; stops at the first one and changes nothing.
  bool hasChanges();
  std::string prunedPath(uint32_t record, const char *data, uint32_t &lastParentFetched);
  bool quietPath(const char *data, std::string &path) const;
  void refreshChangedFile(uint32_t record, const std::string &path, const struct stat &info);
  enum class PruneAction { None, Drop, Refresh };
  // What prune does with one record; path and info are filled for Refresh.
  // ahead: the record's stat made before, taken if made for the same path.
  PruneAction pruneAction(uint32_t record, const char *data, uint32_t &lastParentFetched, std::string &path,
                          struct stat &info, FolderStat &folders, const PruneAhead::Answer *ahead = nullptr);
  // The same for a record whose path is known.
  PruneAction actionForPath(const char *data, const std::string &path, struct stat &info, FolderStat &folders,
                            const PruneAhead::Answer *ahead = nullptr) const;
  // The same for a file in a top folder, without its path; false where that
  // does not apply and the record needs the way above.
  bool fileActionInFolder(const char *data, FolderStat &folders, PruneAction &action) const;
  bool isChanged(const char *data, const struct stat &info) const;
  bool recordsChanged(uint32_t first, uint32_t end, FolderStat &folders);
  enum class QuietCheck { Unchanged, Changed, Broken };
  QuietCheck recordsChangedQuietly(uint32_t first, uint32_t end, FolderStat &folders) const;
  bool recordsBrokenQuietly(uint32_t first, uint32_t end) const;
  // Tables of fewer records are checked on the caller's thread alone.
  static constexpr uint32_t kRecordsForHelper = 1000;
  void compressLinks();
  // Beyond the classic behaviour: one block per word without removed files,
  // in a new "links" that replaces the old one only once it is complete.
  void compactLinks();
  void measureLinkSpace(double &live, double &dead) const;

  // Queries.
  int doesWordMatch(const char *word, const char *pattern) const;
  // Beyond the classic behaviour: appends the words beginning with prefix,
  // in byte order, from the storage folder's "wordorder" (read on first
  // use). False when there is none that fits the word table as it is now.
  bool wordsWithPrefix(const std::string &prefix, std::vector<uint32_t> &out);
  // The byte an HTML character reference (the text between '&' and ';') names.
  unsigned char htmlChar(const char *reference) const;
  // Fills the entity map with the named references htmlChar knows.
  void fillEntities();
  // Writes one archive member to a temporary file; its path, or "" on failure.
  std::string extractToTempFile(const char *archivePath, const char *memberName, uint32_t memberNumber);

  // Progress at most once a second while ShowStatus is set: reports key with
  // argument and raises "HaltRequested" when the host answers 0.
  // Whether reportProgress would send a status now (at most one a second).
  bool progressDue() const { return ShowStatus != 0 && std::time(nullptr) > lastStatusTime; }
  void reportProgress(const char *key, const std::string &argument);
  // "BytesIndexing" with the running byte count and path, when ShowStatus > 1.
  void reportBytesRead(const char *path);
  // The maximum word length in force: the setting, or 100 when it is 0.
  // Words one character longer are still taken.
  long longestWordSetting() const { return MaxWordLength != 0 ? MaxWordLength : 100; }
  // Beyond the classic statuses, when ReportSkipped is set: a file or folder
  // left out, or read only in part ("FileSkipped", "reason<TAB>path").
  void reportSkipped(const char *reason, const std::string &path);
  // The folder three levels above the storage folder's own name, with its
  // trailing '/' (where "skipfile.txt" and "externanalyzers.txt" live).
  std::string configurationFolder() const;

  // Tables, owned.
  CTextStorage *words = nullptr;
  CFileStorage *files = nullptr;
  CTextStorage *skipWords = nullptr;
  CFileLinks *links = nullptr;
  CWordLinks *wordLinks = nullptr;
  std::unique_ptr<CWordOrder> wordOrder;  // read by the first wordsWithPrefix
  void forgetWordOrder();

  // Settings and counters.
  int32_t UseRanking = 1;
  int32_t MinWordLength = 3;
  int32_t MaxWordLength = 16;
  int32_t MaxPerFileRead = 0;
  int32_t ShowStatus = 0;
  int32_t IsUpdate = 0;
  int32_t TrackAll = 1;
  std::string temporaryDirectory;
  // Carry-over buffer: an unfinished word or piece of mark-up from the end of
  // one read buffer; first byte 0 when empty.
  char partialWord[1024];
  std::map<std::string, unsigned char> entities;
  uint32_t ContentsIndexed = 0;
  uint32_t FilesIndexed = 0;
  uint32_t WordsIndexed = 0;
  double BytesRead = 0.0;
  int32_t TimeBase = 0;
  std::map<std::string, CFileAnalyzer *> analyzers;
  uint32_t DirectoriesRead = 0;
  time_t lastStatusTime = 0;
  std::string storagePath;
  std::string skippedFolder;
  std::string skipFilePath;
  int32_t InternationalChar = 0;
  char **includePatterns = nullptr;
  char **excludePatterns = nullptr;
  CFileAnalyzer **includeAnalyzers = nullptr;
  int32_t SavePassword = 0;
  int32_t NumberHandling = 0;
  // Bounds on one run of an external converter, beyond the classic
  // settings: seconds before it is stopped, and bytes any file it writes may
  // reach (0: no bound).
  int32_t ConverterTimeLimit = 120;
  uint64_t ConverterOutputLimit = 256ull << 20;
  // Bounds on unpacking archives, beyond the classic settings and always in
  // force: nesting depth while indexing, bytes from one member and from one
  // outermost archive. Then the archive being unpacked: its depth and bytes.
  int32_t ArchiveDepthLimit = 8;
  uint64_t ArchiveMemberLimit = 1ull << 30;
  uint64_t ArchiveTotalLimit = 4ull << 30;
  int32_t ArchiveDepth = 0;
  uint64_t ArchiveBytes = 0;
  bool ArchiveLimitReported = false;
  // Bounds on inflating the streams of one PDF, beyond the classic settings
  // and always in force: bytes from one stream and from the whole file.
  uint64_t PdfStreamLimit = 64ull << 20;
  uint64_t PdfFileLimit = 4ull << 30;
  // Beyond the classic settings: an update also re-reads files whose time or
  // size differs from their record, whatever the time base says.
  int32_t ExactUpdates = 0;
  // Beyond the classic settings: list blocks sized by the files a word gains
  // in a run (none for a word that gains none), and tables that grow by a
  // request larger than their growth step.
  int32_t SizedListBlocks = 0;
  int32_t GrowByRequest = 0;
  // Beyond the classic settings: files a first indexing reads ahead of the
  // walk on a second thread (0: none), and the read-ahead under way.
  int32_t ReadAhead = 0;
  CReadAhead *readAhead = nullptr;
  // Beyond the classic settings: folders an update leaves as they are
  // recorded, because they cannot be reached now.
  std::vector<std::string> keptFolders;
  // Beyond the classic settings: where "deadkurvo.txt" goes (empty: the
  // current folder).
  std::string reportFolder;
  int32_t ReportSkipped = 0;
  // Beyond the classic counters: characters the character set cannot hold,
  // met by the "utf8" analyzer, and the files that held them.
  uint64_t ForeignCharacters = 0;
  uint32_t FilesWithForeignText = 0;
  int32_t validCharMask[256];
  int32_t validTrailingMask[256];
  int32_t validViewableMask[256];
  int32_t nonAlphaCharMask[256];
  int32_t controlCharMask[256];

 private:
  // With reading ahead on, a run's spent word links are unmapped and closed
  // on another thread (their file already removed); waited for on clear().
  void letGoInBackground(const CFileMemory::Handover &region);
  void waitForLetGo();
  std::thread m_letGoThread;
  // With reading ahead on, compression also sorts the words for the word
  // order on another thread; storeWordOrder takes the result while no word
  // has been added since (the table's used bytes then still match).
  std::vector<uint32_t> m_sortedWords;
  uint32_t m_sortedWordsUsed = 0;
};
