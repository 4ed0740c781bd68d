// How to declare an external converter, for `kurvo help converters` and the man page.
#include "commands.h"

namespace kurvo_cli {

const char *convertersHelp() {
  return R"(External converters: reading formats kurvo has no analyzer for

Declare converters in $KURVO_HOME/externanalyzers.txt (default
~/.kurvo/externanalyzers.txt), one entry of three lines each; empty lines and
lines starting with "#" separate entries:

  NAME        the analyzer's name, used with --include PATTERN=NAME
  EXTENSION   of the file the converter writes, without its dot ("txt",
              "html"), or "..." to keep the source's inner extension
  COMMAND     a shell command holding %i (the file to read) and %o (the file
              to write) once each

The converted file is then read by the analyzer its extension selects (".txt"
as plain text, ".html" as HTML). kurvo quotes both paths for the shell, so
write %i and %o bare: a file name never runs a command. A converter that runs
longer than --converter-timeout (120 seconds) is stopped and its file is
listed without words; one that writes more than --converter-max-output
(256 MiB) is stopped at that size. Converted text is kept beside the index for
`kurvo show`. An entry whose command lacks %i or %o is left out with a note.

Example externanalyzers.txt:

  # PDF through poppler-utils
  pdftotext
  txt
  pdftotext -enc Latin1 %i %o

  # Word 97 documents through antiword
  antiword
  txt
  antiword %i > %o

then:

  kurvo index --include '*.pdf=pdftotext' --include '*.doc=antiword' ~/Documents

The patterns are kept with the index, so `kurvo update` uses them again.
)";
}

}  // namespace kurvo_cli
