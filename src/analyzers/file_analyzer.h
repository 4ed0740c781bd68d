// CFileAnalyzer: cuts a file into words for the index and into display text.
#pragma once

#include <cstdint>

class CKurvoIndex;

// The base class handles plain text ("generic"); derived analyzers convert
// buffers, hook single characters or replace whole operations. One object of
// each kind serves every file of its index, one file at a time.
class CFileAnalyzer {
 public:
  explicit CFileAnalyzer(CKurvoIndex *index);
  virtual ~CFileAnalyzer();

  CFileAnalyzer(const CFileAnalyzer &) = delete;
  CFileAnalyzer &operator=(const CFileAnalyzer &) = delete;

  // True when bytes in memory can be indexed through indexBuffer.
  virtual bool canUseIndexBuffer();
  // Cuts one buffer into words for fileNumber; may rewrite the buffer and
  // leaves an unfinished last word in the index's carry-over buffer.
  virtual int indexBuffer(char *buffer, unsigned long length, unsigned long fileNumber, bool firstBuffer);
  // Reads and indexes a whole file; false when it cannot be opened.
  virtual bool indexFile(const char *path, unsigned long fileNumber);
  // Converts a buffer in place to the index's character set.
  virtual void convertRawBuffer(char *buffer, unsigned long length);
  // Containers write member memberName to tempPath; the base has no members.
  virtual bool extractToTempFile(const char *archivePath, const char *memberName, const char *tempPath,
                                 unsigned long fileNumber);
  // A malloc'ed NUL-terminated block of at most maxLength + 1 bytes of
  // display text; the caller frees it. Raises "CannotOpenContentsFile".
  virtual char *fillDisplayBuffer(const char *path, unsigned long fileNumber, unsigned long maxLength, int wrapWidth,
                                  bool displayFlag);
  // Writes display text for one buffer; returns the bytes written.
  virtual unsigned long stripBuffer(char *source, unsigned long sourceLength, char *output, unsigned long outputSize,
                                    int wrapWidth, bool displayFlag, bool firstBuffer, int *state);
  // Per-character hooks, called only when m_bHooks is set; true when the
  // hook consumed the character.
  // checkIndexCharacter: current points at a copy of the byte under *read,
  // which the hook may replace; on false the base classifies *current and
  // steps past *read, on true it goes on at *read as the hook left it.
  // checkStripCharacter: current likewise; remaining counts the bytes after
  // *read. A hook that takes more bytes moves *read to the last of them and
  // lowers remaining to match; after true the base steps past *read.
  virtual bool checkIndexCharacter(char *current, char **read, char **wordStart, char **write, char **bufferStart,
                                   unsigned long length);
  virtual bool checkStripCharacter(unsigned char *current, char **read, unsigned long *remaining, char lastOutput,
                                   bool displayFlag, int *state);

 protected:
  // Puts count bytes (at most what the buffer holds) into the index's
  // carry-over buffer, NUL-terminated: mark-up cut by a buffer's end.
  void carryBytes(const char *from, unsigned long count);

  CKurvoIndex *m_pIndex;
  int32_t m_bHooks = 0;
};
