// Exported setters and getters of an index's settings, counters and character classes.
#include "api/handles.h"
#include "index/kurvo_index.h"
#include "kurvo.h"

extern "C" {

KURVO_API double kidxGetBytesRead(void *index) { return asIndex(index)->BytesRead; }
KURVO_API unsigned int kidxGetDirectoriesRead(void *index) { return asIndex(index)->DirectoriesRead; }
KURVO_API unsigned int kidxGetFilesIndexed(void *index) { return asIndex(index)->FilesIndexed; }
KURVO_API unsigned int kidxGetContentsIndexed(void *index) { return asIndex(index)->ContentsIndexed; }
KURVO_API unsigned int kidxGetWordsIndexed(void *index) { return asIndex(index)->WordsIndexed; }
KURVO_API void kidxSetExactUpdates(void *index, int on) { asIndex(index)->ExactUpdates = on != 0; }
KURVO_API void kidxSetSizedListBlocks(void *index, int on) { asIndex(index)->SizedListBlocks = on != 0; }
KURVO_API void kidxSetGrowByRequest(void *index, int on) { asIndex(index)->GrowByRequest = on != 0; }
KURVO_API void kidxSetReadAhead(void *index, int files) { asIndex(index)->ReadAhead = files > 0 ? files : 0; }
KURVO_API void kidxSetReportSkipped(void *index, int on) { asIndex(index)->ReportSkipped = on != 0; }
KURVO_API void kidxSetReportFolder(void *index, const char *path) { asIndex(index)->reportFolder = path ? path : ""; }
KURVO_API void kidxKeepFolder(void *index, const char *path) {
  if (path && *path) asIndex(index)->keptFolders.push_back(path);
}
KURVO_API unsigned int kidxGetFilesWithForeignText(void *index) { return asIndex(index)->FilesWithForeignText; }

KURVO_API void kidxSetBytesRead(void *index, double value) { asIndex(index)->BytesRead = value; }
KURVO_API void kidxSetDirectoriesRead(void *index, unsigned int value) { asIndex(index)->DirectoriesRead = value; }
KURVO_API void kidxSetFilesIndexed(void *index, unsigned int value) { asIndex(index)->FilesIndexed = value; }
KURVO_API void kidxSetContentsIndexed(void *index, unsigned int value) { asIndex(index)->ContentsIndexed = value; }
KURVO_API void kidxSetWordsIndexed(void *index, unsigned int value) { asIndex(index)->WordsIndexed = value; }

KURVO_API void kidxSetMinWordLength(void *index, int value) { asIndex(index)->MinWordLength = value; }
KURVO_API void kidxSetMaxWordLength(void *index, int value) { asIndex(index)->MaxWordLength = value; }
KURVO_API void kidxSetMaxPerFileRead(void *index, int value) { asIndex(index)->MaxPerFileRead = value; }

KURVO_API void kidxSetConverterTimeLimit(void *index, int seconds) {
  asIndex(index)->ConverterTimeLimit = seconds > 0 ? seconds : 0;
}

KURVO_API void kidxSetConverterOutputLimit(void *index, double bytes) {
  // Above 2^62 bytes is no bound at all; the cast beyond 2^64 would be undefined.
  const double largest = 4611686018427387904.0;
  asIndex(index)->ConverterOutputLimit = bytes > 0 && bytes < largest ? static_cast<uint64_t>(bytes) : 0;
}
KURVO_API void kidxSetNumberHandling(void *index, int value) { asIndex(index)->NumberHandling = value; }
KURVO_API void kidxSetInternationalChar(void *index, int value) { asIndex(index)->InternationalChar = value; }
KURVO_API void kidxSetTrackAll(void *index, int value) { asIndex(index)->TrackAll = value; }
KURVO_API void kidxSetUseRanking(void *index, int value) { asIndex(index)->UseRanking = value; }
KURVO_API void kidxSetSavePassword(void *index, int value) { asIndex(index)->SavePassword = value; }
KURVO_API void kidxSetShowStatus(void *index, int value) { asIndex(index)->ShowStatus = value; }
KURVO_API void kidxSetIsUpdate(void *index, int value) { asIndex(index)->IsUpdate = value; }

KURVO_API void kidxSetTimeBase(void *index, double macTime) { asIndex(index)->setTimeBase(macTime); }

KURVO_API void kidxSetValidCharMask(void *index, int c, bool on) { asIndex(index)->setValidCharMask(c, on); }
KURVO_API void kidxSetValidTrailingMask(void *index, int c, bool on) { asIndex(index)->setValidTrailingMask(c, on); }
KURVO_API void kidxSetValidViewableMask(void *index, int c, bool on) { asIndex(index)->setValidViewableMask(c, on); }
KURVO_API void kidxSetNonAlphaCharMask(void *index, int c, bool on) { asIndex(index)->setNonAlphaCharMask(c, on); }

KURVO_API void kidxSetTemporaryDirectory(void *index, const char *path) { asIndex(index)->temporaryDirectory = path; }
KURVO_API void kidxSetSkipFilePath(void *index, const char *path) { asIndex(index)->skipFilePath = path; }

}  // extern "C"
