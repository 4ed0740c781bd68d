// Exported operations on an index: lifecycle, patterns, indexing and its tables.
//
// The long-running operations catch every exception: the host has already
// heard about the error through its callback and gets the neutral result.
// The others let the int exception through to the host, as documented.
#include <string>
#include <vector>

#include "api/handles.h"
#include "index/kurvo_index.h"
#include "kurvo.h"

extern "C" {

KURVO_API void kidxClearIndex(void *index) {
  caught([&] {
    CKurvoIndex *idx = asIndex(index);
    idx->clear();
    delete idx;
  });
}

KURVO_API void kidxCreateAnalyzers(void *index) { asIndex(index)->createAnalyzers(); }

KURVO_API void kidxSetIncludeCount(void *index, int count) { asIndex(index)->setIncludeCount(count); }

KURVO_API void kidxSetExcludeCount(void *index, int count) { asIndex(index)->setExcludeCount(count); }

KURVO_API void kidxSetIncludePattern(void *index, int i, const char *pattern, const char *analyzerName) {
  caught([&] { asIndex(index)->setIncludePattern(i, pattern, analyzerName); });
}

KURVO_API void kidxSetExcludePattern(void *index, int i, const char *pattern) {
  asIndex(index)->setExcludePattern(i, pattern);
}

KURVO_API int kidxDirMatch(void *index, const char *path, const char *pattern) {
  return asIndex(index)->dirMatch(path, pattern);
}

KURVO_API int kidxDoesWordMatch(void *index, const char *word, const char *pattern) {
  return asIndex(index)->doesWordMatch(word, pattern);
}

KURVO_API int kidxWordsWithPrefix(void *index, const char *prefix, unsigned int *entries, unsigned int capacity) {
  int count = -1;
  caught([&] {
    std::vector<uint32_t> found;
    if (!asIndex(index)->wordsWithPrefix(prefix ? prefix : "", found)) return;
    for (size_t i = 0; i < found.size() && i < capacity; ++i) entries[i] = found[i];
    count = static_cast<int>(found.size());
  });
  return count;
}

KURVO_API void kidxEmptyIndex(void *index) {
  caught([&] { asIndex(index)->emptyIndex(); });
}

KURVO_API void kidxNewFileLinks(void *index) {
  caught([&] { asIndex(index)->newFileLinks(); });
}

KURVO_API void kidxIndexExclusions(void *index) {
  caught([&] { asIndex(index)->indexExclusions(); });
}

KURVO_API void kidxIndexWord(void *index, const char *word, unsigned int fileNumber) {
  caught([&] { asIndex(index)->indexWord(word, fileNumber); });
}

KURVO_API void kidxIndexDirectory(void *index, const char *folderPath, unsigned int parentId) {
  caught([&] { asIndex(index)->indexDirectory(folderPath, parentId); });
}

KURVO_API void kidxPrune(void *index) {
  caught([&] { asIndex(index)->prune(); });
}

KURVO_API int kidxHasChanges(void *index) {
  int answer = -1;
  caught([&] { answer = asIndex(index)->hasChanges() ? 1 : 0; });
  return answer;
}

KURVO_API void kidxCompressLinks(void *index) {
  caught([&] { asIndex(index)->compressLinks(); });
}

KURVO_API void kidxStoreWordOrder(void *index, const char *folder) {
  caught([&] { asIndex(index)->storeWordOrder(std::string(folder)); });
}

KURVO_API void kidxGetLinkSpace(void *index, double *live, double *dead) {
  caught([&] {
    double l = 0, d = 0;
    asIndex(index)->measureLinkSpace(l, d);
    if (live) *live = l;
    if (dead) *dead = d;
  });
}

KURVO_API void kidxCompactLinks(void *index) {
  caught([&] { asIndex(index)->compactLinks(); });
}

KURVO_API void kidxStoreStorage(void *index, const char *folder) {
  caught([&] { asIndex(index)->storeStorage(std::string(folder)); });
}

KURVO_API void *kidxGetWords(void *index) { return asIndex(index)->words; }
KURVO_API void *kidxGetFiles(void *index) { return asIndex(index)->files; }
KURVO_API void *kidxGetSkipWords(void *index) { return asIndex(index)->skipWords; }
KURVO_API void *kidxGetLinks(void *index) { return asIndex(index)->links; }

}  // extern "C"
