// ARCFOUR, CipherSaber with a fixed IV, and a hex codec, for the host's secrets.
#include "analyzers/containers/cipher.h"

#include <cctype>
#include <cstdlib>
#include <cstring>
#include <ctime>

namespace {

constexpr unsigned int kIvLength = 10;

// The fixed initialisation vector written in front of every ciphertext. A
// fixed vector makes equal secrets encipher equally, which the host relies on
// to compare a stored password without deciphering it.
constexpr unsigned char kFixedIv[kIvLength] = {0xB8, 0x82, 0x6A, 0xE4, 0xDE, 0xCE, 0x47, 0xCF, 0x96, 0xF3};

// Milliseconds of the current second (0-999), the seed of the throw-away
// random vector. glibc deprecates ftime, whose millisecond field this is, so
// the same value is taken from clock_gettime; the vector is overwritten with
// the fixed one anyway, so nothing visible depends on it.
unsigned int clockMilliseconds() {
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  return static_cast<unsigned int>(now.tv_nsec / 1000000);
}

}  // namespace

void arcfourCrypt(unsigned int length, const unsigned char *input, unsigned int keyLength, const unsigned char *key,
                  unsigned char *output) {
  unsigned char state[256];
  for (unsigned int k = 0; k < 256; ++k) state[k] = static_cast<unsigned char>(k);

  unsigned int j = 0;
  for (unsigned int i = 0; i < 256; ++i) {
    j = (j + state[i] + key[i % keyLength]) & 0xFF;
    unsigned char t = state[i];
    state[i] = state[j];
    state[j] = t;
  }

  unsigned int i = 0;
  j = 0;
  for (unsigned int n = 0; n < length; ++n) {
    i = (i + 1) & 0xFF;
    j = (j + state[i]) & 0xFF;
    unsigned char t = state[i];
    state[i] = state[j];
    state[j] = t;
    output[n] = static_cast<unsigned char>(input[n] ^ state[(state[i] + state[j]) & 0xFF]);
  }
}

void cipherSaberEncrypt(unsigned int length, const unsigned char *input, unsigned int keyLength,
                        const unsigned char *key, unsigned char *output) {
  srand(clockMilliseconds());
  unsigned char *extended = static_cast<unsigned char *>(std::malloc(keyLength + kIvLength));
  std::memcpy(extended, key, keyLength);
  for (unsigned int n = 0; n < kIvLength; ++n) extended[keyLength + n] = static_cast<unsigned char>(rand() & 0xFF);
  std::memcpy(extended + keyLength, kFixedIv, kIvLength);

  arcfourCrypt(length, input, keyLength + kIvLength, extended, output + kIvLength);
  std::memcpy(output, extended + keyLength, kIvLength);

  std::memset(extended, 0, keyLength + kIvLength);
  std::free(extended);
}

void cipherSaberDecrypt(unsigned int length, const unsigned char *input, unsigned int keyLength,
                        const unsigned char *key, unsigned char *output) {
  unsigned char *extended = static_cast<unsigned char *>(std::malloc(keyLength + kIvLength));
  std::memcpy(extended, key, keyLength);
  std::memcpy(extended + keyLength, input, kIvLength);
  arcfourCrypt(length - kIvLength, input + kIvLength, keyLength + kIvLength, extended, output);
  std::free(extended);
}

void tohex(unsigned char byte, char *high, char *low) {
  static const char digits[] = "0123456789ABCDEF";
  *high = digits[byte >> 4];
  *low = digits[byte & 0x0F];
}

// Digits are not validated: a non-digit counts from 'a' after lower-casing,
// so 'g' gives 16 and punctuation gives negative nibbles; the sum is then cut
// to 8 bits.
static int hexNibble(char digit) {
  if (digit >= '0' && digit <= '9') return digit - '0';
  return std::tolower(static_cast<unsigned char>(digit)) - 'a' + 10;
}

void fromhex(char high, char low, unsigned char *out) {
  low = static_cast<char>(std::tolower(static_cast<unsigned char>(low)));
  *out = static_cast<unsigned char>(hexNibble(high) * 16 + hexNibble(low));
}
