// Writing results: highlighting on terminals, sizes, times and JSON.
#pragma once

#include <cstdint>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include <nlohmann/json_fwd.hpp>

namespace kurvo_cli {

// True when standard output is a terminal and NO_COLOR is not set.
bool colourOutput();

// Writes text with the given (offset, length) spans highlighted; each line
// is prefixed with indent.
void writeHighlighted(std::ostream &out, const std::string &text, const std::vector<std::pair<size_t, size_t>> &hits,
                      bool colour, const std::string &indent = "");

std::string humanBytes(double bytes);
// "2026-11-22 05:40:00" in local time, from Unix seconds.
std::string localTime(int64_t unixSeconds);
// Seconds since 1904 to Unix seconds.
int64_t unixFromMac(double macTime);
double macFromUnix(int64_t unixSeconds);

// JSON text with invalid UTF-8 replaced (paths are raw bytes).
std::string dumpJson(const nlohmann::json &value, int indent);

}  // namespace kurvo_cli
