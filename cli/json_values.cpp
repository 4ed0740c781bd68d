// UTF-8 validation, base64 and ISO 8601 times for JSON output.
#include "json_values.h"

#include <ctime>

#include <nlohmann/json.hpp>

namespace kurvo_cli {

bool isValidUtf8(const std::string &bytes) {
  size_t i = 0;
  while (i < bytes.size()) {
    const unsigned char lead = static_cast<unsigned char>(bytes[i]);
    const size_t length = lead < 0x80                    ? 1
                          : lead >= 0xC2 && lead <= 0xDF ? 2
                          : lead >= 0xE0 && lead <= 0xEF ? 3
                          : lead >= 0xF0 && lead <= 0xF4 ? 4
                                                         : 0;
    if (length == 0 || i + length > bytes.size()) return false;
    for (size_t k = 1; k < length; ++k)
      if ((static_cast<unsigned char>(bytes[i + k]) & 0xC0) != 0x80) return false;
    // Overlong forms, surrogates and code points past U+10FFFF.
    const unsigned char second = length > 1 ? static_cast<unsigned char>(bytes[i + 1]) : 0x80;
    if ((lead == 0xE0 && second < 0xA0) || (lead == 0xED && second > 0x9F) || (lead == 0xF0 && second < 0x90) ||
        (lead == 0xF4 && second > 0x8F))
      return false;
    i += length;
  }
  return true;
}

std::string base64(const std::string &bytes) {
  static const char digits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string out;
  for (size_t i = 0; i < bytes.size(); i += 3) {
    uint32_t group = static_cast<unsigned char>(bytes[i]) << 16;
    if (i + 1 < bytes.size()) group |= static_cast<unsigned char>(bytes[i + 1]) << 8;
    if (i + 2 < bytes.size()) group |= static_cast<unsigned char>(bytes[i + 2]);
    out += digits[(group >> 18) & 63];
    out += digits[(group >> 12) & 63];
    out += i + 1 < bytes.size() ? digits[(group >> 6) & 63] : '=';
    out += i + 2 < bytes.size() ? digits[group & 63] : '=';
  }
  return out;
}

void putPath(nlohmann::json &object, const std::string &key, const std::string &path) {
  object[key] = path;
  if (!isValidUtf8(path)) object[key + "_base64"] = base64(path);
}

void putPaths(nlohmann::json &object, const std::string &key, const std::vector<std::string> &paths) {
  object[key] = paths;
  bool allText = true;
  for (const std::string &path : paths) allText = allText && isValidUtf8(path);
  if (allText) return;
  nlohmann::json raw = nlohmann::json::array();
  for (const std::string &path : paths) raw.push_back(base64(path));
  object[key + "_base64"] = raw;
}

std::string isoTime(int64_t unixSeconds) {
  const std::time_t t = static_cast<std::time_t>(unixSeconds);
  std::tm parts{};
  localtime_r(&t, &parts);
  char stamp[40];
  std::strftime(stamp, sizeof stamp, "%Y-%m-%dT%H:%M:%S%z", &parts);
  // %z gives +0100; ISO 8601's extended form writes +01:00.
  std::string out = stamp;
  if (out.size() >= 5) out.insert(out.size() - 2, ":");
  return out;
}

}  // namespace kurvo_cli
