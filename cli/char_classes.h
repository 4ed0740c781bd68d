// The four character classes an index cuts words with, written as byte ranges.
#pragma once

#include <array>
#include <string>

namespace kurvo_cli {

using ByteSet = std::array<bool, 256>;

// Parses "30-39,41-5a,5f" (hexadecimal bytes and ranges); throws HostError.
ByteSet parseByteRanges(const std::string &text, const std::string &what);
std::string formatByteRanges(const ByteSet &set);

struct CharClasses {
  ByteSet wordStart{};  // may start a word
  ByteSet wordRest{};   // may continue a word
  ByteSet viewable{};   // shown by the viewer
  ByteSet nonAlpha{};   // counts as a non-letter inside a word
};

// Letters of ISO-8859-1 / Windows-1252 and the digits start and continue
// words; printable ASCII, tab and 0xA0-0xFF are shown; digits and common
// punctuation are non-letters.
CharClasses defaultCharClasses();

}  // namespace kurvo_cli
