// PreparedText: the words of a UTF-8 text file cut ahead of its indexing, on the read-ahead thread.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

class CKurvoIndex;
struct stat;

// What indexing a UTF-8 text file takes from its bytes, in order: for each
// read, the bytes read and the words that ended in it; then the last word,
// unless the read limit cut the file short. The words of one read are each
// held once, in the order they first came, with how often they came: in one
// file, n occurrences of a word in a row leave what n single ones leave.
struct PreparedText {
  struct Word {
    uint32_t offset;  // in texts
    uint32_t length;
    uint32_t hash;   // textHash
    uint32_t times;  // occurrences in its read
  };
  struct Read {
    uint64_t got;
    size_t wordsEnd;  // the words up to here ended in or before this read
  };

  std::string texts;  // the words back to back, each with its NUL
  std::vector<Word> words;
  std::vector<Read> reads;
  bool cut = false;
  uint64_t foreign = 0;
  // The file as it was read; a record of another size or time was made of
  // another version of it.
  uint32_t size = 0;
  int32_t time = 0;
};

// Reads and cuts the open file fd, of the given status, as the "utf8"
// analyzer would, and closes it; null when it cannot be read. Only reads the
// file and the index's settings, and calls nothing back.
std::unique_ptr<PreparedText> prepareText(const CKurvoIndex &index, int fd, const struct stat &info);
