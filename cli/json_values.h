// Paths and times in the forms a script reading kurvo's JSON can rely on.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <nlohmann/json_fwd.hpp>

namespace kurvo_cli {

bool isValidUtf8(const std::string &bytes);
std::string base64(const std::string &bytes);

// Sets object[key] to the path as text. A path that is not valid UTF-8 is
// shown with U+FFFD and also given whole under key + "_base64".
void putPath(nlohmann::json &object, const std::string &key, const std::string &path);
// The same for a list of paths: key + "_base64" lists them all when any is not UTF-8.
void putPaths(nlohmann::json &object, const std::string &key, const std::vector<std::string> &paths);

// ISO 8601 local time with its UTC offset: "2026-11-24T10:20:01+01:00".
std::string isoTime(int64_t unixSeconds);

}  // namespace kurvo_cli
