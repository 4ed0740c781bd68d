// Query terms answered from an open index: word files and proximity checks.
#include "index_term_source.h"

#include <algorithm>

#include "contents_view.h"
#include "host_error.h"
#include "kurvo.h"
#include "library_callbacks.h"
#include "proximity.h"
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

// Read from the file's display text, so that any distance can be asked for.
bool IndexTermSource::confirmNear(uint32_t file, const QueryNode &near) {
  bool holds = false;
  try {
    ContentsView view(m_reader.index(), file, m_viewLimit, m_defaultDistance);
    void *index = m_reader.index();
    holds = holdsNear(textWords(view.text(), m_chars), near, m_defaultDistance,
                      [index](const std::string &word, const std::string &term) {
                        if (!hasWildcard(term)) return word == term;
                        int match = 0;
                        callLibrary([&] { match = kidxDoesWordMatch(index, word.c_str(), term.c_str()); });
                        return match != 0;
                      });
  } catch (const HostError &) {
    // A file that vanished or cannot be read cannot confirm anything.
  }
  clearLibraryMessages();
  return holds;
}

}  // namespace kurvo_cli
