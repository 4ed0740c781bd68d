// Evaluating queries: set algebra, scores, proximity confirmation, ranking.
#include <gtest/gtest.h>

#include <set>

#include "query_eval.h"

using namespace kurvo_cli;

namespace {

// Files 1-4 with fixed word scores; proximity holds only where listed.
class FakeSource : public TermSource {
 public:
  std::map<std::string, ScoredFiles> terms = {
      {"apple", {{1, 3}, {2, 1}, {3, 2}}},
      {"pear", {{2, 5}, {3, 1}}},
      {"plum", {{4, 1}}},
      {"apricot", {{4, 2}}},
  };
  std::set<uint32_t> nearFiles = {3};
  std::vector<std::string> nearTexts;

  ScoredFiles filesForTerm(const std::string &term) override {
    ScoredFiles out;
    for (const auto &[word, files] : terms) {
      bool wild = term.back() == '*';
      if (word == term || (wild && word.compare(0, term.size() - 1, term, 0, term.size() - 1) == 0)) {
        for (const auto &[f, s] : files) out[f] += s;
      }
    }
    return out;
  }

  bool confirmNear(uint32_t file, const std::string &text, const std::string &first) override {
    nearTexts.push_back(text + "/" + first);
    return nearFiles.count(file) > 0;
  }
};

ScoredFiles run(FakeSource &source, const std::string &query) {
  return evaluateQuery(parseQuery(query, defaultWordCharacters()), source);
}

TEST(QueryEval, FilesAndScores) {
  const struct {
    const char *query;
    ScoredFiles expected;
  } cases[] = {
      {"apple pear", {{2, 6}, {3, 3}}},  // AND intersects and adds scores
      {"apple | pear", {{1, 3}, {2, 6}, {3, 3}}},
      {"apple -pear", {{1, 3}}},  // exclusion removes files without scoring
      {"apple -(pear | plum)", {{1, 3}}},
      {"(pear | plum) apple", {{2, 6}, {3, 3}}},
      {"pear | plum apricot", {{2, 5}, {3, 1}, {4, 3}}},
      {"ap*", {{1, 3}, {2, 1}, {3, 2}, {4, 2}}},  // a wildcard sums its words
      {"apple quince", {}},
  };
  for (const auto &c : cases) {
    FakeSource s;
    EXPECT_EQ(run(s, c.query), c.expected) << c.query;
  }
}

TEST(QueryEval, ProximityNeedsBothTermsAndTheViewer) {
  FakeSource s;
  EXPECT_EQ(run(s, "apple <2 pear"), (ScoredFiles{{3, 3}}));
  // Only files holding both terms are shown to the viewer.
  EXPECT_EQ(s.nearTexts, (std::vector<std::string>{"apple <2 pear/apple", "apple <2 pear/apple"}));
}

TEST(QueryEval, RankingIsScoreThenPath) {
  std::vector<RankedFile> r = {{1, 2, "/b"}, {2, 5, "/z"}, {3, 2, "/a"}, {4, 7, "/m"}};
  rankResults(r);
  std::vector<std::string> paths;
  for (const RankedFile &f : r) paths.push_back(f.path);
  EXPECT_EQ(paths, (std::vector<std::string>{"/m", "/z", "/a", "/b"}));
}

}  // namespace
