// Queries as the commands take them: parsed with the index's word characters,
// with notes about words the index cannot hold.
#include "query_support.h"

#include <iostream>

#include "host_error.h"
#include "kurvo.h"
#include "library_callbacks.h"
#include "terminal_text.h"

namespace kurvo_cli {

WordCharacters wordCharactersOf(const IndexOptions &options) {
  WordCharacters chars{};
  for (int c = 0; c < 256; ++c) chars[c] = options.chars.wordStart[c] || options.chars.wordRest[c];
  return chars;
}

QueryNode parseUserQuery(const std::string &text, const IndexOptions &options, bool quiet) {
  unsigned foreign = 0;
  const std::string query = fromTerminal(text, &foreign);
  if (foreign && !quiet) {
    std::cerr << "kurvo: note: the query holds characters the index cannot hold (it keeps Latin-1 letters and "
                 "the Windows-1252 punctuation); they are read as spaces between words\n";
  }
  try {
    QueryNode parsed = parseQuery(query, wordCharactersOf(options));
    dropUnindexedParts(parsed, options.minWordLength);
    return parsed;
  } catch (const QueryError &e) {
    throw HostError(std::string("bad query: ") + e.what() + " (see: kurvo help search)");
  }
}

// Words the index can never hold give no results; saying why saves a puzzle.
void noteUnsearchableTerms(const QueryNode &query, ReadingSession &rs, bool quiet) {
  if (quiet) return;
  const IndexOptions &o = rs.settings.options;
  for (const std::string &term : positiveTerms(query)) {
    if (hasWildcard(term)) continue;
    int longest = o.maxWordLength == 0 ? 100 : o.maxWordLength + 1;
    if (static_cast<int>(term.size()) < o.minWordLength) {
      std::cerr << "kurvo: note: \"" << forTerminal(term) << "\" is shorter than " << o.minWordLength
                << " characters; such words are not indexed\n";
    } else if (static_cast<int>(term.size()) > longest) {
      std::cerr << "kurvo: note: \"" << forTerminal(term) << "\" is longer than " << longest
                << " characters; such words are not indexed whole\n";
    } else {
      unsigned skipped = 0;
      callLibrary([&] { skipped = ktsLookup(kidxGetSkipWords(rs.index()), term.c_str()); });
      if (skipped) std::cerr << "kurvo: note: \"" << forTerminal(term) << "\" is a skip word and is never indexed\n";
    }
  }
}

}  // namespace kurvo_cli
