// A contents viewer on one indexed file: display text, hits and outline.
#include "contents_view.h"

#include <cstring>

#include "host_error.h"
#include "kurvo.h"
#include "library_callbacks.h"

namespace kurvo_cli {

ContentsView::ContentsView(void *index, uint32_t record, unsigned maxLength, int defaultDistance) {
  clearLibraryMessages();
  m_contents = kidxGetFileContents(index, record, maxLength, 0, true, defaultDistance);
  if (!m_contents) {
    throwIfLibraryFailed();
    throw HostError("the file cannot be shown");
  }
}

ContentsView::~ContentsView() { kfcDeleteContentsObject(m_contents); }

std::string ContentsView::text() const { return kfcContents(m_contents); }

std::vector<std::pair<size_t, size_t>> ContentsView::hits(const std::string &query) const {
  std::vector<std::pair<size_t, size_t>> out;
  size_t length = std::strlen(kfcContents(m_contents));
  size_t offset = 0;
  while (offset < length) {
    unsigned position = kfcSearchBuffer(m_contents, static_cast<unsigned>(offset), query.c_str());
    if (position == 0) break;
    size_t at = position - 1;
    if (at < offset || at >= length) break;  // never walk backwards
    size_t size = kfcTokenLength(m_contents, static_cast<unsigned>(at));
    if (size == 0) size = 1;
    out.emplace_back(at, size);
    offset = at + size;
  }
  return out;
}

bool ContentsView::containsHit(const std::string &query) const { return kfcContainsHit(m_contents, query.c_str()); }

void ContentsView::reduceToOutline(const std::string &query) { kfcConvertToOutline(m_contents, query.c_str()); }

}  // namespace kurvo_cli
