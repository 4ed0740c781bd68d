// Evaluates a parsed query into scored files, given a source of term matches.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "query_parser.h"

namespace kurvo_cli {

// (file number, score) pairs in file order, each file once. A term's score
// in a file is its occurrence count byte + 1 (summed over the index words a
// wildcard stands for).
using ScoredFiles = std::vector<std::pair<uint32_t, uint64_t>>;

// The files of a and of b, the scores of a file in both added.
ScoredFiles mergeScores(const ScoredFiles &a, const ScoredFiles &b);

class TermSource {
 public:
  virtual ~TermSource() = default;
  // The live files holding a word that matches the lower-cased term.
  virtual ScoredFiles filesForTerm(const std::string &term) = 0;
  // Whether the file really holds the proximity clause or word sequence.
  virtual bool confirmNear(uint32_t file, const QueryNode &near) = 0;
};

ScoredFiles evaluateQuery(const QueryNode &query, TermSource &source);

struct RankedFile {
  uint32_t file;
  uint64_t score;
  std::string_view path;  // held by whoever built it, for as long as the results are used
};

// Best score first, ties by path.
void rankResults(std::vector<RankedFile> &results);

}  // namespace kurvo_cli
