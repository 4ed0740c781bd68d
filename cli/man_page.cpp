// The manual page, written in roff from the command's own help texts.
#include "man_page.h"

#include <sstream>

#include <CLI/CLI.hpp>

#include "commands.h"

namespace kurvo_cli {

namespace {

// Help text as literal roff: leading dots and backslashes escaped.
std::string literal(const std::string &text) {
  std::ostringstream out;
  std::istringstream in(text);
  std::string line;
  while (std::getline(in, line)) {
    std::string escaped;
    for (char c : line) {
      if (c == '\\')
        escaped += "\\e";
      else if (c == '-')
        escaped += "\\-";
      else
        escaped += c;
    }
    if (!escaped.empty() && (escaped[0] == '.' || escaped[0] == '\'')) escaped = "\\&" + escaped;
    out << escaped << "\n";
  }
  return out.str();
}

}  // namespace

std::string manPage(const CLI::App &app) {
  std::ostringstream out;
  out << ".TH KURVO 1 \"\" \"kurvo\" \"User Commands\"\n";
  out << ".SH NAME\nkurvo \\- build, update and search a full-text index of folders\n";
  out << ".SH SYNOPSIS\n.B kurvo\n[\\fIOPTIONS\\fR] \\fICOMMAND\\fR [\\fIARGS\\fR]\n";
  out << ".SH DESCRIPTION\n.nf\n" << literal(app.help("", CLI::AppFormatMode::Normal)) << ".fi\n";
  out << ".SH COMMANDS\n";
  for (const CLI::App *sub : app.get_subcommands([](const CLI::App *s) { return !s->get_group().empty(); })) {
    out << ".SS " << sub->get_name() << "\n.nf\n" << literal(sub->help("kurvo", CLI::AppFormatMode::Normal)) << ".fi\n";
  }
  out << ".SH QUERY LANGUAGE\n.nf\n" << literal(queryLanguageHelp()) << ".fi\n";
  out << ".SH EXTERNAL CONVERTERS\n.nf\n" << literal(convertersHelp()) << ".fi\n";
  out << ".SH FILES\n.TP\n.I ~/.kurvo/indexes/NAME/store/\nthe storage of a named index (KURVO_HOME replaces "
         "~/.kurvo)\n"
      << ".TP\n.I ~/.kurvo/indexes/NAME/settings.json\nits settings: folders, options and the last run\n"
      << ".TP\n.I ~/.kurvo/skipfile.txt\nwords never indexed\n"
      << ".TP\n.I ~/.kurvo/externanalyzers.txt\nexternal converter programs\n";
  out << ".SH EXIT STATUS\n0 found or done, 1 nothing found, 2 error, 130 interrupted.\n";
  return out.str();
}

}  // namespace kurvo_cli
