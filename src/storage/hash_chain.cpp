// Walking and extending the bucket chains of the two hashed tables.
#include "storage/hash_chain.h"

#include "api/message_keys.h"
#include "api/reporting.h"
#include "storage/byte_io.h"

char *CHashChain::nextWord(uint32_t textOffset) const {
  char *word = textOffset >= m_prefix ? m_memory.getPointer(textOffset - m_prefix) : nullptr;
  if (!word || !m_memory.getRange(textOffset - m_prefix, 4))
    throwKurvoError(kurvo_keys::kAssertionFailed, "");
  return word;
}

uint32_t CHashChain::next(uint32_t textOffset) const { return load32(nextWord(textOffset)); }

void CHashChain::append(uint32_t &head, uint32_t textOffset) const {
  if (head == 0) {
    head = textOffset;
    return;
  }
  uint32_t current = head;
  for (uint32_t steps = 0;; ++steps) {
    checkSteps(steps);
    char *word = nextWord(current);
    uint32_t following = load32(word);
    if (following == 0) {
      store32(word, textOffset);
      return;
    }
    current = following;
  }
}

void CHashChain::checkSteps(uint32_t steps) const {
  if (steps > m_memory.getUsed() / (m_prefix + 1)) throwKurvoError(kurvo_keys::kAssertionFailed, "");
}
