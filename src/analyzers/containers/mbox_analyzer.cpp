// CMBoxAnalyzer: the scan of one read of a mailbox, document names, cache files and base64.
#include "analyzers/containers/mbox_analyzer.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "analyzers/member_records.h"
#include "index/kurvo_index.h"

namespace {

constexpr unsigned long kNameSize = 256;
constexpr size_t kCachePathSize = 1024;
constexpr size_t kMaxExtension = 19;
// A filename= more line ends than this after the encoding line belongs to
// nothing kurvo reads: the rest of the message is skipped.
constexpr int kFilenameSearchLines = 10;

const char *const kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

bool startsWith(const char *p, const char *end, const char *prefix) {
  const size_t length = std::strlen(prefix);
  return static_cast<size_t>(end - p) >= length && std::memcmp(p, prefix, length) == 0;
}

int sextet(unsigned char c) {
  if (c >= 'A' && c <= 'Z') return c - 'A';
  if (c >= 'a' && c <= 'z') return c - 'a' + 26;
  if (c >= '0' && c <= '9') return c - '0' + 52;
  if (c == '+') return 62;
  if (c == '/') return 63;
  return -1;
}

void writeGroup(FILE *out, const int *group, int count) {
  const unsigned bits = (static_cast<unsigned>(group[0]) << 18) | (static_cast<unsigned>(group[1]) << 12) |
                        (static_cast<unsigned>(group[2]) << 6) | static_cast<unsigned>(group[3]);
  for (int i = 0; i < count - 1; ++i) std::putc(static_cast<int>((bits >> (16 - 8 * i)) & 0xFF), out);
}

// Decodes base64 up to the first blank line after the data began.
void writeBase64(FILE *out, const char *data, unsigned long length) {
  int group[4] = {0, 0, 0, 0};
  int count = 0;
  bool seen = false;
  unsigned char previous = 0;
  for (unsigned long i = 0; i < length; ++i) {
    const unsigned char c = static_cast<unsigned char>(data[i]);
    const bool blankLine = (previous == '\n' && (c == '\n' || c == '\r')) || (previous == '\r' && c == '\r');
    previous = c;
    int value = sextet(c);
    if (blankLine) {
      if (seen) break;
      // Before any data a blank line counts as a sextet: kept as it stands.
      value = c - 1;
    }
    if (value < 0) continue;
    seen = seen || !blankLine;
    group[count++] = value;
    if (count == 4) {
      writeGroup(out, group, 4);
      count = 0;
    }
  }
  if (count >= 2) {
    for (int i = count; i < 4; ++i) group[i] = 0;
    writeGroup(out, group, count);
  }
}

// The walk over one read of a mailbox. Only the first byte of each line is
// looked at; the state belongs to the message being read.
class MailboxScan {
 public:
  MailboxScan(CMBoxAnalyzer &analyzer, unsigned long mailboxId, const char *begin, const char *end)
      : m_analyzer(analyzer), m_mailboxId(mailboxId), m_end(end), m_start(begin) {}

  // Handles the line starting at p; returns where the walk goes on (the
  // bytes up to the next line feed are passed over from there).
  const char *line(const char *p);
  // The last message, one byte shorter than the spans of the others.
  void finish() {
    if (indexable()) indexText(m_end - m_start - 1);
  }

 private:
  bool indexable() const { return !m_skipRest && m_part == 0 && m_sender && m_date; }
  void startMessage(const char *start);
  void indexText(long span);
  void endAttachment(const char *p);
  const char *findFileName(const char *p);
  const char *startAttachment(const char *nameStart);

