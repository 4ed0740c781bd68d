// Evaluating queries: set algebra, scores, proximity at any distance, ranking.
#include <gtest/gtest.h>

#include <set>

#include "proximity.h"
#include "query_eval.h"

using namespace kurvo_cli;

namespace {

// Files 1-4 with fixed word scores; proximity holds only where listed.
class FakeSource : public TermSource {
 public:
  std::map<std::string, ScoredFiles> terms = {
      {"apple", {{1, 3}, {2, 1}, {3, 2}}}, {"pear", {{2, 5}, {3, 1}}}, {"plum", {{4, 1}}}, {"apricot", {{4, 2}}}};
  std::set<uint32_t> nearFiles = {3};
  std::vector<std::string> nearTexts;

  ScoredFiles filesForTerm(const std::string &term) override {
    ScoredFiles out;
    for (const auto &[word, files] : terms) {
      bool wild = term.back() == '*';
      if (word == term || (wild && word.compare(0, term.size() - 1, term, 0, term.size() - 1) == 0))
        out = mergeScores(out, files);
    }
    return out;
  }

  bool confirmNear(uint32_t file, const QueryNode &near) override {
    nearTexts.push_back(viewerQuery(near));
    return nearFiles.count(file) > 0;
  }
};

ScoredFiles run(FakeSource &source, const std::string &query) {
  return evaluateQuery(parseQuery(query, defaultWordCharacters()), source);
}

TEST(QueryEval, FilesAndScores) {
  // AND intersects and adds scores; an exclusion removes files without scoring; a wildcard sums its words.
  // clang-format off
  const struct {
    const char *query;
    ScoredFiles expected;
  } cases[] = {{"apple pear", {{2, 6}, {3, 3}}}, {"apple | pear", {{1, 3}, {2, 6}, {3, 3}}}, {"apple -pear", {{1, 3}}},
               {"apple -(pear | plum)", {{1, 3}}}, {"(pear | plum) apple", {{2, 6}, {3, 3}}},
               {"pear | plum apricot", {{2, 5}, {3, 1}, {4, 3}}}, {"ap*", {{1, 3}, {2, 1}, {3, 2}, {4, 2}}},
               {"apple quince", {}}};
  // clang-format on
  for (const auto &c : cases) {
    FakeSource s;
    EXPECT_EQ(run(s, c.query), c.expected) << c.query;
  }
}

TEST(QueryEval, ProximityNeedsBothTermsAndTheViewer) {
  FakeSource s;
  EXPECT_EQ(run(s, "apple <2 pear"), (ScoredFiles{{3, 3}}));
  // Only files holding both terms are shown to the viewer.
  EXPECT_EQ(s.nearTexts, (std::vector<std::string>{"apple <2 pear", "apple <2 pear"}));
}

TEST(QueryEval, ProximityAndSequencesAreReadFromTheWords) {
  const std::string text =
      "Memory was fine, but much later we saw a leak. Send an e-mail to the state-of-the-art lab; "
      "memory leak found.";
  const std::vector<std::string> words = textWords(text, defaultWordCharacters());
  auto exact = [](const std::string &word, const std::string &term) {
    return term.back() == '*' ? word.compare(0, term.size() - 1, term, 0, term.size() - 1) == 0 : word == term;
  };
  const struct {
    const char *query;
    bool holds;
  } cases[] = {{"memory <0 leak", true},   {"memory <7 leak", true}, {"leak <1 memory", false},
               {"was <1 but", true},       {"was <0 but", false},    {"memory <19 lab", true},
               {"saw <0 a <0 leak", true}, {"saw <0 leak", false},   {"sen* <1 e*", true},
               {"e-mail", true},           {"mail-e", false},        {"state-of-the-art", true},
               {"state-art", false},       {"memory < leak", true},  {"fine <3 later", true}};
  for (const auto &c : cases) {
    QueryNode near = parseQuery(c.query, defaultWordCharacters());
    ASSERT_EQ(near.kind, QueryKind::Near) << c.query;
    EXPECT_EQ(holdsNear(words, near, 8, exact), c.holds) << c.query;
  }
}

TEST(QueryEval, RankingIsScoreThenPath) {
  std::vector<RankedFile> r = {{1, 2, "/b"}, {2, 5, "/z"}, {3, 2, "/a"}, {4, 7, "/m"}};
  rankResults(r);
  std::vector<std::string> paths;
  for (const RankedFile &f : r) paths.emplace_back(f.path);
  EXPECT_EQ(paths, (std::vector<std::string>{"/m", "/z", "/a", "/b"}));
}

}  // namespace
