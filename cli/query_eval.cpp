// Set algebra over the files of query terms: AND, OR, exclusion, proximity.
#include "query_eval.h"

#include <algorithm>
#include <map>

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
  ScoredFiles term(const std::string &text) {
    auto it = m_terms.find(text);
    if (it == m_terms.end()) it = m_terms.emplace(text, m_source.filesForTerm(text)).first;
    return it->second;
  }

  ScoredFiles either(const QueryNode &node) {
    ScoredFiles out;
    for (const QueryNode &child : node.children) out = mergeScores(out, eval(child));
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
      out = without(out, eval(child));
      if (out.empty()) break;
    }
    return out;
  }

  ScoredFiles near(const QueryNode &node) {
    ScoredFiles out = all(node);
    out.erase(std::remove_if(out.begin(), out.end(),
                             [&](const auto &entry) { return !m_source.confirmNear(entry.first, node); }),
              out.end());
    return out;
  }

  static ScoredFiles intersect(const ScoredFiles &a, const ScoredFiles &b) {
    ScoredFiles out;
    auto j = b.begin();
    for (const auto &[file, score] : a) {
      while (j != b.end() && j->first < file) ++j;
      if (j != b.end() && j->first == file) out.emplace_back(file, score + j->second);
    }
    return out;
  }

  static ScoredFiles without(const ScoredFiles &a, const ScoredFiles &b) {
    ScoredFiles out;
    auto j = b.begin();
    for (const auto &entry : a) {
      while (j != b.end() && j->first < entry.first) ++j;
      if (j == b.end() || j->first != entry.first) out.push_back(entry);
    }
    return out;
  }

  TermSource &m_source;
  std::map<std::string, ScoredFiles> m_terms;
};

}  // namespace

ScoredFiles mergeScores(const ScoredFiles &a, const ScoredFiles &b) {
  if (a.empty()) return b;
  ScoredFiles out;
  out.reserve(a.size() + b.size());
  auto i = a.begin(), j = b.begin();
  while (i != a.end() || j != b.end()) {
    if (j == b.end() || (i != a.end() && i->first < j->first)) {
      out.push_back(*i++);
    } else if (i == a.end() || j->first < i->first) {
      out.push_back(*j++);
    } else {
      out.emplace_back(i->first, i->second + j->second);
      ++i, ++j;
    }
  }
  return out;
}

ScoredFiles evaluateQuery(const QueryNode &query, TermSource &source) { return Evaluator(source).eval(query); }

void rankResults(std::vector<RankedFile> &results) {
  std::sort(results.begin(), results.end(), [](const RankedFile &a, const RankedFile &b) {
    if (a.score != b.score) return a.score > b.score;
    return a.path < b.path;
  });
}

}  // namespace kurvo_cli
