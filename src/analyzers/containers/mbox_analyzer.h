// CMBoxAnalyzer: a Unix mailbox as documents of its own, message texts and named base64 attachments.
#pragma once

#include <ctime>

#include "analyzers/file_analyzer.h"

// Each document is recorded under the mailbox with a name made of sender,
// date and part number, and written to a cache file in the index's folder
// that the viewer reads later; cache files are kept.
class CMBoxAnalyzer : public CFileAnalyzer {
 public:
  using CFileAnalyzer::CFileAnalyzer;

  bool canUseIndexBuffer() override;
  bool indexFile(const char *path, unsigned long fileNumber) override;
  bool extractToTempFile(const char *archivePath, const char *memberName, const char *tempPath,
                         unsigned long fileNumber) override;

  // Records one document and indexes its cache file; attachments are decoded
  // from base64 on the way.
  virtual void processMessageText(const char *name, time_t time, unsigned long parentId, const char *data,
                                  unsigned long length, bool decodeBase64);

  // "sender YYYY-MM-DD HH:MM:SS-part.extension" into out (outSize bytes).
  char *makeFileName(const char *from, time_t time, const char *extension, int part, char *out, unsigned long outSize);
  // "<temporary folder>/<file id>.<name's extension, or txt>" into out (1,024 bytes).
  void makeCachePath(const char *name, char *out, unsigned long fileId);
};

// A "Date:" header value as local calendar time; 0 when the month is unknown.
time_t parseAsctime(const char *text);
