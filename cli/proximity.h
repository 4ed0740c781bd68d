// Proximity and word sequences checked on a file's display text, at any distance.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "query_parser.h"

namespace kurvo_cli {

// The words of text as the index cuts them: runs of word characters, case-folded.
std::vector<std::string> textWords(const std::string &text, const WordCharacters &chars);

// Whether a word matches a (possibly wildcard) query term.
using WordMatcher = std::function<bool(const std::string &word, const std::string &term)>;

// Whether words hold the Near clause: each term after the one before with at
// most its distance of words between them (-1: defaultDistance).
bool holdsNear(const std::vector<std::string> &words, const QueryNode &near, int defaultDistance,
               const WordMatcher &matches);

}  // namespace kurvo_cli
