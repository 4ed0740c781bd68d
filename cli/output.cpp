// Writing results: highlighting on terminals, sizes, times and JSON.
#include "output.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>

#include <nlohmann/json.hpp>

#include "kurvo.h"
#include "terminal_text.h"

namespace kurvo_cli {

namespace {

const char kHighlightOn[] = "\x1b[1;31m";
const char kHighlightOff[] = "\x1b[0m";
const char kPlainMark[] = "";

}  // namespace

bool colourOutput() {
  const char *noColour = std::getenv("NO_COLOR");
  return ::isatty(STDOUT_FILENO) == 1 && !(noColour && *noColour);
}

void writeHighlighted(std::ostream &out, const std::string &text, const std::vector<std::pair<size_t, size_t>> &hits,
                      bool colour, const std::string &indent) {
  const char *on = colour ? kHighlightOn : kPlainMark;
  const char *off = colour ? kHighlightOff : kPlainMark;
  size_t hit = 0;
  bool lineStart = true;
  for (size_t i = 0; i < text.size(); ++i) {
    if (lineStart && !indent.empty()) out << indent;
    lineStart = false;
    if (hit < hits.size() && i == hits[hit].first) out << on;
    out << terminalCharacter(static_cast<unsigned char>(text[i]));
    if (hit < hits.size() && i + 1 == hits[hit].first + hits[hit].second) {
      out << off;
      ++hit;
    }
    if (text[i] == '\n') lineStart = true;
  }
  if (!text.empty() && text.back() != '\n') out << '\n';
}

std::string humanBytes(double bytes) {
  const char *units[] = {"B", "KB", "MB", "GB", "TB"};
  int unit = 0;
  while (bytes >= 1000.0 && unit < 4) {
    bytes /= 1000.0;
    ++unit;
  }
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, unit == 0 ? "%.0f %s" : "%.1f %s", bytes, units[unit]);
  return buffer;
}

std::string localTime(int64_t unixSeconds) {
  std::time_t t = static_cast<std::time_t>(unixSeconds);
  std::tm parts{};
  localtime_r(&t, &parts);
  char buffer[32];
  std::strftime(buffer, sizeof buffer, "%Y-%m-%d %H:%M:%S", &parts);
  return buffer;
}

int64_t unixFromMac(double macTime) { return static_cast<int64_t>(macTime - KURVO_MAC_EPOCH_OFFSET); }
double macFromUnix(int64_t unixSeconds) { return static_cast<double>(unixSeconds) + KURVO_MAC_EPOCH_OFFSET; }

std::string dumpJson(const nlohmann::json &value, int indent) {
  return value.dump(indent, ' ', false, nlohmann::json::error_handler_t::replace);
}

}  // namespace kurvo_cli
