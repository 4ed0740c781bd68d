// kurvo: build, update and search full-text indexes of folders from the shell.
#include <sys/stat.h>

#include <fstream>
#include <iostream>

#include <CLI/CLI.hpp>

#include "commands.h"
#include "host_error.h"
#include "kurvo.h"
#include "library_callbacks.h"
#include "man_page.h"

using namespace kurvo_cli;

namespace {

std::string joined(const std::vector<std::string> &words) {
  std::string out;
  for (const std::string &w : words) out += (out.empty() ? "" : " ") + w;
  return out;
}

const char kDescription[] =
    "kurvo keeps a full-text index of the files below one or more folders and\n"
    "finds files by the words they hold.\n\n"
    "  kurvo index ~/Documents      build the index\n"
    "  kurvo search 'budget 2024'   files holding both words, best first\n"
    "  kurvo update                 take in what changed since\n\n"
    "Read by default: plain text and source code (UTF-8 or Latin-1), HTML (.htm,\n"
    ".html, .xhtml), RTF, PDF, the members of ZIP (.zip, .jar), TAR (.tar) and gzip\n"
    "(.gz, .tgz) archives and the messages and attachments of mailboxes (.mbox,\n"
    ".mbx), shown as archive.zip::member; files with other names by what their\n"
    "first bytes hold, and files that are not text by name only.\n"
    "Indexes live in $KURVO_HOME (default ~/.kurvo); see `kurvo help search`\n"
    "for the query language and `kurvo help converters` for other formats.";

// Every option and subcommand of the command line, filled by parsing.
struct CommandLine {
  GlobalOptions global;
  IndexCommandOptions index;
  SearchOptions search;
  ShowOptions show;
  std::vector<std::string> queryWords;
  std::vector<std::string> showQueryWords;
  std::string wordsPattern;
  bool jsonWords = false;
  bool jsonStats = false;
  std::vector<std::string> helpTopic;
  std::string manOutput;
};

void defineGlobalOptions(CLI::App &app, CommandLine &c) {
  app.fallthrough();
  app.require_subcommand(0, 1);
  const int version = kGetVersion();
  app.set_version_flag("--version", "kurvo " + std::to_string(version / 10000) + "." +
                                        std::to_string(version / 100 % 100) + "." + std::to_string(version % 100));
  app.add_option("--index,-i", c.global.index, "the named index to use")->default_str("default");
  app.add_option("--store", c.global.store, "use the storage folder DIR directly instead of a named index")
      ->type_name("DIR");
  app.add_flag("--quiet,-q", c.global.quiet, "no progress, notes or summary");
  app.add_flag("--verbose,-v", c.global.verbose, "more notes");
  app.add_flag("--no-wait", c.global.noWait, "when another run is writing the index, fail at once instead of waiting");
  app.add_option("--help-man", c.manOutput, "write the manual page")->group("")->type_name("FILE");
}

void defineIndexCommand(CLI::App &app, IndexCommandOptions &o) {
  CLI::App *index = app.add_subcommand("index", "build the index of FOLDERs (again), or add folders with --add");
  index->add_option("folders", o.folders, "folders to index (default: those indexed before)");
  index->add_flag("--add", o.add, "add the folders to the existing index without rebuilding it");
  index->add_option("--forget", o.forget, "drop FOLDER from the index (rebuilds it from the others)")
      ->type_name("FOLDER");
  index->add_option("--min-word", o.minWordLength, "shortest word kept (default 3)");
  index->add_option("--max-word", o.maxWordLength,
                    "words of up to N+1 characters are indexed, longer ones are left out (default 40)");
  index->add_option("--max-file-read", o.maxFileRead, "bytes read from one file (default 8 MB)");
  index->add_option("--ranking", o.ranking, "1: count occurrences for ranking (default), 0: do not");
  index->add_option("--track-all", o.trackAll,
                    "1: list files no pattern reads, without their words (default), 0: leave them out");
  index
      ->add_option("--include", o.include,
                   "read files matching PATTERN with ANALYZER (default utf8); tried before the defaults")
      ->type_name("PATTERN[=ANALYZER]");
  index->add_option("--exclude", o.exclude, "leave out files and folders matching PATTERN")->type_name("PATTERN");
  index->add_flag("--default-patterns", o.defaultPatterns, "forget earlier --include and --exclude");
  index->add_option("--word-chars", o.wordChars, "extra characters that belong to words, such as _");
  index->add_option("--temp", o.tempDir, "folder for temporary files and converter output (default: beside the index)");
  index
      ->add_option("--converter-timeout", o.converterTimeout,
                   "seconds a converter may run on one file before it is stopped (default 120, 0: no limit)")
      ->type_name("SECONDS");
  index
      ->add_option("--converter-max-output", o.converterMaxOutput,
                   "bytes a converter may write for one file (default 256 MiB, 0: no limit)")
      ->type_name("BYTES");
  index
      ->add_option("--read-ahead", o.readAhead,
                   "files read on a second thread ahead of the one being indexed (default 32, 0: none)")
      ->type_name("FILES");
}

void defineQueryCommands(CLI::App &app, CommandLine &c) {
  CLI::App *search = app.add_subcommand("search", "list the files matching QUERY, best first");
  search->add_option("query", c.queryWords, "the query (see: kurvo help search)")->required();
  search->add_flag("--outline,-o", c.search.outline, "show the lines holding hits under each file");
  search->add_flag("--json", c.search.json, "print the results as JSON");
  search->add_option("--limit,-n", c.search.limit, "show at most N files")->type_name("N");

  CLI::App *show = app.add_subcommand("show", "print the text of an indexed FILE, hits of QUERY highlighted");
  show->add_option("file", c.show.path, "the file (archive members as archive.zip::member)")->required();
  show->add_option("query", c.showQueryWords, "words to highlight");
  show->add_flag("--outline,-o", c.show.outline, "only the lines holding hits");

  CLI::App *words = app.add_subcommand("words", "list index words matching PATTERN with their file counts");
  words->add_option("pattern", c.wordsPattern, "a word or a pattern with * and ?")->required();
  words->add_flag("--json", c.jsonWords, "print JSON");

  CLI::App *stats = app.add_subcommand("stats", "counters, sizes on disk, folders and the last run");
  stats->add_flag("--json", c.jsonStats, "print JSON");
}

void defineOtherCommands(CLI::App &app, CommandLine &c) {
  app.add_subcommand("update", "bring the index up to date with the folders");
  app.add_subcommand("compact", "rewrite the word lists without the space updates left behind");
  app.add_subcommand("check", "read every storage file of the index and report damage (status 2)");
  CLI::App *help = app.add_subcommand(
      "help",
      "help on a command; `kurvo help search`: the query language; `kurvo help converters`: external converters");
  help->add_option("topic", c.helpTopic, "a command name");
}

// `kurvo help TOPIC`: the query language, converters, or a command's options.
int runHelp(const CLI::App &app, const std::string &topic) {
  if (topic == "search" || topic == "query") {
    std::cout << queryLanguageHelp();
    return 0;
  }
  if (topic == "converters") {
    std::cout << convertersHelp();
    return 0;
  }
  for (const CLI::App *sub : app.get_subcommands({})) {
    if (sub->get_name() == topic) {
      std::cout << sub->help("kurvo");
      return 0;
    }
  }
  std::cerr << "kurvo: there is no command \"" << topic << "\"\n";
  return kExitError;
}

int dispatch(CLI::App &app, CommandLine &c) {
  if (!c.manOutput.empty()) {
    std::ofstream out(c.manOutput);
    out << manPage(app);
    return out ? 0 : kExitError;
  }
  installLibraryCallbacks();
  auto given = [&app](const char *name) { return app.got_subcommand(name); };
  if (given("index")) return runIndex(c.global, c.index);
  if (given("update")) return runUpdate(c.global);
  if (given("search")) {
    c.search.query = joined(c.queryWords);
    return runSearch(c.global, c.search);
  }
  if (given("show")) {
    c.show.query = joined(c.showQueryWords);
    return runShow(c.global, c.show);
  }
  if (given("words")) return runWords(c.global, c.wordsPattern, c.jsonWords);
  if (given("stats")) return runStats(c.global, c.jsonStats);
  if (given("compact")) return runCompact(c.global);
  if (given("check")) return runCheck(c.global);
  if (given("help") && !c.helpTopic.empty()) return runHelp(app, c.helpTopic.front());
  std::cout << app.help();
  return given("help") ? 0 : kExitError;
}

}  // namespace

int main(int argc, char **argv) {
  // The index holds the words of private files: everything kurvo creates is
  // for its user alone, whatever the umask.
  ::umask(077);
  // Output goes through the streams alone: they need not keep step with stdio.
  std::ios::sync_with_stdio(false);
  CommandLine c;
  CLI::App app(kDescription, "kurvo");
  defineGlobalOptions(app, c);
  defineIndexCommand(app, c.index);
  defineQueryCommands(app, c);
  defineOtherCommands(app, c);
  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp &e) {
    return app.exit(e);
  } catch (const CLI::CallForAllHelp &e) {
    return app.exit(e);
  } catch (const CLI::CallForVersion &e) {
    return app.exit(e);
  } catch (const CLI::ParseError &e) {
    std::cerr << "kurvo: " << e.what() << " (see: kurvo --help)\n";
    return kExitError;
  }
  try {
    return dispatch(app, c);
  } catch (const HostError &e) {
    std::cerr << "kurvo: " << e.what() << "\n";
    return e.status();
  } catch (const std::exception &e) {
    std::cerr << "kurvo: " << e.what() << "\n";
    return kExitError;
  }
}