  CMBoxAnalyzer &m_analyzer;
  const unsigned long m_mailboxId;
  const char *const m_end;
  const char *m_start;
  const char *m_sender = nullptr;
  const char *m_date = nullptr;
  bool m_skipRest = false;
  bool m_attachmentPending = false;
  int m_part = 0;
  char m_extension[kMaxExtension + 1] = "";
  char m_name[kNameSize];
};

void MailboxScan::startMessage(const char *start) {
  m_start = start;
  m_sender = m_date = nullptr;
  m_skipRest = false;
  m_part = 0;
}

void MailboxScan::indexText(long span) {
  const time_t time = parseAsctime(m_date);
  m_analyzer.makeFileName(m_sender, time, "txt", 0, m_name, sizeof m_name);
  m_analyzer.processMessageText(m_name, time, m_mailboxId, m_start, span > 0 ? static_cast<unsigned long>(span) : 0,
                                false);
}

void MailboxScan::endAttachment(const char *p) {
  m_attachmentPending = false;
  // A blank line of the next message before its own headers: the pending
  // attachment has no sender or date to be named by.
  if (!m_sender || !m_date) return;
  const time_t time = parseAsctime(m_date);
  // Attachments take the counter as their data ends: 1, 3, 5 and so on.
  m_analyzer.makeFileName(m_sender, time, m_extension, m_part, m_name, sizeof m_name);
  ++m_part;
  m_analyzer.processMessageText(m_name, time, m_mailboxId, m_start, static_cast<unsigned long>(p - m_start), true);
}

const char *MailboxScan::line(const char *p) {
  if (m_attachmentPending && (*p == '\n' || *p == '\r' || *p == '\0')) {
    endAttachment(p);
  } else if (startsWith(p, m_end, "From ") || *p == '\0') {
    if (indexable()) indexText(p - m_start);
    // The new message starts at the blank after "From".
    startMessage(p + 4 < m_end ? p + 4 : m_end);
  } else if (m_skipRest) {
  } else if (!m_sender && startsWith(p, m_end, "From:")) {
    m_sender = p + 5;
  } else if (!m_date && startsWith(p, m_end, "Date:")) {
    m_date = p + 5;
  } else if (startsWith(p, m_end, "Content-Transfer-Encoding: base64")) {
    p = m_end - p > 34 ? p + 34 : m_end;
    if (!m_sender || !m_date) {
      // The message's own body is encoded: it is not indexed.
      m_skipRest = true;
      m_start = p;
    } else {
      return findFileName(p);
    }
  }
  return p;
}

const char *MailboxScan::findFileName(const char *p) {
  int lineEnds = 0;
  for (const char *q = p;; ++q) {
    if (m_end - q < 11) return p;
    if (std::memcmp(q, "filename=", 9) == 0) return startAttachment(q + 9);
    if (*q == '\n') {
      if (lineEnds > kFilenameSearchLines) {
        m_skipRest = true;
        return p;
      }
      ++lineEnds;
    }
  }
}

const char *MailboxScan::startAttachment(const char *nameStart) {
  if (*nameStart == '"') ++nameStart;
  const char *nameEnd = nameStart;
  const char *lastDot = nullptr;
  while (nameEnd < m_end && *nameEnd != '"' && *nameEnd != '\r' && *nameEnd != '\n') {
    if (*nameEnd == '.') lastDot = nameEnd;
    ++nameEnd;
  }
  if (m_part == 0) indexText(nameEnd - m_start);
  ++m_part;
  if (!lastDot) return nameEnd;
  const size_t extensionLength = std::min(static_cast<size_t>(nameEnd - lastDot - 1), kMaxExtension);
  std::memcpy(m_extension, lastDot + 1, extensionLength);
  m_extension[extensionLength] = '\0';
  const char *data = nameEnd;
  while (data < m_end && *data != '\n') ++data;
  while (data < m_end && (*data == '\n' || *data == '\r')) ++data;
  m_start = data;
  m_attachmentPending = true;
  // The walk goes on inside the data's first line.
  return data < m_end ? data : m_end - 1;
}

}  // namespace

time_t parseAsctime(const char *text) {
  const char *p = text;
  auto skipSpaces = [&] {
    while (*p == ' ') ++p;
  };
  auto skipWord = [&] {
    while (*p && *p != ' ' && *p != '\n' && *p != '\r') ++p;
  };
  skipSpaces();
  if (!(*p >= '0' && *p <= '9')) {
    skipWord();
    skipSpaces();
  }
  const time_t now = std::time(nullptr);
  struct tm fields {};
  localtime_r(&now, &fields);
  for (int word = 0; word < 2; ++word) {
    if (*p >= '0' && *p <= '9') {
      fields.tm_mday = std::atoi(p);
    } else {
      int month = 0;
      while (month < 12 && std::strncmp(p, kMonths[month], 3) != 0) ++month;
      if (month == 12) return 0;
      fields.tm_mon = month;
    }
    skipWord();
    skipSpaces();
  }
  fields.tm_year = std::atoi(p) - 1900;
  skipWord();
  skipSpaces();
  fields.tm_hour = std::atoi(p);
  int *rest[] = {&fields.tm_min, &fields.tm_sec};
  for (int *field : rest) {
    while (*p >= '0' && *p <= '9') ++p;
    if (*p != ':') break;
    *field = std::atoi(++p);
  }
  return std::mktime(&fields);
}

bool CMBoxAnalyzer::canUseIndexBuffer() { return false; }

