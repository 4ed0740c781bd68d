// Exported contents viewer: opening one indexed file for display and searching it.
#include "api/handles.h"
#include "contents/file_contents.h"
#include "index/kurvo_index.h"
#include "kurvo.h"

extern "C" {

KURVO_API void *kidxGetFileContents(void *index, unsigned int fileNumber, unsigned int maxLength, int wrapWidth,
                                    bool displayFlag, int defaultDistance) {
  try {
    return new CFileContents(asIndex(index), fileNumber, maxLength, wrapWidth, displayFlag, defaultDistance);
  } catch (...) {
    return nullptr;
  }
}

KURVO_API const char *kfcContents(void *contents) { return asContents(contents)->contents(); }

KURVO_API const char *kfcNext(void *contents) { return asContents(contents)->nextLine(); }

KURVO_API bool kfcContainsHit(void *contents, const char *query) { return asContents(contents)->containsHit(query); }

KURVO_API void kfcConvertToOutline(void *contents, const char *query) { asContents(contents)->convertToOutline(query); }

KURVO_API unsigned int kfcSearchBuffer(void *contents, unsigned int offset, const char *query) {
  return asContents(contents)->searchBuffer(offset, query);
}

KURVO_API unsigned int kfcTokenLength(void *contents, unsigned int offset) {
  return asContents(contents)->tokenLength(offset);
}

KURVO_API const char *kfcFilePath(void *contents) { return asContents(contents)->filePath(); }

KURVO_API void kfcDeleteContentsObject(void *contents) { delete asContents(contents); }

}  // extern "C"
