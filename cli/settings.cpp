// An index's settings file: its folders, the last run, and its options.
// Tables laid out by hand:
// clang-format off
#include "settings.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include <nlohmann/json.hpp>

#include "host_error.h"

using nlohmann::json;

namespace kurvo_cli {

std::vector<IncludeRule> defaultIncludeRules() {
  std::vector<IncludeRule> rules;
  // Containers and documents come first: the first matching pattern decides,
  // so "*/README*" must not catch README.gz before the gzip rule does.
  const std::pair<const char *, const char *> documents[] = {
      {"*.zip", "zip"},   {"*.jar", "zip"},   {"*.tar", "tar"},     {"*.tgz", "gzip"},
      {"*.gz", "gzip"},   {"*.pdf", "pdf"},   {"*.htm", "html"},    {"*.html", "html"},
      {"*.xhtml", "html"}, {"*.rtf", "rtf"},  {"*.mbox", "mbox"},   {"*.mbx", "mbox"},
  };
  for (const auto &[pattern, analyzer] : documents) rules.push_back({pattern, analyzer});
  const char *plain[] = {
      "*.txt", "*.text", "*.md", "*.markdown", "*.rst", "*.adoc", "*.org", "*.tex", "*.csv",
      "*.log", "*.c", "*.h", "*.cc", "*.cpp", "*.cxx", "*.hpp", "*.hh", "*.java", "*.py",
      "*.rb", "*.pl", "*.pm", "*.sh", "*.bash", "*.js", "*.ts", "*.go", "*.rs", "*.css",
      "*.xml", "*.json", "*.yaml", "*.yml", "*.toml", "*.ini", "*.cfg", "*.conf", "*.cmake",
      "*.el", "*.lisp", "*.scm", "*.sql", "*.php", "*.lua", "*.tcl", "*.diff", "*.patch",
      "*/README*", "*/NEWS*", "*/CHANGES*", "*/ChangeLog*", "*/changelog*", "*/copyright",
      "*/AUTHORS*", "*/THANKS*", "*/TODO*", "*/INSTALL*", "*/COPYING*", "*/LICENSE*",
      "*/Makefile", "*/CMakeLists.txt",
  };
  for (const char *pattern : plain) {
    rules.push_back({pattern, "utf8"});
    // Members of archives are matched by their bare name ("changelog.Debian"
    // inside changelog.Debian.gz), which has no folder before it.
    if (std::string(pattern).rfind("*/", 0) == 0) rules.push_back({pattern + 2, "utf8"});
  }
  // Last: any other name is read by what its first bytes hold.
  rules.push_back({"*", "auto"});
  return rules;
}

std::vector<std::string> defaultExcludePatterns() {
  return {"*/.git", "*/.svn", "*/.hg", "*/.bzr", "*/CVS", "*/_darcs", "*/node_modules",
          "*/__pycache__", "*/.cache", "*/.tox", "*/.venv", "*/build", "*/*.o",
          "*/*.so", "*/*.a", "*/*.pyc", "*/*.class"};
}

IndexOptions defaultOptions() {
  IndexOptions options;
  options.include = defaultIncludeRules();
  options.exclude = defaultExcludePatterns();
  options.chars = defaultCharClasses();
  return options;
}

std::string temporaryFolder(const IndexOptions &options, const std::string &storeDir) {
  if (!options.tempDir.empty()) return options.tempDir;
  return storeDir + "tmp";
}

namespace {

json optionsToJson(const IndexOptions &o) {
  json include = json::array();
  for (const IncludeRule &rule : o.include) include.push_back({{"pattern", rule.pattern}, {"analyzer", rule.analyzer}});
  return {
      {"min_word_length", o.minWordLength},
      {"max_word_length", o.maxWordLength},
      {"max_file_read", o.maxFileRead},
      {"ranking", o.ranking},
      {"track_all", o.trackAll},
      {"proximity", o.proximity},
      {"temp_dir", o.tempDir},
      {"converter_timeout", o.converterTimeout},
      {"converter_max_output", o.converterMaxOutput},
      {"read_ahead", o.readAhead},
      {"include", include},
      {"exclude", o.exclude},
      {"chars",
       {{"word_start", formatByteRanges(o.chars.wordStart)},
        {"word_rest", formatByteRanges(o.chars.wordRest)},
        {"viewable", formatByteRanges(o.chars.viewable)},
        {"non_alpha", formatByteRanges(o.chars.nonAlpha)}}},
  };
}

IndexOptions optionsFromJson(const json &j) {
  IndexOptions o = defaultOptions();
  o.minWordLength = j.value("min_word_length", o.minWordLength);
  o.maxWordLength = j.value("max_word_length", o.maxWordLength);
  o.maxFileRead = j.value("max_file_read", o.maxFileRead);
  o.ranking = j.value("ranking", o.ranking);
  o.trackAll = j.value("track_all", o.trackAll);
  o.proximity = j.value("proximity", o.proximity);
  o.tempDir = j.value("temp_dir", o.tempDir);
  o.converterTimeout = j.value("converter_timeout", o.converterTimeout);
  o.converterMaxOutput = j.value("converter_max_output", o.converterMaxOutput);
  o.readAhead = j.value("read_ahead", o.readAhead);
  if (j.contains("include")) {
    o.include.clear();
    for (const json &rule : j.at("include")) {
      o.include.push_back({rule.at("pattern").get<std::string>(), rule.value("analyzer", std::string("generic"))});
    }
  }
  if (j.contains("exclude")) o.exclude = j.at("exclude").get<std::vector<std::string>>();
  if (j.contains("chars")) {
    const json &c = j.at("chars");
    if (c.contains("word_start")) o.chars.wordStart = parseByteRanges(c.at("word_start"), "chars.word_start");
    if (c.contains("word_rest")) o.chars.wordRest = parseByteRanges(c.at("word_rest"), "chars.word_rest");
    if (c.contains("viewable")) o.chars.viewable = parseByteRanges(c.at("viewable"), "chars.viewable");
    if (c.contains("non_alpha")) o.chars.nonAlpha = parseByteRanges(c.at("non_alpha"), "chars.non_alpha");
  }
  return o;
}

json summaryToJson(const RunSummary &s) {
  return {{"kind", s.kind},   {"folders", s.folders}, {"files", s.files},     {"contents", s.contents},
          {"words", s.words}, {"bytes", s.bytes},     {"seconds", s.seconds}};
}

RunSummary summaryFromJson(const json &j) {
  RunSummary s;
  s.kind = j.value("kind", std::string());
  s.folders = j.value("folders", 0u);
  s.files = j.value("files", 0u);
  s.contents = j.value("contents", 0u);
  s.words = j.value("words", 0u);
  s.bytes = j.value("bytes", 0.0);
  s.seconds = j.value("seconds", 0.0);
  return s;
}

}  // namespace

Settings loadSettings(const std::string &path) {
  Settings settings;
  settings.options = defaultOptions();
  std::ifstream in(path);
  if (!in) return settings;
  try {
    json j = json::parse(in);
    settings.folders = j.value("folders", std::vector<std::string>{});
    settings.timeBase = j.value("time_base", int64_t{0});
    settings.finishedAt = j.value("finished_at", int64_t{0});
    settings.linksLive = j.value("links_live", 0.0);
    if (j.contains("last_run")) settings.lastRun = summaryFromJson(j.at("last_run"));
    if (j.contains("options")) settings.options = optionsFromJson(j.at("options"));
  } catch (const json::exception &e) {
    throw HostError("the settings file " + path + " cannot be read: " + e.what());
  }
  return settings;
}

void saveSettings(const std::string &path, const Settings &settings) {
  json j = {
      {"folders", settings.folders},
      {"time_base", settings.timeBase},
      {"finished_at", settings.finishedAt},
      {"links_live", settings.linksLive},
      {"last_run", summaryToJson(settings.lastRun)},
      {"options", optionsToJson(settings.options)},
  };
  std::filesystem::path target(path);
  std::error_code ec;
  std::filesystem::create_directories(target.parent_path(), ec);
  // Written beside and renamed, so a crash never leaves half a file.
  std::string temporary = path + ".new";
  {
    std::ofstream out(temporary);
    out << j.dump(2, ' ', false, json::error_handler_t::replace) << "\n";
    if (!out) throw HostError("the settings file " + path + " cannot be written");
  }
  std::filesystem::rename(temporary, target, ec);
  if (ec) throw HostError("the settings file " + path + " cannot be written: " + ec.message());
}

}  // namespace kurvo_cli