char *CMBoxAnalyzer::makeFileName(const char *from, time_t time, const char *extension, int part, char *out,
                                  unsigned long outSize) {
  while (*from == ' ') ++from;
  char suffix[32];
  std::snprintf(suffix, sizeof suffix, "-%d.", part);
  const long room = static_cast<long>(outSize) - static_cast<long>(std::strlen(extension)) -
                    static_cast<long>(std::strlen(suffix)) - 22;
  std::string name;
  // The address between '<' and '>' on the sender line, else the line itself.
  const char *open = from;
  while (*open && *open != '\n' && *open != '<') ++open;
  if (*open == '<') {
    for (const char *p = open + 1; *p && *p != '>' && *p != '\n' && static_cast<long>(name.size()) < room; ++p)
      name += *p;
  }
  if (name.empty()) {
    for (const char *p = from; *p && *p != '\r' && *p != '\n' && static_cast<long>(name.size()) < room; ++p) name += *p;
  }
  char stamp[32];
  struct tm local {};
  localtime_r(&time, &local);
  std::strftime(stamp, 22, " %Y-%m-%d %H:%M:%S", &local);
  name += stamp;
  name += suffix;
  name += extension;
  std::snprintf(out, outSize, "%s", name.c_str());
  return out;
}

void CMBoxAnalyzer::makeCachePath(const char *name, char *out, unsigned long fileId) {
  const char *dot = std::strrchr(name, '.');
  std::snprintf(out, kCachePathSize, "%s%c%d.%s", m_pIndex->temporaryDirectory.c_str(), '/', static_cast<int>(fileId),
                dot ? dot + 1 : "txt");
}

void CMBoxAnalyzer::processMessageText(const char *name, time_t time, unsigned long parentId, const char *data,
                                       unsigned long length, bool decodeBase64) {
  CKurvoIndex &index = *m_pIndex;
  const uint32_t parent = static_cast<uint32_t>(parentId);
  if (memberUnchanged(index, name, parent, time)) return;
  CFileAnalyzer *analyzer = decodeBase64 ? index.analyzerThatMatches(name) : index.analyzerNamed("generic");
  if (!analyzer) return;
  const uint32_t record = recordMember(index, name, parent, static_cast<int32_t>(time), static_cast<uint32_t>(length));
  char cachePath[kCachePathSize];
  makeCachePath(name, cachePath, record);
  FILE *out = std::fopen(cachePath, "wb");
  if (!out) return;
  if (decodeBase64)
    writeBase64(out, data, length);
  else
    std::fwrite(data, 1, length, out);
  if (closeTempFile(index, out, cachePath)) analyzer->indexFile(cachePath, record);
}

bool CMBoxAnalyzer::indexFile(const char *path, unsigned long fileNumber) {
  CKurvoIndex &index = *m_pIndex;
  ArchiveLevel level(index, path);
  if (level.tooDeep()) return true;
  FILE *file = std::fopen(path, "rb");
  if (!file) return false;
  const size_t capacity = static_cast<size_t>(index.MaxPerFileRead > 0 ? index.MaxPerFileRead : 0) + 1000;
  std::unique_ptr<char[]> buffer(new (std::nothrow) char[capacity + 1]);
  if (!buffer) {
    std::fclose(file);
    return false;
  }
  // One read: a mailbox longer than the buffer is indexed only as far as it.
  const size_t length = std::fread(buffer.get(), 1, capacity, file);
  std::fclose(file);
  buffer[length] = '\0';
  MailboxScan scan(*this, fileNumber, buffer.get(), buffer.get() + length);
  bool atLineStart = true;
  for (const char *p = buffer.get(); p < buffer.get() + length; ++p) {
    if (atLineStart) p = scan.line(p);
    atLineStart = *p == '\n';
  }
  scan.finish();
  ++index.ContentsIndexed;
  return true;
}

bool CMBoxAnalyzer::extractToTempFile(const char *, const char *memberName, const char *tempPath,
                                      unsigned long fileNumber) {
  char cachePath[kCachePathSize];
  makeCachePath(memberName, cachePath, fileNumber);
  if (access(cachePath, F_OK) != 0) return false;
  FILE *in = std::fopen(cachePath, "rb");
  if (!in) return false;
  FILE *out = std::fopen(tempPath, "wb");
  if (!out) {
    std::fclose(in);
    return false;
  }
  std::unique_ptr<char[]> chunk(new char[65535]);
  size_t got;
  while ((got = std::fread(chunk.get(), 1, 65535, in)) > 0) std::fwrite(chunk.get(), 1, got, out);
  std::fclose(in);
  std::fclose(out);
  return true;
}
