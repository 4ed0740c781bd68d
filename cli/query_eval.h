// Evaluates a parsed query into scored files, given a source of term matches.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "query_parser.h"

namespace kurvo_cli {

// File number -> score. A term's score in a file is its occurrence count
// byte + 1 (summed over the index words a wildcard stands for).
using ScoredFiles = std::map<uint32_t, uint64_t>;

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
  std::string path;
};

// Best score first, ties by path.
void rankResults(std::vector<RankedFile> &results);

}  // namespace kurvo_cli
