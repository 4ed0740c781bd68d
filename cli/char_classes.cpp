// The four character classes an index cuts words with, written as byte ranges.
#include "char_classes.h"

#include <cctype>
#include <cstdio>

#include "host_error.h"

namespace kurvo_cli {

namespace {

int parseHexByte(const std::string &text, const std::string &what) {
  if (text.empty() || text.size() > 2) throw HostError("bad byte \"" + text + "\" in " + what);
  int value = 0;
  for (char c : text) {
    if (!std::isxdigit(static_cast<unsigned char>(c))) throw HostError("bad byte \"" + text + "\" in " + what);
    value = value * 16 + (std::isdigit(static_cast<unsigned char>(c)) ? c - '0' : std::tolower(c) - 'a' + 10);
  }
  return value;
}

void setRange(ByteSet &set, int from, int to) {
  for (int c = from; c <= to; ++c) set[c] = true;
}

}  // namespace

ByteSet parseByteRanges(const std::string &text, const std::string &what) {
  ByteSet set{};
  size_t pos = 0;
  while (pos < text.size()) {
    size_t comma = text.find(',', pos);
    std::string item = text.substr(pos, comma == std::string::npos ? std::string::npos : comma - pos);
    pos = comma == std::string::npos ? text.size() : comma + 1;
    if (item.empty()) continue;
    size_t dash = item.find('-');
    int from = parseHexByte(item.substr(0, dash), what);
    int to = dash == std::string::npos ? from : parseHexByte(item.substr(dash + 1), what);
    if (to < from) throw HostError("bad range \"" + item + "\" in " + what);
    setRange(set, from, to);
  }
  return set;
}

std::string formatByteRanges(const ByteSet &set) {
  std::string out;
  int c = 0;
  while (c < 256) {
    if (!set[c]) {
      ++c;
      continue;
    }
    int end = c;
    while (end + 1 < 256 && set[end + 1]) ++end;
    char buffer[16];
    if (end == c)
      std::snprintf(buffer, sizeof buffer, "%02x", c);
    else
      std::snprintf(buffer, sizeof buffer, "%02x-%02x", c, end);
    if (!out.empty()) out += ",";
    out += buffer;
    c = end + 1;
  }
  return out;
}

CharClasses defaultCharClasses() {
  CharClasses classes;
  ByteSet letters{};
  setRange(letters, '0', '9');
  setRange(letters, 'A', 'Z');
  setRange(letters, 'a', 'z');
  setRange(letters, 0xC0, 0xFF);
  letters[0xD7] = false;  // multiplication sign
  letters[0xF7] = false;  // division sign
  classes.wordStart = letters;
  classes.wordRest = letters;
  setRange(classes.viewable, 0x20, 0x7E);
  classes.viewable['\t'] = true;
  setRange(classes.viewable, 0xA0, 0xFF);
  setRange(classes.nonAlpha, '0', '9');
  for (unsigned char c : std::string("-_.,:;'/@")) classes.nonAlpha[c] = true;
  return classes;
}

}  // namespace kurvo_cli
