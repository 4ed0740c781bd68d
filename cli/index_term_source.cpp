// Query terms answered from an open index: word files and proximity checks.
#include "index_term_source.h"

#include <algorithm>

#include "contents_view.h"
#include "host_error.h"
#include "kurvo.h"
#include "library_callbacks.h"
#include "query_parser.h"

namespace kurvo_cli {

ScoredFiles IndexTermSource::filesForTerm(const std::string &term) {
  ScoredFiles out;
  for (const auto &word : m_reader.matchingWords(term)) {
    // One word lists a file once; should a damaged list repeat it, the
    // highest count stands.
    ScoredFiles forWord;
    for (const WordFile &wf : m_reader.filesOfWord(word.first)) {
      if (!m_reader.isLiveFile(wf.file)) continue;
      uint64_t score = m_ranking ? wf.countByte + 1u : 1u;
      uint64_t &slot = forWord[wf.file];
      slot = std::max(slot, score);
    }
    for (const auto &[file, score] : forWord) out[file] += score;
  }
  return out;
}

bool IndexTermSource::confirmNear(uint32_t file, const std::string &viewerText, const std::string &firstTerm) {
  try {
    ContentsView view(m_reader.index(), file, m_viewLimit, m_defaultDistance);
    if (!view.containsHit(viewerText)) return false;
    // Every term of the clause is marked on its own too, so only a hit on
    // the first term proves that the rest follows within the distance.
    std::string text = view.text();
    for (const auto &[offset, length] : view.hits(viewerText)) {
      std::string word = foldCase(text.substr(offset, length));
      int match = 0;
      callLibrary([&] { match = kidxDoesWordMatch(m_reader.index(), word.c_str(), firstTerm.c_str()); });
      if (match) return true;
    }
  } catch (const HostError &) {
    // A file that vanished or cannot be read cannot confirm anything.
  }
  clearLibraryMessages();
  return false;
}

}  // namespace kurvo_cli
