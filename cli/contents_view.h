// A contents viewer on one indexed file: display text, hits and outline.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace kurvo_cli {

class ContentsView {
 public:
  // Opens the viewer; throws HostError with the library's reason on failure.
  ContentsView(void *index, uint32_t record, unsigned maxLength, int defaultDistance);
  ~ContentsView();
  ContentsView(const ContentsView &) = delete;
  ContentsView &operator=(const ContentsView &) = delete;

  std::string text() const;
  // Hits of the query as (offset, length), in order.
  std::vector<std::pair<size_t, size_t>> hits(const std::string &query) const;
  bool containsHit(const std::string &query) const;
  // Keeps only the lines that hold hits, for good.
  void reduceToOutline(const std::string &query);

 private:
  void *m_contents = nullptr;
};

}  // namespace kurvo_cli
