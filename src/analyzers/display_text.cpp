// CFileAnalyzer::stripBuffer: turns one buffer of plain text into display text.
#include "analyzers/file_analyzer.h"
#include "index/kurvo_index.h"

namespace {

constexpr unsigned char kLineFeed = 10;
constexpr unsigned char kCarriageReturn = 13;
// Shown as a line break, as the line feed is.
constexpr unsigned char kLineBreakByte = 227;
// Longer runs of high-bit bytes outside text are binary, not text.
constexpr int kMaxHighBitRun = 3;

// The output side of stripBuffer: where the text goes and what it remembers
// about the current line.
struct DisplayWriter {
  char *start;
  char *write;
  char *limit;  // one past the last byte that may hold text
  char *lineStart;
  char *lastSpace;
  unsigned long sinceSeparator = 0;

  DisplayWriter(char *output, unsigned long room)
      : start(output), write(output), limit(output + room), lineStart(output), lastSpace(output) {}

  bool full() const { return write >= limit; }
  char lastByte() const { return write > start ? write[-1] : '\0'; }

  void put(char c) {
    if (full()) return;
    if (c == ' ' || c == '\t') {
      lastSpace = write;
      c = ' ';
    }
    *write++ = c;
    ++sinceSeparator;
  }
  void lineFeed() {
    if (full()) return;
    *write++ = static_cast<char>(kLineFeed);
    lineStart = write;
  }
  // Removes the non-alpha bytes at the end of the text written since the
  // last separator, stopping at a line feed.
  void takeBack(const int32_t *nonAlphaMask) {
    while (sinceSeparator > 0 && write > start && static_cast<unsigned char>(write[-1]) != kLineFeed &&
           nonAlphaMask[static_cast<unsigned char>(write[-1])]) {
      --write;
      --sinceSeparator;
    }
  }
  void dropHighBitTail() {
    while (write > start && (static_cast<unsigned char>(write[-1]) & 0x80)) --write;
  }
  // Past the wrap width the last space written breaks the line.
  void wrap(int wrapWidth) {
    if (wrapWidth != 0 && write - lineStart > wrapWidth && lastSpace < write) {
      *lastSpace = static_cast<char>(kLineFeed);
      lineStart = lastSpace + 1;
    }
  }
  // Ends the text; its last space (or else its first byte) ends the last line.
  unsigned long finish() {
    *write = '\0';
    if (lastSpace < write) *lastSpace = static_cast<char>(kLineFeed);
    return static_cast<unsigned long>(write - start);
  }
};

// Writes what a byte that is neither shown nor non-alpha leaves in the text:
// a blank between words and line breaks; returns the new in-text flag.
bool writeSeparator(DisplayWriter &out, unsigned char c, bool lineFeedNext, bool &provisionalRun,
                    const int32_t *nonAlphaMask) {
  if (provisionalRun) {
    out.takeBack(nonAlphaMask);
    provisionalRun = false;
  } else if (out.sinceSeparator > 0 && c != kCarriageReturn && c != kLineFeed) {
    out.put(' ');
  }
  out.sinceSeparator = 0;
  if (c == kLineFeed || c == kLineBreakByte) {
    out.lineFeed();
    return true;
  }
  if (c == kCarriageReturn) {
    // CR LF makes one line break: the LF writes it.
    if (!lineFeedNext) out.lineFeed();
    return true;
  }
  return false;
}

}  // namespace

unsigned long CFileAnalyzer::stripBuffer(char *source, unsigned long sourceLength, char *output,
                                         unsigned long outputSize, int wrapWidth, bool displayFlag,
                                         bool /*firstBuffer*/, int *state) {
  if (outputSize == 0) return 0;
  convertRawBuffer(source, sourceLength);
  const CKurvoIndex &index = *m_pIndex;
  auto viewable = [&](unsigned char c) { return index.validViewableMask[c] != 0; };
  auto nonAlpha = [&](unsigned char c) { return index.nonAlphaCharMask[c] != 0; };

  DisplayWriter out(output, outputSize - 1);
  char *const sourceEnd = source + sourceLength;
  char *read = source;
  bool inText = false;
  // Non-alpha bytes met outside text are written on approval: a separator
  // right after them takes them back.
  bool provisionalRun = false;
  int highBitRun = 0;
  unsigned char previous = 0;
  bool afterNul = true;

  while (read < sourceEnd && !out.full()) {
    // Bytes after the current one. A hook that takes more bytes moves read to
    // the last of them and keeps this in step; the loop then steps past it.
    unsigned long remaining = static_cast<unsigned long>(sourceEnd - read) - 1;
    unsigned char c = static_cast<unsigned char>(*read);

    // One NUL behind a shown character is the high byte of two-byte text.
    bool nulFlagSet = false;
    if (c == 0 && !afterNul) {
      afterNul = true;
      nulFlagSet = true;
      if (viewable(previous)) {
        previous = c;
        ++read;
        continue;
      }
    }
    if (!nulFlagSet) afterNul = false;

    if (m_bHooks && checkStripCharacter(&c, &read, &remaining, out.lastByte(), displayFlag, state)) {
      previous = c;
      ++read;
      continue;
    }

    bool writeByte = true;
    if (nonAlpha(c)) {
      if (!inText && !viewable(c)) {
        provisionalRun = true;
      } else {
        inText = true;
        provisionalRun = false;
      }
    } else if (viewable(c)) {
      inText = true;
    } else {
      writeByte = false;
      const bool lineFeedNext = read + 1 < sourceEnd && read[1] == static_cast<char>(kLineFeed);
      inText = writeSeparator(out, c, lineFeedNext, provisionalRun, index.nonAlphaCharMask);
    }

    if ((c & 0x80) && !inText) {
      ++highBitRun;
    } else {
      if (highBitRun > kMaxHighBitRun) out.dropHighBitTail();
      highBitRun = 0;
    }
    out.wrap(wrapWidth);

    if (writeByte) out.put(static_cast<char>(c));
    previous = c;
    ++read;
  }

  return out.finish();
}
