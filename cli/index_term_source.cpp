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
  ScoredFiles forWord;
  for (const auto &word : m_reader.matchingWords(term)) {
    const std::vector<WordFile> files = m_reader.filesOfWord(word.first);
    forWord.clear();
    forWord.reserve(files.size());
    for (const WordFile &wf : files) forWord.push_back({wf.file, m_ranking ? wf.countByte + 1u : 1u});
    // One word lists a file once; should a damaged list repeat it, the
    // highest count stands (the last of a file's pairs once sorted).
    std::sort(forWord.begin(), forWord.end());
    auto last =
        std::unique(forWord.rbegin(), forWord.rend(), [](const auto &a, const auto &b) { return a.first == b.first; });
    forWord.erase(forWord.begin(), last.base());
    out = mergeScores(out, forWord);
  }
  // Deleted and removed files have no path: asked once for each file.
  out.erase(
      std::remove_if(out.begin(), out.end(), [&](const auto &entry) { return !m_reader.isLiveFile(entry.first); }),
      out.end());
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
