// Reading "externanalyzers.txt": entries of three lines that declare converter programs.
#pragma once

#include <string>
#include <vector>

struct ExternalAnalyzerEntry {
  std::string name;       // used in include patterns
  std::string extension;  // of the converted file, or "..."
  std::string command;    // with %i and %o
};

// Entries of three non-empty lines each, separated by any number of empty or
// comment lines ('#' to the end of the line). Lines end in LF, CR LF or CR;
// trailing blanks are dropped. A line with no line break after it, and the
// one or two lines of an unfinished entry, give nothing.
std::vector<ExternalAnalyzerEntry> parseExternalAnalyzerList(const char *text, unsigned long length);

// True when command holds %i and %o once each, as a converter needs.
bool hasBothPlaceholdersOnce(const std::string &command);
