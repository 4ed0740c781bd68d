// The progress line on stderr while an index is built or updated.
#pragma once

#include <chrono>
#include <string>

namespace kurvo_cli {

class Progress {
 public:
  // Draws only when enabled (stderr is a terminal and not --quiet).
  explicit Progress(bool enabled);
  ~Progress();  // clears the line and stops listening

  void setIndex(void *index) { m_index = index; }
  // Total records before an update, for its percentage.
  void setRecordTotal(unsigned total) { m_recordTotal = total; }
  void phase(const std::string &text);
  void clear();

 private:
  void onStatus(const std::string &key, const std::string &argument);
  void draw(const std::string &line);

  bool m_enabled;
  void *m_index = nullptr;
  unsigned m_recordTotal = 0;
  std::chrono::steady_clock::time_point m_start;
  bool m_drawn = false;
};

// Fits a path into width columns by cutting out its middle.
std::string shortenPath(const std::string &path, size_t width);

}  // namespace kurvo_cli
