// kurvo: build, update and search full-text indexes of folders from the shell.
#include <sys/stat.h>

#include <clocale>
#include <fstream>
#include <iostream>

#include <CLI/CLI.hpp>

#include "commands.h"
#include "host_error.h"
#include "kurvo.h"
#include "library_callbacks.h"
#include "man_page.h"
#include "terminal_text.h"

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

}  // namespace

int main(int argc, char **argv) {
  // The index holds the words of private files: everything kurvo creates is
  // for its user alone, whatever the umask.
  ::umask(077);
  // Only the character set follows the locale: numbers and messages stay as they are.
  std::setlocale(LC_CTYPE, "");
  detectTerminalEncoding();
  GlobalOptions global;
  IndexCommandOptions indexOptions;
  SearchOptions searchOptions;
  ShowOptions showOptions;
  std::vector<std::string> queryWords;
  std::vector<std::string> showQueryWords;
  std::string wordsPattern;
  bool jsonWords = false;
  bool jsonStats = false;
  std::vector<std::string> helpTopic;
  std::string manOutput;

  CLI::App app(kDescription, "kurvo");
  app.fallthrough();
  app.require_subcommand(0, 1);
  const int version = kGetVersion();
  app.set_version_flag("--version", "kurvo " + std::to_string(version / 10000) + "." +
                                        std::to_string(version / 100 % 100) + "." + std::to_string(version % 100));
  app.add_option("--index,-i", global.index, "the named index to use")->default_str("default");
  app.add_option("--store", global.store, "use the storage folder DIR directly instead of a named index")
      ->type_name("DIR");
  app.add_flag("--quiet,-q", global.quiet, "no progress, notes or summary");
  app.add_flag("--verbose,-v", global.verbose, "more notes");
  app.add_flag("--no-wait", global.noWait, "when another run is writing the index, fail at once instead of waiting");
  app.add_option("--help-man", manOutput, "write the manual page")->group("")->type_name("FILE");

  CLI::App *index = app.add_subcommand("index", "build the index of FOLDERs (again), or add folders with --add");
  index->add_option("folders", indexOptions.folders, "folders to index (default: those indexed before)");
  index->add_flag("--add", indexOptions.add, "add the folders to the existing index without rebuilding it");
  index->add_option("--forget", indexOptions.forget, "drop FOLDER from the index (rebuilds it from the others)")
      ->type_name("FOLDER");
  index->add_option("--min-word", indexOptions.minWordLength, "shortest word kept (default 3)");
  index->add_option("--max-word", indexOptions.maxWordLength, "words of up to N+1 characters are indexed, longer ones are left out (default 40)");
  index->add_option("--max-file-read", indexOptions.maxFileRead, "bytes read from one file (default 8 MB)");
  index->add_option("--ranking", indexOptions.ranking, "1: count occurrences for ranking (default), 0: do not");
  index->add_option("--track-all", indexOptions.trackAll,
                    "1: list files no pattern reads, without their words (default), 0: leave them out");
  index->add_option("--include", indexOptions.include,
                    "read files matching PATTERN with ANALYZER (default utf8); tried before the defaults")
      ->type_name("PATTERN[=ANALYZER]");
  index->add_option("--exclude", indexOptions.exclude, "leave out files and folders matching PATTERN")
      ->type_name("PATTERN");
  index->add_flag("--default-patterns", indexOptions.defaultPatterns, "forget earlier --include and --exclude");
  index->add_option("--word-chars", indexOptions.wordChars, "extra characters that belong to words, such as _");
  index->add_option("--temp", indexOptions.tempDir,
                    "folder for temporary files and converter output (default: beside the index)");
  index->add_option("--converter-timeout", indexOptions.converterTimeout,
                    "seconds a converter may run on one file before it is stopped (default 120, 0: no limit)")
      ->type_name("SECONDS");
  index->add_option("--converter-max-output", indexOptions.converterMaxOutput,
                    "bytes a converter may write for one file (default 256 MiB, 0: no limit)")
      ->type_name("BYTES");

  CLI::App *update = app.add_subcommand("update", "bring the index up to date with the folders");

  CLI::App *search = app.add_subcommand("search", "list the files matching QUERY, best first");
  search->add_option("query", queryWords, "the query (see: kurvo help search)")->required();
  search->add_flag("--outline,-o", searchOptions.outline, "show the lines holding hits under each file");
  search->add_flag("--json", searchOptions.json, "print the results as JSON");
  search->add_option("--limit,-n", searchOptions.limit, "show at most N files")->type_name("N");

  CLI::App *show = app.add_subcommand("show", "print the text of an indexed FILE, hits of QUERY highlighted");
  show->add_option("file", showOptions.path, "the file (archive members as archive.zip::member)")->required();
  show->add_option("query", showQueryWords, "words to highlight");
  show->add_flag("--outline,-o", showOptions.outline, "only the lines holding hits");

  CLI::App *words = app.add_subcommand("words", "list index words matching PATTERN with their file counts");
  words->add_option("pattern", wordsPattern, "a word or a pattern with * and ?")->required();
  words->add_flag("--json", jsonWords, "print JSON");

  CLI::App *stats = app.add_subcommand("stats", "counters, sizes on disk, folders and the last run");
  stats->add_flag("--json", jsonStats, "print JSON");

  CLI::App *compact = app.add_subcommand("compact", "rewrite the word lists without the space updates left behind");
  CLI::App *check = app.add_subcommand("check", "read every storage file of the index and report damage (status 2)");

  CLI::App *help = app.add_subcommand("help", "help on a command; `kurvo help search`: the query language; `kurvo help converters`: external converters");
  help->add_option("topic", helpTopic, "a command name");

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
    if (!manOutput.empty()) {
      std::ofstream out(manOutput);
      out << manPage(app);
      return out ? 0 : kExitError;
    }
    installLibraryCallbacks();
    if (*index) return runIndex(global, indexOptions);
    if (*update) return runUpdate(global);
    if (*search) {
      searchOptions.query = joined(queryWords);
      return runSearch(global, searchOptions);
    }
    if (*show) {
      showOptions.query = joined(showQueryWords);
      return runShow(global, showOptions);
    }
    if (*words) return runWords(global, wordsPattern, jsonWords);
    if (*stats) return runStats(global, jsonStats);
    if (*compact) return runCompact(global);
    if (*check) return runCheck(global);
    if (*help && !helpTopic.empty()) {
      if (helpTopic.front() == "search" || helpTopic.front() == "query") {
        std::cout << queryLanguageHelp();
        return 0;
      }
      if (helpTopic.front() == "converters") {
        std::cout << convertersHelp();
        return 0;
      }
      for (const CLI::App *sub : app.get_subcommands({})) {
        if (sub->get_name() == helpTopic.front()) {
          std::cout << sub->help("kurvo");
          return 0;
        }
      }
      std::cerr << "kurvo: there is no command \"" << helpTopic.front() << "\"\n";
      return kExitError;
    }
    std::cout << app.help();
    return *help ? 0 : kExitError;
  } catch (const HostError &e) {
    std::cerr << "kurvo: " << e.what() << "\n";
    return e.status();
  } catch (const std::exception &e) {
    std::cerr << "kurvo: " << e.what() << "\n";
    return kExitError;
  }
}
