// JSON values a script can rely on: paths whole whatever their bytes, times with their offset.
#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

#include <nlohmann/json.hpp>

#include "json_values.h"

using namespace kurvo_cli;

TEST(JsonValues, PathsThatAreNotUtf8TravelAsBase64Too) {
  // clang-format off
  const struct {
    std::string path;
    bool valid;
  } cases[] = {{"/home/a/caf\xC3\xA9.txt", true}, {"/home/a/caf\xE9.txt", false}, {"/x/\xF0\x9F\x98\x80", true},
               {"/x/\xC0\xAF", false}, {"/x/\xED\xA0\x80", false}, {"/x/\xE2\x82", false}, {"", true}};
  // clang-format on
  for (const auto &c : cases) {
    EXPECT_EQ(isValidUtf8(c.path), c.valid) << c.path;
    nlohmann::json item = nlohmann::json::object();
    putPath(item, "path", c.path);
    EXPECT_EQ(item.contains("path_base64"), !c.valid) << c.path;
  }
  const std::pair<const char *, const char *> vectors[] = {
      {"", ""}, {"f", "Zg=="}, {"fo", "Zm8="}, {"foo", "Zm9v"}, {"foobar", "Zm9vYmFy"}, {"\xE9\xFF", "6f8="}};
  for (const auto &[bytes, text] : vectors) EXPECT_EQ(base64(bytes), text);
  nlohmann::json list = nlohmann::json::object();
  putPaths(list, "folders", {"/ok", "/caf\xE9"});
  EXPECT_EQ(list["folders_base64"], (nlohmann::json{"L29r", "L2NhZuk="}));
}

TEST(JsonValues, TimesAreIso8601WithTheirOffset) {
  const char *zone = std::getenv("TZ");
  const std::string saved = zone ? zone : "";
  const std::pair<const char *, const char *> cases[] = {{"UTC0", "2026-11-24T09:20:01+00:00"},
                                                         {"CET-1", "2026-11-24T10:20:01+01:00"},
                                                         {"<-0330>3:30", "2026-11-24T05:50:01-03:30"}};
  for (const auto &[tz, expected] : cases) {
    setenv("TZ", tz, 1);
    tzset();
    EXPECT_EQ(isoTime(1795512001), expected) << tz;
  }
  if (zone)
    setenv("TZ", saved.c_str(), 1);
  else
    unsetenv("TZ");
  tzset();
}
