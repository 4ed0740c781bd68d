// Analyzers of plain text in older 8-bit character sets: Mac Roman and DOS OEM (code page 850).
#pragma once

#include "analyzers/file_analyzer.h"

// Translations into the index's character set (ISO 8859-1 with the
// Windows-1252 punctuation at 0x80 to 0x9F); 0xFF also stands for every
// character that has no equivalent there.
extern const unsigned char macRomanChart[256];
extern const unsigned char dosOemChart[256];

class CMacRomanAnalyzer : public CFileAnalyzer {
 public:
  using CFileAnalyzer::CFileAnalyzer;
  void convertRawBuffer(char *buffer, unsigned long length) override;
};

class CDosOemAnalyzer : public CFileAnalyzer {
 public:
  using CFileAnalyzer::CFileAnalyzer;
  void convertRawBuffer(char *buffer, unsigned long length) override;
};
