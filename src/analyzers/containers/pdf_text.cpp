// Text out of inflated PDF page descriptions: a byte-by-byte scan with a short history of operators.
#include "analyzers/containers/pdf_text.h"

#include <charconv>
#include <cstdlib>
#include <cstring>

namespace {

bool isLineBlank(char c) { return c == ' ' || c == '\r' || c == '\n'; }

bool isNumberByte(char c) { return (c >= '0' && c <= '9') || c == '.'; }

// The state of one scan: where it is in the operators and in the output.
class TextScan {
 public:
  TextScan(char *output, uint32_t outputSize, int lineWidth)
      : m_out(output),
        m_outEnd(output + outputSize),
        m_lineStart(output),
        m_breakPoint(output),
        m_lineWidth(lineWidth) {
    std::memset(m_window, ' ', sizeof m_window);
    m_history = m_window;
  }

  // Examines input[at], and the byte after it when a hex pair takes it;
  // returns the index of the last byte used.
  uint32_t examine(const char *input, uint32_t inputLength, uint32_t at);
  uint32_t written(const char *output) const { return static_cast<uint32_t>(m_out - output); }

 private:
  // Operators count only with a blank on either side.
  bool standsAlone(char first, char second) const {
    return m_history[12] == first && m_history[13] == second && isLineBlank(m_history[11]) &&
           isLineBlank(m_history[14]);
  }
  bool operatorsEndBlock();
  void beginString(char c);
  void emit(char c);
  char hexByte(const char *input, uint32_t inputLength, uint32_t &at) const;
  // The history slides along a wider window and is moved back to its start
  // only when it reaches the end.
  void shift(char c) {
    if (m_history + kPdfHistorySize == m_window + sizeof m_window) {
      std::memmove(m_window, m_history + 1, kPdfHistorySize - 1);
      m_history = m_window;
    } else {
      ++m_history;
    }
    m_history[kPdfHistorySize - 1] = c;
  }

  bool put(char c) {
    if (m_out == m_outEnd) return false;
    *m_out++ = c;
    return true;
  }
  // A line longer than the width breaks at its last blank (or at the very
  // start of the output when it has none yet).
  void wrapCheck() {
    if (m_lineWidth > 0 && m_out - m_lineStart > m_lineWidth) {
      *m_breakPoint = '\n';
      m_lineStart = m_breakPoint;
    }
  }
  void blank(char c) {
    wrapCheck();
    char *at = m_out;
    if (put(c)) m_breakPoint = at;
  }
  void newLine() {
    char *at = m_out;
    if (put('\n')) m_lineStart = at;
  }

  char m_window[256];
  char *m_history;
  bool m_inText = false, m_inString = false, m_inHex = false, m_escaped = false;
  int m_tmCount = 0;
  char *m_out, *m_outEnd, *m_lineStart, *m_breakPoint;
  int m_lineWidth;
};

uint32_t TextScan::examine(const char *input, uint32_t inputLength, uint32_t at) {
  char c = input[at];
  bool blockMayBegin = !m_inText;
  if (m_inText) {
    if (m_inHex && c != '>') c = hexByte(input, inputLength, at);
    if (!m_inString && operatorsEndBlock()) {
      blockMayBegin = true;
    } else if ((c == '(' || c == '<') && !m_inString && !m_escaped) {
      beginString(c);
    } else if (c == ')') {
      // Parentheses are not counted: the first unescaped one ends the string.
      if (m_inString && m_escaped)
        emit(c);
      else if (m_inString)
        m_inString = false;
    } else if (c == '>' && m_inHex) {
      m_inString = m_inHex = false;
    } else if (m_inString) {
      if (c == '\\' && !m_escaped)
        m_escaped = true;
      else
        emit(c);
    }
  }
  shift(c);
  if (blockMayBegin) {
    m_inText = m_history[12] == 'B' && m_history[13] == 'T' && isLineBlank(m_history[14]) && isLineBlank(m_history[11]);
  }
  return at;
}

// Positioning operators between strings; true when ET ends the block.
bool TextScan::operatorsEndBlock() {
  if (standsAlone('T', 'D')) {
    // The second operand's magnitude: a move down by more than a unit is a
    // new line, a small one a blank.
    const float move = extractNumber(m_history, 10);
    if (move > 1.0f)
      newLine();
    else if (move > 0.0f && move < 1.0f)
      blank(' ');
  } else if (standsAlone('T', 'm')) {
    ++m_tmCount;
  } else if (standsAlone('E', 'T')) {
    m_inText = m_inString = false;
    newLine();
    return true;
  }
  return false;
}

// The number before a string is a TJ array's kerning: a wide gap is a TAB,
// a word gap a blank; strings placed by several Tm operators are words.
void TextScan::beginString(char c) {
  const float kerning = extractNumber(m_history, kPdfHistorySize - 1);
  if (kerning > 1000.0f)
    blank('\t');
  else if (kerning > 100.0f || (!(kerning > 0.0f) && m_tmCount > 1))
    blank(' ');
  if (c == '<') m_inHex = true;
  m_inString = true;
  m_tmCount = 0;
}

// Escapes are not interpreted: "\(" gives "(" and "\101" gives "101".
void TextScan::emit(char c) {
  const unsigned char byte = static_cast<unsigned char>(c);
  m_escaped = false;
  if (!((byte >= 0x20 && byte <= 0x7E) || byte >= 0xA0)) return;
  if (c == ' ')
    blank(c);
  else
    put(c);
}

// Two hex digits make a byte; a lone last digit is followed by "0".
char TextScan::hexByte(const char *input, uint32_t inputLength, uint32_t &at) const {
  char digits[3] = {input[at], '0', '\0'};
  if (at + 1 < inputLength && input[at + 1] != '>') digits[1] = input[++at];
  return static_cast<char>(static_cast<unsigned char>(std::strtol(digits, nullptr, 16) & 0xFF));
}

}  // namespace

float extractNumber(const char *history, int index) {
  int at = index;
  while (at > 0 && history[at] == ' ') --at;
  while (at > 0 && isNumberByte(history[at])) --at;
  const int from = at + 1;
  if (from > index) return -1.0f;
  // Read as the C locale reads it, whatever locale the host set.
  float value = 0.0f;
  const char *first = history + from, *last = history + index + 1;
  const std::from_chars_result result = std::from_chars(first, last, value, std::chars_format::fixed);
  return result.ec == std::errc() && result.ptr != first ? value : -1.0f;
}

uint32_t clearText(const char *input, uint32_t inputLength, char *output, uint32_t outputSize, int lineWidth) {
  TextScan scan(output, outputSize, lineWidth);
  for (uint32_t at = 0; at <= inputLength; ++at) at = scan.examine(input, inputLength, at);
  return scan.written(output);
}
