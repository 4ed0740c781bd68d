// CRtfAnalyzer: RTF documents, by cutting control words, escapes and unwanted groups out of the text.
#pragma once

#include <cstdint>

#include "analyzers/file_analyzer.h"

// No full RTF parser: the per-character hooks drop what is not text. The
// display state is 0 in text, the brace depth inside a skipped group, -1 in
// a control word and -2 after the blank behind one.
class CRtfAnalyzer : public CFileAnalyzer {
 public:
  explicit CRtfAnalyzer(CKurvoIndex *index);

  int indexBuffer(char *buffer, unsigned long length, unsigned long fileNumber, bool firstBuffer) override;
  unsigned long stripBuffer(char *source, unsigned long sourceLength, char *output, unsigned long outputSize,
                            int wrapWidth, bool displayFlag, bool firstBuffer, int *state) override;
  bool checkIndexCharacter(char *current, char **read, char **wordStart, char **write, char **bufferStart,
                           unsigned long length) override;
  bool checkStripCharacter(unsigned char *current, char **read, unsigned long *remaining, char lastOutput,
                           bool displayFlag, int *state) override;

 private:
  // Set from a file's first buffer: the document declares the Mac code page,
  // so hexadecimal escapes are Mac Roman bytes.
  void noteCodePage(const char *buffer, unsigned long length, bool firstBuffer);
  unsigned char escapedByte(const char *digits) const;

  int32_t m_bMacCodePage = 0;
};
