// Exported operations on an index: lifecycle, patterns, indexing and its tables.
//
// The long-running operations catch every exception: the host has already
// heard about the error through its callback and gets the neutral result.
// The others let the int exception through to the host, as documented.
#include <string>

#include "api/handles.h"
#include "index/kurvo_index.h"
#include "kurvo.h"

extern "C" {

KURVO_API void kidxClearIndex(void *index) {
  try {
    CKurvoIndex *idx = asIndex(index);
    idx->clear();
    delete idx;
  } catch (...) {
  }
}

KURVO_API void kidxCreateAnalyzers(void *index) { asIndex(index)->createAnalyzers(); }

KURVO_API void kidxSetIncludeCount(void *index, int count) {
  asIndex(index)->setIncludeCount(count);
}

KURVO_API void kidxSetExcludeCount(void *index, int count) {
  asIndex(index)->setExcludeCount(count);
}

KURVO_API void kidxSetIncludePattern(void *index, int i, const char *pattern,
                                     const char *analyzerName) {
  try {
    asIndex(index)->setIncludePattern(i, pattern, analyzerName);
  } catch (...) {
  }
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

KURVO_API void kidxEmptyIndex(void *index) {
  try {
    asIndex(index)->emptyIndex();
  } catch (...) {
  }
}

KURVO_API void kidxNewFileLinks(void *index) {
  try {
    asIndex(index)->newFileLinks();
  } catch (...) {
  }
}

KURVO_API void kidxIndexExclusions(void *index) {
  try {
    asIndex(index)->indexExclusions();
  } catch (...) {
  }
}

KURVO_API void kidxIndexWord(void *index, const char *word, unsigned int fileNumber) {
  try {
    asIndex(index)->indexWord(word, fileNumber);
  } catch (...) {
  }
}

KURVO_API void kidxIndexDirectory(void *index, const char *folderPath, unsigned int parentId) {
  try {
    asIndex(index)->indexDirectory(folderPath, parentId);
  } catch (...) {
  }
}

KURVO_API void kidxPrune(void *index) {
  try {
    asIndex(index)->prune();
  } catch (...) {
  }
}

KURVO_API void kidxCompressLinks(void *index) {
  try {
    asIndex(index)->compressLinks();
  } catch (...) {
  }
}

KURVO_API void kidxStoreStorage(void *index, const char *folder) {
  try {
    asIndex(index)->storeStorage(std::string(folder));
  } catch (...) {
  }
}

KURVO_API void *kidxGetWords(void *index) { return asIndex(index)->words; }
KURVO_API void *kidxGetFiles(void *index) { return asIndex(index)->files; }
KURVO_API void *kidxGetSkipWords(void *index) { return asIndex(index)->skipWords; }
KURVO_API void *kidxGetLinks(void *index) { return asIndex(index)->links; }

}  // extern "C"
