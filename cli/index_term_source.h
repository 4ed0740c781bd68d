// Query terms answered from an open index: word files and proximity checks.
#pragma once

#include "index_reader.h"
#include "query_eval.h"

namespace kurvo_cli {

class IndexTermSource : public TermSource {
 public:
  IndexTermSource(IndexReader &reader, bool ranking, unsigned viewLimit, int defaultDistance)
      : m_reader(reader), m_ranking(ranking), m_viewLimit(viewLimit), m_defaultDistance(defaultDistance) {}

  ScoredFiles filesForTerm(const std::string &term) override;
  bool confirmNear(uint32_t file, const std::string &viewerText, const std::string &firstTerm) override;

 private:
  IndexReader &m_reader;
  bool m_ranking;
  unsigned m_viewLimit;
  int m_defaultDistance;
};

}  // namespace kurvo_cli
