// The parser of "externanalyzers.txt".
#include "analyzers/external_analyzer_list.h"

namespace {

std::string trimmedLine(const char *start, const char *end) {
  while (end > start && (end[-1] == ' ' || end[-1] == '\t')) --end;
  return std::string(start, end);
}

}  // namespace

std::vector<ExternalAnalyzerEntry> parseExternalAnalyzerList(const char *text, unsigned long length) {
  std::vector<ExternalAnalyzerEntry> entries;
  std::vector<std::string> lines;
  const char *lineStart = text;
  bool inComment = false;
  for (unsigned long i = 0; i < length; ++i) {
    char c = text[i];
    // CR LF ends a line as a comment would, the LF then ends the comment; a
    // lone CR is a line feed.
    if (c == '\r') c = i + 1 < length && text[i + 1] == '\n' ? '#' : '\n';
    if (inComment) {
      if (c == '\n') {
        inComment = false;
        lineStart = text + i + 1;
      }
      continue;
    }
    if (c != '#' && c != '\n') continue;
    std::string line = trimmedLine(lineStart, text + i);
    if (!line.empty()) lines.push_back(std::move(line));
    if (lines.size() == 3) {
      entries.push_back({lines[0], lines[1], lines[2]});
      lines.clear();
    }
    if (c == '#')
      inComment = true;
    else
      lineStart = text + i + 1;
  }
  return entries;
}

bool hasBothPlaceholdersOnce(const std::string &command) {
  int inputs = 0, outputs = 0;
  for (size_t i = 0; i + 1 < command.size(); ++i) {
    if (command[i] != '%') continue;
    if (command[i + 1] == 'i') ++inputs;
    if (command[i + 1] == 'o') ++outputs;
  }
  return inputs == 1 && outputs == 1;
}
