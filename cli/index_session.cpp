// One open index: created or reopened on a storage folder and configured
// from the settings (word lengths, character classes, analyzers, patterns).
#include "index_session.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <functional>

#include "host_error.h"
#include "kurvo.h"
#include "library_callbacks.h"

namespace kurvo_cli {

IndexSession::IndexSession(const std::string &storeDir, bool create) : m_storeDir(storeDir) {
  clearLibraryMessages();
  setStorageFolder(storeDir);
  m_index = kCreateNewIndex(create ? 1 : 0, storeDir.c_str());
  if (!m_index) {
    throwIfLibraryFailed();
    throw HostError("the index at " + storeDir + " cannot be opened");
  }
}

IndexSession::~IndexSession() {
  if (m_index) kidxClearIndex(m_index);
}

namespace {

void setMasks(void *index, const CharClasses &chars) {
  for (int c = 0; c < 256; ++c) {
    kidxSetValidCharMask(index, c, chars.wordStart[c]);
    kidxSetValidTrailingMask(index, c, chars.wordRest[c]);
    kidxSetValidViewableMask(index, c, chars.viewable[c]);
    kidxSetNonAlphaCharMask(index, c, chars.nonAlpha[c]);
  }
}

// Extracted members and converted files hold whole texts. The default folder
// lies inside the (private) store; a folder given with --temp may be shared,
// so kurvo works in a folder of its own there, made for this user alone, and
// refuses one that someone else made.
std::string privateTemporaryFolder(const IndexOptions &options, const std::string &storeDir) {
  std::string temp = temporaryFolder(options, storeDir);
  std::error_code ignored;
  if (options.tempDir.empty()) {
    std::filesystem::create_directories(temp, ignored);
    return temp;
  }
  // Named after the store, the same for a run's work folder ("store.new/")
  // and the store it becomes, so that the viewer finds what a run kept.
  std::string store = storeDir;
  const std::string work = ".new/";
  if (store.size() > work.size() && store.compare(store.size() - work.size(), work.size(), work) == 0)
    store.replace(store.size() - work.size(), work.size(), "/");
  char id[32];
  std::snprintf(id, sizeof id, "%lx", static_cast<unsigned long>(std::hash<std::string>{}(store)));
  temp += "/kurvo-" + std::to_string(::getuid()) + "-" + id;
  ::mkdir(temp.c_str(), 0700);
  struct stat info {};
  if (::lstat(temp.c_str(), &info) != 0 || !S_ISDIR(info.st_mode) || info.st_uid != ::getuid() ||
      (info.st_mode & 077) != 0) {
    throw HostError(temp + " is not a private folder of this user; give another --temp");
  }
  return temp;
}

}  // namespace

std::vector<IncludeRule> IndexSession::configure(const IndexOptions &options, const std::string &skipFile,
                                                 bool showStatus) {
  void *index = m_index;
  kidxSetMinWordLength(index, options.minWordLength);
  kidxSetMaxWordLength(index, options.maxWordLength);
  kidxSetMaxPerFileRead(index, options.maxFileRead);
  kidxSetUseRanking(index, options.ranking ? 1 : 0);
  kidxSetTrackAll(index, options.trackAll ? 1 : 0);
  kidxSetNumberHandling(index, 0);
  kidxSetInternationalChar(index, 1);
  kidxSetSavePassword(index, 0);
  kidxSetShowStatus(index, showStatus ? 1 : 0);
  kidxSetIsUpdate(index, 0);
  kidxSetExactUpdates(index, 1);
  kidxSetSizedListBlocks(index, 1);
  kidxSetGrowByRequest(index, 1);
  // Reading ahead keeps the disk busy while words are cut: a cold cache then
  // costs little more than a warm one.
  kidxSetReadAhead(index, options.readAhead);
  kidxSetReportSkipped(index, 1);
  setMasks(index, options.chars);
  const std::string temp = privateTemporaryFolder(options, m_storeDir);
  kidxSetTemporaryDirectory(index, temp.c_str());
  kidxSetConverterTimeLimit(index, options.converterTimeout);
  kidxSetConverterOutputLimit(index, options.converterMaxOutput);
  kidxSetSkipFilePath(index, skipFile.c_str());

  clearLibraryMessages();
  clearLibraryNotices();
  callLibrary([&] { kidxCreateAnalyzers(index); });

  std::vector<IncludeRule> missing;
  callLibrary([&] { kidxSetIncludeCount(index, static_cast<int>(options.include.size())); });
  for (size_t i = 0; i < options.include.size(); ++i) {
    const IncludeRule &rule = options.include[i];
    clearLibraryMessages();
    kidxSetIncludePattern(index, static_cast<int>(i), rule.pattern.c_str(), rule.analyzer.c_str());
    if (!libraryWarnings().empty()) missing.push_back(rule);
    throwIfLibraryFailed();
  }
  callLibrary([&] { kidxSetExcludeCount(index, static_cast<int>(options.exclude.size())); });
  for (size_t i = 0; i < options.exclude.size(); ++i) {
    callLibrary([&] { kidxSetExcludePattern(index, static_cast<int>(i), options.exclude[i].c_str()); });
  }
  clearLibraryMessages();
  return missing;
}

}  // namespace kurvo_cli
