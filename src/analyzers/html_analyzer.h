// CHtmlAnalyzer: HTML and similar mark-up, through the per-character hooks of the plain-text work.
#pragma once

#include "analyzers/file_analyzer.h"

// Indexing decodes character references and two-byte UTF-8; display also
// drops tags and scripts and turns paragraph, line and list tags into line
// breaks. The display state is 0 in text, 1 in a tag, -1 in a script.
class CHtmlAnalyzer : public CFileAnalyzer {
 public:
  explicit CHtmlAnalyzer(CKurvoIndex *index);

  bool checkIndexCharacter(char *current, char **read, char **wordStart, char **write, char **bufferStart,
                           unsigned long length) override;
  bool checkStripCharacter(unsigned char *current, char **read, unsigned long *remaining, char lastOutput,
                           bool displayFlag, int *state) override;
};
