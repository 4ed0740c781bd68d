// CFileAnalyzer::indexBuffer: cuts a buffer into lower-cased words in place.
#include <algorithm>
#include <cstring>

#include "analyzers/file_analyzer.h"
#include "analyzers/word_queue.h"
#include "index/kurvo_index.h"
#include "storage/lower_case_table.h"

namespace {

// Room in the carry-over buffer for a word and its terminator.
constexpr unsigned long kCarryCopyLimit = 1023;
// A carried word longer than this loses its last character.
constexpr unsigned long kCarryKeepsLastLimit = 1021;

// Leaves the unfinished word [wordStart, write) in the carry-over buffer.
// The last character is set aside while the rest is copied and put back
// behind it only when the copy leaves room.
int carryWord(char *partialWord, char *wordStart, char *write) {
  const char last = write[-1];
  write[-1] = '\0';
  std::strncpy(partialWord, wordStart, kCarryCopyLimit);
  partialWord[kCarryCopyLimit] = '\0';
  const unsigned long copied = std::strlen(partialWord);
  if (copied <= kCarryKeepsLastLimit) {
    partialWord[copied] = last;
    partialWord[copied + 1] = '\0';
  }
  return static_cast<int>(std::strlen(partialWord));
}

}  // namespace

int CFileAnalyzer::indexBuffer(char *buffer, unsigned long length, unsigned long fileNumber, bool /*firstBuffer*/) {
  CKurvoIndex &index = *m_pIndex;
  const long minLength = index.MinWordLength;
  // Words one character longer than the maximum are still taken.
  const long maxLength = index.longestWordSetting();
  convertRawBuffer(buffer, length);

  char *bufferStart = buffer;
  char *read = buffer;
  char *wordStart = buffer;
  char *write = buffer;
  // One NUL inside a word is passed over, so that text stored two bytes a
  // character is indexed like plain text.
  bool afterNul = true;
  // A word framed by control bytes on both sides is binary noise.
  bool controlSeen = false;
  // No word is longer than the setting allows, nor than the buffer.
  const unsigned long longest = maxLength > 0 ? static_cast<unsigned long>(maxLength) + 1 : 1;
  WordQueue queue(index, static_cast<uint32_t>(fileNumber), std::min(longest, length));

  while (static_cast<unsigned long>(read - bufferStart) < length) {
    char c = *read;
    if (c == '\0' && !afterNul && write != wordStart) {
      ++read;
      afterNul = true;
      continue;
    }
    afterNul = false;
    if (m_bHooks && checkIndexCharacter(&c, &read, &wordStart, &write, &bufferStart, length)) {
      continue;
    }
    const unsigned char byte = static_cast<unsigned char>(c);
    const bool isControl = index.controlCharMask[byte] != 0;
    if (index.validCharMask[byte]) {
      *write++ = static_cast<char>(lowerCase(byte));
      ++read;
    } else if (write == wordStart) {
      if (!controlSeen && isControl) controlSeen = true;
      wordStart = write = ++read;
    } else if (index.validTrailingMask[byte]) {
      *write++ = static_cast<char>(lowerCase(byte));
      ++read;
    } else {
      const bool controlBefore = controlSeen;
      controlSeen = isControl;
      const long wordLength = write - wordStart;
      if ((!controlBefore || !isControl) && wordLength >= minLength && wordLength <= maxLength + 1) {
        *write = '\0';
        queue.push(wordStart, static_cast<size_t>(wordLength));
      }
      wordStart = write = ++read;
    }
  }

  // The number of the last word indexed, or the length of the word carried.
  int result = static_cast<int>(queue.flush());
  if (write != wordStart) result = carryWord(index.partialWord, wordStart, write);
  return result;
}
