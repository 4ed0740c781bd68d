// Set algebra over the files of query terms: AND, OR, exclusion, proximity.
#include "query_eval.h"

#include <algorithm>

namespace kurvo_cli {

namespace {

class Evaluator {
 public:
  explicit Evaluator(TermSource &source) : m_source(source) {}

  ScoredFiles eval(const QueryNode &node) {
    switch (node.kind) {
      case QueryKind::Term:
        return term(node.text);
      case QueryKind::Or:
        return either(node);
      case QueryKind::And:
        return all(node);
      case QueryKind::Near:
        return near(node);
      case QueryKind::Exclude:
        return eval(node.children.front());
    }
    return {};
  }

 private:
  // Each term is looked up once per query, however often it appears.
  const ScoredFiles &term(const std::string &text) {
    auto it = m_terms.find(text);
    if (it == m_terms.end()) it = m_terms.emplace(text, m_source.filesForTerm(text)).first;
    return it->second;
  }

  ScoredFiles either(const QueryNode &node) {
    ScoredFiles out;
    for (const QueryNode &child : node.children) {
      for (const auto &[file, score] : eval(child)) out[file] += score;
    }
    return out;
  }

  ScoredFiles all(const QueryNode &node) {
    ScoredFiles out;
    bool first = true;
    for (const QueryNode &child : node.children) {
      if (child.kind == QueryKind::Exclude) continue;
      ScoredFiles part = eval(child);
      if (first) {
        out = std::move(part);
        first = false;
      } else {
        out = intersect(out, part);
      }
      if (out.empty()) return out;
    }
    for (const QueryNode &child : node.children) {
      if (child.kind != QueryKind::Exclude) continue;
      for (const auto &entry : eval(child)) out.erase(entry.first);
      if (out.empty()) break;
    }
    return out;
  }

  ScoredFiles near(const QueryNode &node) {
    ScoredFiles out = all(node);
    for (auto it = out.begin(); it != out.end();) {
      if (m_source.confirmNear(it->first, node))
        ++it;
      else
        it = out.erase(it);
    }
    return out;
  }

  static ScoredFiles intersect(const ScoredFiles &a, const ScoredFiles &b) {
    ScoredFiles out;
    for (const auto &[file, score] : a) {
      auto it = b.find(file);
      if (it != b.end()) out.emplace(file, score + it->second);
    }
    return out;
  }

  TermSource &m_source;
  std::map<std::string, ScoredFiles> m_terms;
};

}  // namespace

ScoredFiles evaluateQuery(const QueryNode &query, TermSource &source) { return Evaluator(source).eval(query); }

void rankResults(std::vector<RankedFile> &results) {
  std::sort(results.begin(), results.end(), [](const RankedFile &a, const RankedFile &b) {
    if (a.score != b.score) return a.score > b.score;
    return a.path < b.path;
  });
}

}  // namespace kurvo_cli
