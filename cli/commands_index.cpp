// `kurvo index` and `kurvo update`: full builds, updates and added folders.
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <iostream>
#include <map>
#include <set>

#include "commands.h"
#include "host_error.h"
#include "index_location.h"
#include "index_lock.h"
#include "index_reader.h"
#include "index_session.h"
#include "kurvo.h"
#include "library_callbacks.h"
#include "messages.h"
#include "output.h"
#include "progress.h"
#include "store_swap.h"

namespace fs = std::filesystem;

namespace kurvo_cli {

namespace {

bool progressWanted(const GlobalOptions &global) { return !global.quiet && ::isatty(STDERR_FILENO) == 1; }

std::string canonicalFolder(const std::string &folder) {
  std::error_code ec;
  fs::path p = fs::canonical(folder, ec);
  if (ec || !fs::is_directory(p, ec)) throw HostError("there is no folder " + folder);
  return p.string();
}

bool isInside(const std::string &path, const std::string &folder) {
  if (folder == "/") return true;
  return path == folder ||
         (path.size() > folder.size() && path.compare(0, folder.size(), folder) == 0 && path[folder.size()] == '/');
}

// Canonical folders, each once, dropping those inside another one.
std::vector<std::string> topFolders(const std::vector<std::string> &given, bool quiet) {
  std::vector<std::string> folders;
  for (const std::string &f : given) folders.push_back(canonicalFolder(f));
  std::vector<std::string> out;
  for (size_t i = 0; i < folders.size(); ++i) {
    bool covered = false;
    for (size_t j = 0; j < folders.size() && !covered; ++j) {
      if (i == j) continue;
      bool inside = isInside(folders[i], folders[j]);
      covered = inside && (folders[i] != folders[j] || j < i);
    }
    if (covered && !quiet) std::cerr << "kurvo: note: " << folders[i] << " is already covered\n";
    if (!covered) out.push_back(folders[i]);
  }
  return out;
}

void applyCommandOptions(IndexOptions &o, const IndexCommandOptions &c) {
  if (c.minWordLength >= 0) o.minWordLength = c.minWordLength;
  if (c.maxWordLength >= 0) o.maxWordLength = c.maxWordLength;
  if (c.maxFileRead >= 0) o.maxFileRead = c.maxFileRead;
  if (c.ranking >= 0) o.ranking = c.ranking == 1;
  if (c.trackAll >= 0) o.trackAll = c.trackAll == 1;
  if (!c.tempDir.empty()) o.tempDir = c.tempDir;
  if (c.converterTimeout >= 0) o.converterTimeout = c.converterTimeout;
  if (c.converterMaxOutput >= 0) o.converterMaxOutput = c.converterMaxOutput;
  if (c.readAhead >= 0) o.readAhead = c.readAhead;
  if (c.defaultPatterns) {
    o.include = defaultIncludeRules();
    o.exclude = defaultExcludePatterns();
  }
  // Rules given on the command line go first: the first match decides.
  std::vector<IncludeRule> added;
  for (const std::string &item : c.include) {
    size_t eq = item.rfind('=');
    if (eq == std::string::npos)
      added.push_back({item, "utf8"});
    else
      added.push_back({item.substr(0, eq), item.substr(eq + 1)});
  }
  o.include.insert(o.include.begin(), added.begin(), added.end());
  for (const std::string &pattern : c.exclude) o.exclude.push_back(pattern);
  for (unsigned char ch : c.wordChars) {
    o.chars.wordStart[ch] = true;
    o.chars.wordRest[ch] = true;
  }
  if (o.minWordLength < 1 || o.maxWordLength < 0 || (o.maxWordLength && o.maxWordLength < o.minWordLength)) {
    throw HostError("the word lengths do not fit: shortest " + std::to_string(o.minWordLength) + ", longest " +
                    std::to_string(o.maxWordLength));
  }
  if (o.maxFileRead < 1024) throw HostError("--max-file-read must be at least 1024 bytes");
}

// Converters left out of externanalyzers.txt and archives cut at the
// unpacking bounds, said as they come; a PDF cut at its bounds only with
// --verbose, since its words up to the cut are there.
void printLibraryNotices(const GlobalOptions &global) {
  if (!global.quiet) {
    for (const LibraryMessage &notice : libraryNotices())
      if (global.verbose || notice.key != "PdfTooLarge")
        std::cerr << "kurvo: note: " << describeMessage(notice.key, notice.argument) << "\n";
  }
  clearLibraryNotices();
}

// Said once per full build; updates only say it with --verbose.
void noteMissingAnalyzers(const std::vector<IncludeRule> &missing, const GlobalOptions &global, bool fullBuild) {
  printLibraryNotices(global);
  if (missing.empty() || global.quiet || (!fullBuild && !global.verbose)) return;
  if (global.verbose) {
    for (const IncludeRule &rule : missing) {
      std::cerr << "kurvo: note: files matching " << rule.pattern << " are listed without their words: there is no \""
                << rule.analyzer << "\" analyzer in this build\n";
    }
    return;
  }
  std::set<std::string> names;
  for (const IncludeRule &rule : missing) names.insert(rule.analyzer);
  std::string list;
  for (const std::string &name : names) list += (list.empty() ? "" : ", ") + name;
  std::cerr << "kurvo: note: this build has no analyzer for " << list
            << " files; they are listed without their words (--verbose for details)\n";
}

int64_t unixNow() { return static_cast<int64_t>(std::time(nullptr)); }

uint32_t addTopFolder(void *index, const std::string &folder) {
  struct stat st {};
  if (::stat(folder.c_str(), &st) != 0) throw HostError("there is no folder " + folder);
  uint32_t record = 0;
  runStep([&] {
    void *files = kidxGetFiles(index);
    record = kfsLookupFile(files, folder.c_str(), 0);
    if (record == 0) record = kfsAddFile(files, folder.c_str());
    if (record == 0) return;
    void *info = kfsGetInfo(files, record);
    kfiSetFileParentID(info, 0);
    kfiSetFileTimeLastWritten(info, macFromUnix(st.st_mtime));
    kfiSetFileAttributes(info, 0);
  });
  if (record == 0) throw HostError("the folder " + folder + " cannot be recorded in the index");
  return record;
}

void indexFolders(void *index, const std::vector<std::string> &folders) {
  for (const std::string &folder : folders) {
    uint32_t record = addTopFolder(index, folder);
    runStep([&] { kidxIndexDirectory(index, folder.c_str(), record); });
  }
}

void resetCounters(void *index) {
  kidxSetBytesRead(index, 0);
  kidxSetDirectoriesRead(index, 0);
  kidxSetFilesIndexed(index, 0);
  kidxSetContentsIndexed(index, 0);
  kidxSetWordsIndexed(index, 0);
}

RunSummary readCounters(void *index, const char *kind, std::chrono::steady_clock::time_point start) {
  RunSummary s;
  s.kind = kind;
  s.folders = kidxGetDirectoriesRead(index);
  s.files = kidxGetFilesIndexed(index);
  s.contents = kidxGetContentsIndexed(index);
  s.words = kidxGetWordsIndexed(index);
  s.foreign = kidxGetFilesWithForeignText(index);
  s.bytes = kidxGetBytesRead(index);
  s.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  return s;
}

void printSummary(const RunSummary &s, const GlobalOptions &global) {
  if (global.quiet) return;
  char line[256];
  double rate = s.seconds > 0 ? s.bytes / s.seconds : s.bytes;
  std::snprintf(line, sizeof line,
                "%s: %u folders, %u entries recorded, %u files read, %u new words, %s in %.1f s (%s/s)",
                s.kind == "update" ? "Updated" : "Indexed", s.folders, s.files, s.contents, s.words,
                humanBytes(s.bytes).c_str(), s.seconds, humanBytes(rate).c_str());
  std::cout << line << "\n";
  if (s.foreign) {
    std::cout
        << s.foreign << (s.foreign == 1 ? " file holds" : " files hold")
        << " characters outside Latin-1 (Greek, Cyrillic, CJK, symbols); they separate words and are not searchable\n";
  }
}

// What the run left out, counted by reason; each one with --verbose.
void printSkipped(const GlobalOptions &global) {
  if (global.quiet || skippedEntries().empty()) return;
  static const std::map<std::string, std::string> reasons = {{"folder", "folders that cannot be opened"},
                                                             {"file", "files that cannot be opened"},
                                                             {"path", "paths too long for the system"},
                                                             {"cut", "files read only up to --max-file-read"}};
  std::map<std::string, unsigned> counts;
  for (const std::string &entry : skippedEntries()) {
    const std::string reason = entry.substr(0, entry.find('\t'));
    ++counts[reason];
    if (global.verbose) {
      auto it = reasons.find(reason);
      std::cerr << "kurvo: note: " << (it == reasons.end() ? reason : it->second) << ": "
                << entry.substr(entry.find('\t') + 1) << "\n";
    }
  }
  std::string line;
  for (const auto &[reason, count] : counts) {
    auto it = reasons.find(reason);
    line += (line.empty() ? "" : ", ") + std::to_string(count) + " " + (it == reasons.end() ? reason : it->second);
  }
  std::cout << "Left out: " << line << (global.verbose ? "" : " (--verbose lists them)") << "\n";
}

std::string skipFileOf(const IndexLocation &loc) { return loc.home + "/skipfile.txt"; }

// Updates leave removed files and the blocks of earlier runs in "links";
// once that dead space passes the live lists they are rewritten. Measuring
// reads every list, so it waits until "links" has doubled since last time,
// and a small table (one that grows by doubling) is left alone.
void compactWhenWorthIt(IndexSession &session, Progress &progress, Settings &settings) {
  constexpr double kSmallLinks = 1 << 20;
  void *index = session.handle();
  if (storeFileBytes(session.storeDir(), "links") <= 2 * settings.linksLive + kSmallLinks) return;
  double live = 0, dead = 0;
  runStep([&] { kidxGetLinkSpace(index, &live, &dead); });
  settings.linksLive = live;
  if (dead <= live) return;
  progress.phase("compacting the lists");
  runStep([&] { kidxCompactLinks(index); });
}

// Compresses, stores into the work folder and closes the index.
void finishRun(IndexSession &session, Progress &progress, Settings &settings, bool update) {
  void *index = session.handle();
  progress.phase("compressing links");
  runStep([&] { kidxCompressLinks(index); });
  if (update)
    compactWhenWorthIt(session, progress, settings);
  else
    settings.linksLive = storeFileBytes(session.storeDir(), "links");
  progress.phase("storing the index");
  runStep([&] { kidxStoreStorage(index, session.storeDir().c_str()); });
  // Sorted words let a pattern with a literal start visit only its words.
  runStep([&] { kidxStoreWordOrder(index, session.storeDir().c_str()); });
}

// Swaps the stored run in for the previous index and records it in the settings.
int completeRun(StoreSwap &swap, const IndexLocation &loc, Settings &settings, const RunSummary &summary,
                int64_t startedAt, const GlobalOptions &global) {
  printLibraryNotices(global);
  // A member or converted file that could not be written (a full disk)
  // would leave words out unseen: the run ends and the old index stays.
  for (const std::string &entry : skippedEntries()) {
    if (entry.rfind("write\t", 0) == 0) {
      throw HostError("a temporary copy could not be written: " + entry.substr(6) + storageRoomNote());
    }
  }
  // A second early, so a file changed while this run read it is read again.
  settings.timeBase = startedAt - 1;
  settings.finishedAt = unixNow();
  settings.lastRun = summary;
  // The settings go into the new store, and the store is swapped in with
  // one rename: a kill at any moment leaves the old index or the new one.
  saveSettings(swap.workDir() + "settings.json", settings);
  swap.commit();
  std::error_code ignored;
  std::filesystem::remove(loc.legacySettingsPath, ignored);
  printSummary(summary, global);
  printSkipped(global);
  return kExitFound;
}

// Reads every record once: a damaged file table is refused here, before
// pruning walks it, and the count gives the progress line its percentage.
// A top folder that cannot be reached (an unmounted drive, a moved folder)
// is kept as it is recorded rather than emptied.
unsigned checkRecordsAndKeepMissing(void *index, const std::vector<std::string> &folders, const GlobalOptions &global) {
  IndexReader reader(index);
  for (const std::string &folder : folders) {
    std::error_code ec;
    if (std::filesystem::is_directory(folder, ec)) continue;
    kidxKeepFolder(index, folder.c_str());
    unsigned kept = 0;
    for (const auto &entry : reader.records()) {
      const std::string_view path = reader.filePath(entry.first);
      kept += path.size() > folder.size() && path.compare(0, folder.size() + 1, folder + "/") == 0;
    }
    if (!global.quiet) {
      std::cerr << "kurvo: note: the folder " << folder << " cannot be reached; its " << kept
                << " files are kept as they were (`kurvo index --forget " << folder << "` drops them)\n";
    }
  }
  return static_cast<unsigned>(reader.records().size());
}

// Before an update walks anything: counters from zero, the last run's start
// as the time base, and pruning, which takes in changes below known folders.
void prepareUpdate(void *index, Progress &progress, const Settings &settings, const IndexLocation &loc,
                   const GlobalOptions &global) {
  progress.setRecordTotal(checkRecordsAndKeepMissing(index, settings.folders, global));
  resetCounters(index);
  kidxSetTimeBase(index, macFromUnix(settings.timeBase));
  kidxSetIsUpdate(index, 1);
  // A report of a broken file table goes beside the index, not into the current folder.
  kidxSetReportFolder(index, std::filesystem::path(loc.settingsPath).parent_path().parent_path().c_str());
  // Reopened tables stay read-only until pruning makes them writable.
  runStep([&] { kidxPrune(index); });
}

// One run: a full build of folders into an empty work folder, or an update
// of a copy of the index that also walks the folders given (new ones).
int indexRun(const GlobalOptions &global, const IndexLocation &loc, Settings settings, bool update,
             const std::vector<std::string> &folders) {
  prepareHome(loc);
  StoreSwap swap(loc.storeDir);
  if (update)
    swap.prepareCopy();
  else
    swap.prepareEmpty();
  auto start = std::chrono::steady_clock::now();
  int64_t startedAt = unixNow();
  RunSummary summary;
  {
    Progress progress(progressWanted(global));
    IndexSession session(swap.workDir(), !update);
    void *index = session.handle();
    noteMissingAnalyzers(session.configure(settings.options, skipFileOf(loc), true), global, !update);
    progress.setIndex(index);
    if (update) {
      prepareUpdate(index, progress, settings, loc, global);
    } else {
      runStep([&] { kidxEmptyIndex(index); });
      runStep([&] { kidxNewFileLinks(index); });
    }
    runStep([&] { kidxIndexExclusions(index); });
    indexFolders(index, folders);
    finishRun(session, progress, settings, update);
    summary = readCounters(index, update ? "update" : "index", start);
  }
  if (update)
    settings.folders.insert(settings.folders.end(), folders.begin(), folders.end());
  else
    settings.folders = folders;
  return completeRun(swap, loc, settings, summary, startedAt, global);
}

// An update that would find nothing to do leaves the store as it is (no
// copy, nothing rewritten) and records only the run in the settings. Asked
// of the stored index itself, with the rules pruning uses; anything found
// (a change, a folder out of reach, damage) sends the update the usual way.
bool updatedInPlace(const GlobalOptions &global, const IndexLocation &loc, Settings &settings) {
  const auto start = std::chrono::steady_clock::now();
  const int64_t startedAt = unixNow();
  RunSummary summary;
  int changes = -1;
  try {
    IndexSession session(loc.storeDir, false);
    void *index = session.handle();
    kidxSetExactUpdates(index, 1);
    kidxSetTimeBase(index, macFromUnix(settings.timeBase));
    kidxSetReportFolder(index, std::filesystem::path(loc.settingsPath).parent_path().parent_path().c_str());
    resetCounters(index);
    changes = kidxHasChanges(index);
    summary = readCounters(index, "update", start);
  } catch (const HostError &) {
  }
  // What went wrong here is met again, and said, by the usual run.
  clearLibraryMessages();
  clearLibraryNotices();
  if (changes != 0) return false;
  settings.timeBase = startedAt - 1;
  settings.finishedAt = unixNow();
  settings.lastRun = summary;
  saveSettings(loc.settingsPath, settings);
  std::error_code ignored;
  std::filesystem::remove(loc.legacySettingsPath, ignored);
  printSummary(summary, global);
  return true;
}

// Folders to add that the index does not cover yet.
std::vector<std::string> foldersToAdd(const std::vector<std::string> &given, const Settings &settings,
                                      const GlobalOptions &global) {
  std::vector<std::string> out;
  for (const std::string &folder : topFolders(given, global.quiet)) {
    bool covered = false;
    for (const std::string &existing : settings.folders) {
      if (isInside(folder, existing))
        covered = true;
      else if (isInside(existing, folder)) {
        throw HostError(folder + " holds the indexed folder " + existing +
                        "; rebuild with `kurvo index` naming all folders instead");
      }
    }
    if (covered && !global.quiet) std::cerr << "kurvo: note: " << folder << " is already in the index\n";
    if (!covered) out.push_back(folder);
  }
  return out;
}

// The index's folders without those to forget; each must be one of them.
std::vector<std::string> foldersLeft(const Settings &settings, const std::vector<std::string> &forget) {
  std::vector<std::string> left = settings.folders;
  for (const std::string &given : forget) {
    std::string folder = std::filesystem::absolute(given).lexically_normal().string();
    while (folder.size() > 1 && folder.back() == '/') folder.pop_back();
    auto it = std::find(left.begin(), left.end(), folder);
    if (it == left.end()) throw HostError(folder + " is not one of the index's folders (`kurvo stats` lists them)");
    left.erase(it);
  }
  if (left.empty()) throw HostError("that would leave the index without folders; remove the index folder instead");
  return left;
}

}  // namespace

int runIndex(const GlobalOptions &global, const IndexCommandOptions &options) {
  IndexLocation loc = locateIndex(global.index, global.store);
  IndexLock lock(loc.lockPath, global.noWait, global.quiet);
  Settings settings = loadSettings(settingsToRead(loc));
  applyCommandOptions(settings.options, options);
  bool exists = indexExists(loc);
  if (options.add) {
    if (options.folders.empty()) throw HostError("--add needs at least one folder");
    if (exists) return indexRun(global, loc, settings, true, foldersToAdd(options.folders, settings, global));
    return indexRun(global, loc, settings, false, topFolders(options.folders, global.quiet));
  }
  if (!options.forget.empty()) return indexRun(global, loc, settings, false, foldersLeft(settings, options.forget));
  std::vector<std::string> given = options.folders.empty() ? settings.folders : options.folders;
  if (given.empty()) throw HostError("name at least one folder to index, as in: kurvo index ~/Documents");
  return indexRun(global, loc, settings, false, topFolders(given, global.quiet));
}

int runUpdate(const GlobalOptions &global) {
  IndexLocation loc = locateIndex(global.index, global.store);
  IndexLock lock(loc.lockPath, global.noWait, global.quiet);
  if (!indexExists(loc)) {
    throw HostError("there is no index \"" + loc.name + "\" yet; build it with: kurvo index FOLDER");
  }
  Settings settings = loadSettings(settingsToRead(loc));
  if (!global.verbose && updatedInPlace(global, loc, settings)) return kExitFound;
  return indexRun(global, loc, settings, true, {});
}

}  // namespace kurvo_cli
