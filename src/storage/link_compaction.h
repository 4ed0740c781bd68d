// Rewriting each word's chain of list blocks as one block of its live files.
#pragma once

#include <cstdint>
#include <vector>

#include "storage/file_links.h"
#include "storage/file_storage.h"
#include "storage/text_storage.h"

// Bytes of a links table past its reserved word: what one block per word
// would take (live), and the rest: entries of removed files, slots never
// filled and blocks of earlier runs (dead). A removed file is one whose
// number was overwritten with 1 or whose record is marked obsolete (a
// changed file is read again under a new record).
struct LinkSpace {
  uint64_t live = 0;
  uint64_t dead = 0;
};

LinkSpace measureLinks(const CTextStorage &words, const CFileStorage &files, const CFileLinks &links);

struct NewListPosition {
  uint32_t word;
  uint32_t position;
};

// Lays out in target (a new links table holding only its reserved word) one
// block per word with the entries of live files in of its chain in source, newest first,
// in the words' storage order. Returns each word's list position in target
// (0 for a word left without entries); the words are not changed, so a
// failure leaves them pointing into source.
std::vector<NewListPosition> compactLinks(const CTextStorage &words, const CFileStorage &files,
                                          const CFileLinks &source, CFileLinks &target);
