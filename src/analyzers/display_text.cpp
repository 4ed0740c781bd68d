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

// What stripBuffer carries from one byte to the next.
struct StripRun {
  bool inText = false;
  // Non-alpha bytes met outside text are written on approval: a separator
  // right after them takes them back.
  bool provisionalRun = false;
  int highBitRun = 0;
  unsigned char previous = 0;
  bool afterNul = true;

  // One NUL behind a shown character is the high byte of two-byte text:
  // true for such a NUL, which is left out.
  bool skipsHighByteNul(unsigned char c, const int32_t *viewableMask) {
    if (c != 0 || afterNul) {
      afterNul = false;
      return false;
    }
    afterNul = true;
    return viewableMask[previous] != 0;
  }

  // Where c stands: in text, in a provisional run, or a separator, which is
  // written in its place. True when c itself is to be written.
  bool place(DisplayWriter &out, unsigned char c, bool lineFeedNext, const CKurvoIndex &index) {
    const bool viewable = index.validViewableMask[c] != 0;
    if (index.nonAlphaCharMask[c] != 0) {
      provisionalRun = !inText && !viewable;
      if (!provisionalRun) inText = true;
      return true;
    }
    if (viewable) {
      inText = true;
      return true;
    }
    inText = writeSeparator(out, c, lineFeedNext, provisionalRun, index.nonAlphaCharMask);
    return false;
  }

  // A run of high-bit bytes outside text that grew too long is taken back when it ends.
  void noteHighBit(DisplayWriter &out, unsigned char c) {
    if ((c & 0x80) && !inText) {
      ++highBitRun;
      return;
    }
    if (highBitRun > kMaxHighBitRun) out.dropHighBitTail();
    highBitRun = 0;
  }
};

}  // namespace

unsigned long CFileAnalyzer::stripBuffer(char *source, unsigned long sourceLength, char *output,
                                         unsigned long outputSize, int wrapWidth, bool displayFlag,
                                         bool /*firstBuffer*/, int *state) {
  if (outputSize == 0) return 0;
  convertRawBuffer(source, sourceLength);
  DisplayWriter out(output, outputSize - 1);
  StripRun run;
  char *const sourceEnd = source + sourceLength;
  for (char *read = source; read < sourceEnd && !out.full(); ++read) {
    // Bytes after the current one. A hook that takes more bytes moves read to
    // the last of them and keeps this in step; the loop then steps past it.
    unsigned long remaining = static_cast<unsigned long>(sourceEnd - read) - 1;
    unsigned char c = static_cast<unsigned char>(*read);
    const bool skipped = run.skipsHighByteNul(c, m_pIndex->validViewableMask) ||
                         (m_bHooks && checkStripCharacter(&c, &read, &remaining, out.lastByte(), displayFlag, state));
    if (!skipped) {
      const bool lineFeedNext = read + 1 < sourceEnd && read[1] == static_cast<char>(kLineFeed);
      const bool writeByte = run.place(out, c, lineFeedNext, *m_pIndex);
      run.noteHighBit(out, c);
      out.wrap(wrapWidth);
      if (writeByte) out.put(static_cast<char>(c));
    }
    run.previous = c;
  }
  return out.finish();
}
