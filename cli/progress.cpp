// The progress line on stderr while an index is built or updated.
#include "progress.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdio>

#include "kurvo.h"
#include "library_callbacks.h"
#include "output.h"

namespace kurvo_cli {

namespace {

size_t terminalWidth() {
  winsize size{};
  if (::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 20) return size.ws_col;
  return 80;
}

}  // namespace

std::string shortenPath(const std::string &path, size_t width) {
  if (path.size() <= width) return path;
  if (width < 5) return path.substr(path.size() - width);
  size_t keepEnd = (width - 3) * 2 / 3;
  size_t keepStart = width - 3 - keepEnd;
  return path.substr(0, keepStart) + "..." + path.substr(path.size() - keepEnd);
}

Progress::Progress(bool enabled) : m_enabled(enabled), m_start(std::chrono::steady_clock::now()) {
  if (m_enabled) setStatusListener([this](const std::string &k, const std::string &a) { onStatus(k, a); });
}

Progress::~Progress() {
  setStatusListener(nullptr);
  clear();
}

void Progress::phase(const std::string &text) {
  if (m_enabled) draw(text);
}

void Progress::clear() {
  if (m_enabled && m_drawn) {
    std::fputs("\r\x1b[K", stderr);
    std::fflush(stderr);
    m_drawn = false;
  }
}

void Progress::draw(const std::string &line) {
  size_t width = terminalWidth() - 1;
  std::string text = line.size() > width ? line.substr(0, width) : line;
  std::fprintf(stderr, "\r\x1b[K%s", text.c_str());
  std::fflush(stderr);
  m_drawn = true;
}

void Progress::onStatus(const std::string &key, const std::string &argument) {
  char buffer[160];
  if (key == "IndexingFile" && m_index) {
    size_t tab = argument.find('\t');
    std::string path = argument.substr(0, tab);
    std::string folders = tab == std::string::npos ? "?" : argument.substr(tab + 1);
    double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - m_start).count();
    double bytes = kidxGetBytesRead(m_index);
    std::snprintf(buffer, sizeof buffer, "%s folders, %u files, %s, %s/s  ", folders.c_str(),
                  kidxGetFilesIndexed(m_index), humanBytes(bytes).c_str(),
                  humanBytes(seconds > 0 ? bytes / seconds : 0).c_str());
    std::string head = buffer;
    size_t width = terminalWidth() - 1;
    draw(head + shortenPath(path, width > head.size() + 10 ? width - head.size() : 10));
  } else if (key == "CountingCompress") {
    draw("compressing links: " + argument + "%");
  } else if (key == "CompLinksFmt") {
    size_t tab = argument.find('\t');
    draw("writing file lists: " + argument.substr(0, tab));
  } else if (key == "UpdatingStatus") {
    unsigned visited = 0;
    std::sscanf(argument.c_str(), "%u", &visited);
    if (m_recordTotal > 0) {
      std::snprintf(buffer, sizeof buffer, "checking for changes: %u of %u records (%u%%)", visited, m_recordTotal,
                    visited * 100u / m_recordTotal);
      draw(buffer);
    } else {
      draw("checking for changes: " + std::to_string(visited) + " records");
    }
  } else if (key == "IndexingExcluded") {
    draw("reading the skip words");
  }
}

}  // namespace kurvo_cli
