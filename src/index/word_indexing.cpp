// CKurvoIndex word indexing: recording word occurrences and loading the skip words.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>
#include <vector>

#include "report/message_keys.h"
#include "report/reporting.h"
#include "index/kurvo_index.h"
#include "storage/byte_io.h"
#include "storage/lower_case_table.h"
#include "storage/table_sizes.h"

namespace {

constexpr uint32_t kSkipReadSize = 65535;

struct FileCloser {
  void operator()(FILE *f) const { std::fclose(f); }
};

// The counter after n more occurrences in the same file: it counts up to 255
// and stays there (one from elsewhere stays the way single steps take it).
uint16_t counted(uint16_t counter, uint32_t n) {
  if (counter <= 255) return static_cast<uint16_t>(std::min<uint32_t>(counter + n, 255));
  for (; n && counter != 255; --n) ++counter;
  return counter;
}

}  // namespace

uint32_t CKurvoIndex::indexWord(const char *word, uint32_t fileNumber, uint32_t hash, size_t length, uint32_t times) {
  // One hash serves the skip table, the word table and a new word's chain.
  if (skipWords) {
    uint32_t skipped = skipWords->lookup(word, hash, length);
    if (skipped) return skipped;
  }

  // Without the tables of a collecting index there is nowhere to record it.
  if (!words || !wordLinks) throwKurvoError(kurvo_keys::kAssertionFailed, "");
  uint32_t wordNumber = words->lookup(word, hash, length);
  if (!wordNumber) {
    wordNumber = words->addText(word, hash);
    ++WordsIndexed;
  }

  // A reopened table is mapped read-only until something makes it writable;
  // the word data is rewritten in place.
  if (!words->isWritable()) words->enableWrite();

  // Only the word's current file is kept here; its pair goes to the word
  // links when the word turns up in another file.
  char *data = words->foundData(wordNumber);
  uint32_t currentFile = load32(data + word_data::kCurrentFile);
  uint16_t counter = load16(data + word_data::kCounter);
  uint32_t earlierFiles = load32(data + word_data::kEarlierFiles);

  uint32_t repeats = times;
  if (currentFile == 0) {
    store32(data + word_data::kCurrentFile, fileNumber);
    store32(data + word_data::kEarlierFiles, 0);
    counter = 0;
    if (repeats) --repeats;
  } else if (currentFile != fileNumber) {
    wordLinks->addWord(currentFile, wordNumber, static_cast<unsigned char>(counter & 0xFF));
    store32(data + word_data::kCurrentFile, fileNumber);
    store32(data + word_data::kEarlierFiles, earlierFiles + 1);
    counter = 0;
    if (repeats) --repeats;
  }
  if (UseRanking && repeats) counter = counted(counter, repeats);
  store16(data + word_data::kCounter, counter);
  return wordNumber;
}

uint32_t CKurvoIndex::indexExcludedWord(const char *word) {
  uint32_t entry = skipWords->lookup(word);
  if (entry) return entry;
  return skipWords->addText(word);
}

void CKurvoIndex::indexExcludeBuffer(char *buffer, uint32_t length) {
  // Words are lower-cased and cut in place; reading and writing go in step.
  char *wordStart = buffer;
  for (uint32_t i = 0; i < length; ++i) {
    char *at = buffer + i;
    const unsigned char c = static_cast<unsigned char>(*at);
    const bool inWord = at != wordStart;
    if (validCharMask[c] || (inWord && validTrailingMask[c])) {
      *at = static_cast<char>(lowerCase(c));
    } else if (!inWord) {
      wordStart = at + 1;
    } else {
      *at = 0;
      indexExcludedWord(wordStart);
      wordStart = at + 1;
    }
  }

  const char *end = buffer + length;
  if (end != wordStart) {
    size_t carried = static_cast<size_t>(end - wordStart);
    if (carried > sizeof partialWord - 1) carried = sizeof partialWord - 1;
    std::memcpy(partialWord, wordStart, carried);
    partialWord[carried] = 0;
  }
}

void CKurvoIndex::indexExclusions() {
  if (ShowStatus) setStatus(kurvo_keys::kIndexingExcluded, "");

  delete skipWords;
  skipWords = nullptr;
  skipWords = new CTextStorage(storagePath + "skipped", table_sizes::kSkipped.initial, table_sizes::kSkipped.increment,
                               0, 1000);

  std::string path = !skipFilePath.empty() ? skipFilePath : configurationFolder() + "skipfile.txt";
  std::unique_ptr<FILE, FileCloser> file(std::fopen(path.c_str(), "rb"));
  if (!file) throwKurvoError(kurvo_keys::kSkipOpenFail, path);

  std::vector<char> buffer(kSkipReadSize);
  uint32_t carried = 0;
  partialWord[0] = 0;
  for (;;) {
    size_t n = std::fread(buffer.data() + carried, 1, kSkipReadSize - carried, file.get());
    if (n == 0) break;
    partialWord[0] = 0;
    indexExcludeBuffer(buffer.data(), carried + static_cast<uint32_t>(n));
    BytesRead += static_cast<double>(n);
    // With no unfinished word the previous carry length stays: those bytes,
    // already lower-cased, are read again in front of the next data.
    if (partialWord[0]) {
      carried = static_cast<uint32_t>(std::strlen(partialWord));
      std::memcpy(buffer.data(), partialWord, carried);
    }
  }
  // A last word without a separator after it needs more than two bytes.
  if (std::strlen(partialWord) > 2) indexExcludedWord(partialWord);
}
