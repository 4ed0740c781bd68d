// Matching an index word against a query term with '*' and '?' wildcards.
#include "index/kurvo_index.h"
#include "report/message_keys.h"
#include "report/reporting.h"

namespace {

struct Wildcards {
  bool star;
  bool question;
};

// Byte-exact, anchored at both ends; both texts are already lower case.
int matchFrom(const unsigned char *word, const unsigned char *pattern, Wildcards wild) {
  while (*pattern && *word) {
    if (*pattern == '*' && wild.star) {
      if (pattern[1] == 0) return 1;
      // The byte after the star is taken literally, even a '?' or '*'.
      const unsigned char next = pattern[1];
      for (const unsigned char *from = word; *from; ++from) {
        if (*from == next && matchFrom(from, pattern + 1, wild)) return 1;
      }
      return 0;
    }
    if (*pattern == *word || (*pattern == '?' && wild.question)) {
      ++pattern;
      ++word;
      continue;
    }
    break;
  }
  // Trailing wildcards may stand for nothing.
  while ((*pattern == '*' && wild.star) || (*pattern == '?' && wild.question)) ++pattern;
  return *pattern == 0 && *word == 0 ? 1 : 0;
}

}  // namespace

int CKurvoIndex::doesWordMatch(const char *word, const char *pattern) const {
  // '*' and '?' are ordinary word bytes when the masks let them into words.
  constexpr int star = '*';
  constexpr int question = '?';
  const Wildcards wild{!validCharMask[star] && !validTrailingMask[star],
                       !validCharMask[question] && !validTrailingMask[question]};
  return matchFrom(reinterpret_cast<const unsigned char *>(word), reinterpret_cast<const unsigned char *>(pattern),
                   wild);
}

bool CKurvoIndex::wordsWithPrefix(const std::string &prefix, std::vector<uint32_t> &out) {
  if (!words) throwKurvoError(kurvo_keys::kAssertionFailed, "");
  if (!wordOrder) wordOrder = std::make_unique<CWordOrder>(storagePath + "wordorder");
  return wordOrder->withPrefix(*words, prefix, out);
}
