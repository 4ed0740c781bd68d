// The query language explained, for `kurvo help search` and the man page.
#include "commands.h"

namespace kurvo_cli {

const char *queryLanguageHelp() {
  return R"(The query language of `kurvo search` and `kurvo show`

Words are matched without regard to case and typed in UTF-8 (when the locale
is UTF-8); the index holds Latin-1 letters, so Greek, Cyrillic or CJK words
cannot be found. A word must be a whole index word: "index" does not find
"indexes"; use wildcards for that.

  word1 word2      files holding both words (AND); "word1 & word2" is the same
  word1 | word2    files holding either word (OR); binds looser than AND
  ( ... )          groups: "(cat | dog) food"
  -word            leaves out files holding the word: "editor -emacs"
                   (write "--" before a query that starts with "-")
  +word            the word is required, as every word is
  e-mail, foo_bar  a term the index cuts in several words finds those words
                   in sequence; parts shorter than the shortest indexed word
                   are left out ("e-mail" finds "mail")
  index*           "*" stands for any run of characters, "?" for one:
                   "colo?r", "*script", "net*work"
  a <N b           b after a with at most N words between them:
                   "memory <3 leak", "memory <0 leak" (side by side);
                   "a < b" uses the index's default distance (8)

Files are listed best first: each matching word scores the number of times it
occurs in the file (ranking on), and ties are listed by path. Members of
archives are shown as "archive.zip::inner.tar::notes.txt".

Examples:
  kurvo search 'copyright gpl'
  kurvo search 'licen?e | copyright -mit'
  kurvo search --outline 'buffer <4 overflow'
  kurvo search --json --limit 5 'kernel*'
  kurvo show /usr/share/doc/bash/README 'shell'

Exit status: 0 when something was found, 1 when nothing was, 2 on errors.
)";
}

}  // namespace kurvo_cli
