// The search query language: terms, AND, OR, exclusion, proximity and groups.
#pragma once

#include <array>
#include <stdexcept>
#include <string>
#include <vector>

namespace kurvo_cli {

// Which bytes belong to words; everything else separates terms.
using WordCharacters = std::array<bool, 256>;

// Letters of ISO-8859-1 / Windows-1252 and the digits.
WordCharacters defaultWordCharacters();

enum class QueryKind { Term, And, Or, Exclude, Near };

struct QueryNode {
  QueryKind kind = QueryKind::Term;
  std::string text;  // Term: the lower-cased word or pattern
  std::vector<QueryNode> children;
  // Near: children are terms; distances[i] is how many words may lie
  // between children[i] and children[i + 1] (-1: the index's default).
  std::vector<int> distances;
  // Near made from one written term the indexer cuts in several ("e-mail"):
  // the words in sequence, none between.
  bool phrase = false;
};

class QueryError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Parses a query; throws QueryError with a sentence saying what is wrong.
QueryNode parseQuery(const std::string &text, const WordCharacters &wordChars);

// The query as the contents viewer reads it: terms lower-cased, exclusions
// written "+term" (the viewer never marks those), groups and proximity kept.
// A distance the viewer cannot read (0, or one with the digit 9) is left
// out: its terms are marked wherever they stand.
std::string viewerQuery(const QueryNode &node);

// Drops the parts of written compounds shorter than minLength, which the
// index never holds ("e-mail" searches "mail"); the words around a dropped
// part may stand one word further apart.
void dropUnindexedParts(QueryNode &node, int minLength);

// Lower-cases the way the index folds words (ASCII and the Latin-1 capitals).
std::string foldCase(const std::string &text);

bool hasWildcard(const std::string &term);
// The bytes of term before its first wildcard: every word it matches starts with them.
std::string literalPrefix(const std::string &term);

// The terms whose files count for a match (not those under an exclusion).
std::vector<std::string> positiveTerms(const QueryNode &node);

}  // namespace kurvo_cli
