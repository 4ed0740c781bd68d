// The settings file: defaults, round trips, partial files and damaged ones.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>

#include <unistd.h>

#include "host_error.h"
#include "settings.h"

using namespace kurvo_cli;

namespace {

class SettingsFile : public ::testing::Test {
 protected:
  void TearDown() override { std::filesystem::remove_all(m_dir); }
  std::string path() const { return m_dir + "/sub/settings.json"; }
  void write(const std::string &text) const {
    std::filesystem::create_directories(m_dir + "/sub");
    std::ofstream(path()) << text;
  }

  const std::string m_dir =
      (std::filesystem::temp_directory_path() / ("kurvo-settings-" + std::to_string(getpid()))).string();
};

TEST_F(SettingsFile, RoundTrip) {
  Settings s;
  s.options = defaultOptions();
  s.folders = {"/a", "/b c"};
  s.timeBase = 1700000000;
  s.lastRun.kind = "update";
  s.options.minWordLength = 2;
  s.options.ranking = false;
  s.options.include = {{"*.txt", "generic"}, {"*.zip", "zip"}};
  s.options.exclude = {"*/.git"};
  s.options.chars.wordStart['_'] = true;
  saveSettings(path(), s);

  Settings r = loadSettings(path());
  EXPECT_EQ(r.folders, s.folders);
  EXPECT_EQ(r.timeBase, s.timeBase);
  EXPECT_EQ(r.lastRun.kind, "update");
  EXPECT_EQ(r.options.minWordLength, 2);
  EXPECT_FALSE(r.options.ranking);
  ASSERT_EQ(r.options.include.size(), 2u);
  EXPECT_EQ(r.options.include[1].analyzer, "zip");
  EXPECT_EQ(r.options.exclude, s.options.exclude);
  EXPECT_TRUE(r.options.chars.wordStart['_']);
  EXPECT_FALSE(r.options.chars.wordRest['_']);
}

TEST_F(SettingsFile, MissingOrPartialFileKeepsDefaults) {
  EXPECT_EQ(loadSettings(path()).options.minWordLength, 3);
  write(R"({"options": {"max_word_length": 30}})");
  Settings s = loadSettings(path());
  EXPECT_EQ(s.options.maxWordLength, 30);
  EXPECT_EQ(s.options.minWordLength, 3);
  EXPECT_EQ(s.options.include.size(), defaultIncludeRules().size());
}

TEST_F(SettingsFile, DamagedFileIsAnError) {
  write("{ not json");
  EXPECT_THROW(loadSettings(path()), HostError);
  write(R"({"options": {"chars": {"word_start": "zz"}}})");
  EXPECT_THROW(loadSettings(path()), HostError);
}

TEST(DefaultPatterns, ContainersComeBeforePlainText) {
  std::vector<IncludeRule> rules = defaultIncludeRules();
  auto find = [&](const char *pattern) {
    return std::find_if(rules.begin(), rules.end(), [&](const IncludeRule &r) { return r.pattern == pattern; });
  };
  auto gz = find("*.gz"), readme = find("*/README*");
  ASSERT_TRUE(gz < readme && readme != rules.end());
  EXPECT_EQ(gz->analyzer, "gzip");
  EXPECT_EQ(readme->analyzer, "utf8");
  EXPECT_EQ(rules.back().pattern, "*");
  EXPECT_EQ(rules.back().analyzer, "auto");
}

}  // namespace
