// Conversions through the library's UTF-8 helpers, chosen by the locale's character set.
#include "terminal_text.h"

#include <langinfo.h>

#include <array>
#include <cctype>
#include <clocale>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "kurvo.h"

namespace kurvo_cli {

namespace {

std::string libraryToUtf8(const std::string &text) {
  std::vector<char> out(text.size() * 3 + 1);
  kTextToUtf8(text.c_str(), out.data(), static_cast<unsigned>(out.size()));
  return out.data();
}

// The locale the environment names, for when its files are missing (as for
// a program run under an emulator): the first of LC_ALL, LC_CTYPE and LANG set.
bool environmentNamesUtf8() {
  for (const char *name : {"LC_ALL", "LC_CTYPE", "LANG"}) {
    const char *value = std::getenv(name);
    if (!value || !*value) continue;
    std::string lower;
    for (const char *c = value; *c; ++c) lower += static_cast<char>(std::tolower(static_cast<unsigned char>(*c)));
    return lower.find("utf-8") != std::string::npos || lower.find("utf8") != std::string::npos;
  }
  return false;
}

}  // namespace

// Read on first use: only commands that show or take index text need it,
// and loading the locale's files is a good part of a short command's run.
// Only the character set follows the locale: numbers and messages stay as
// they are.
bool terminalIsUtf8() {
  static const bool utf8 = [] {
    std::setlocale(LC_CTYPE, "");
    const char *codeset = nl_langinfo(CODESET);
    const bool named = codeset && (std::strcmp(codeset, "UTF-8") == 0 || std::strcmp(codeset, "utf8") == 0);
    if (!named && (!codeset || std::strcmp(codeset, "ANSI_X3.4-1968") == 0)) return environmentNamesUtf8();
    return named;
  }();
  return utf8;
}

std::string asUtf8(const std::string &text) {
  // Index text holds no NUL; the library converts up to one.
  return libraryToUtf8(text);
}

// Text that reads the same either way (plain ASCII, mostly) leaves the
// locale unread.
std::string forTerminal(const std::string &text) {
  std::string converted = asUtf8(text);
  return converted != text && terminalIsUtf8() ? converted : text;
}

const std::string &terminalCharacter(unsigned char byte) {
  static const std::array<std::string, 256> utf8 = [] {
    std::array<std::string, 256> table;
    for (int c = 0; c < 256; ++c)
      table[c] = c == 0 ? std::string(1, '\0') : libraryToUtf8(std::string(1, static_cast<char>(c)));
    return table;
  }();
  static const std::array<std::string, 256> raw = [] {
    std::array<std::string, 256> table;
    for (int c = 0; c < 256; ++c) table[c] = std::string(1, static_cast<char>(c));
    return table;
  }();
  return utf8[byte] != raw[byte] && terminalIsUtf8() ? utf8[byte] : raw[byte];
}

std::string fromTerminal(const std::string &text, unsigned *foreign) {
  if (foreign) *foreign = 0;
  std::vector<char> out(text.size() + 1);
  const unsigned count = kTextFromUtf8(text.c_str(), out.data(), static_cast<unsigned>(out.size()));
  if ((count == 0 && text == out.data()) || !terminalIsUtf8()) return text;
  if (foreign) *foreign = count;
  return out.data();
}

}  // namespace kurvo_cli
