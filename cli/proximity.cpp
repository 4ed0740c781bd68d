// Word positions of each term, joined term by term within their distances.
#include "proximity.h"

namespace kurvo_cli {

std::vector<std::string> textWords(const std::string &text, const WordCharacters &chars) {
  std::vector<std::string> words;
  size_t i = 0;
  while (i < text.size()) {
    if (!chars[static_cast<unsigned char>(text[i])]) {
      ++i;
      continue;
    }
    const size_t start = i;
    while (i < text.size() && chars[static_cast<unsigned char>(text[i])]) ++i;
    words.push_back(foldCase(text.substr(start, i - start)));
  }
  return words;
}

bool holdsNear(const std::vector<std::string> &words, const QueryNode &near, int defaultDistance,
               const WordMatcher &matches) {
  // reachable[p]: the clause so far can end at word p.
  std::vector<bool> reachable(words.size());
  for (size_t p = 0; p < words.size(); ++p) reachable[p] = matches(words[p], near.children.front().text);
  for (size_t t = 1; t < near.children.size(); ++t) {
    const int given = near.distances[t - 1];
    const size_t reach = static_cast<size_t>(given < 0 ? defaultDistance : given) + 1;
    std::vector<bool> next(words.size());
    size_t lastReached = words.size();  // none yet
    for (size_t p = 0; p < words.size(); ++p) {
      if (lastReached != words.size() && p - lastReached <= reach && matches(words[p], near.children[t].text))
        next[p] = true;
      if (reachable[p]) lastReached = p;
    }
    reachable.swap(next);
  }
  for (bool end : reachable)
    if (end) return true;
  return false;
}

}  // namespace kurvo_cli
