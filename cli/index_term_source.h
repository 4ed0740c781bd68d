// Query terms answered from an open index: word files and proximity checks.
#pragma once

#include "index_reader.h"
#include "query_eval.h"

namespace kurvo_cli {

class IndexTermSource : public TermSource {
 public:
  IndexTermSource(IndexReader &reader, const WordCharacters &chars, bool ranking, unsigned viewLimit,
                  int defaultDistance)
      : m_reader(reader),
        m_chars(chars),
        m_ranking(ranking),
        m_viewLimit(viewLimit),
        m_defaultDistance(defaultDistance) {}

  ScoredFiles filesForTerm(const std::string &term) override;
  bool confirmNear(uint32_t file, const QueryNode &near) override;

 private:
  IndexReader &m_reader;
  WordCharacters m_chars;
  bool m_ranking;
  unsigned m_viewLimit;
  int m_defaultDistance;
};

}  // namespace kurvo_cli
