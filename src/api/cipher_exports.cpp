// The host's password cipher and hex codec: CipherSaber with the built-in key.
#include "analyzers/containers/cipher.h"
#include "kurvo.h"

namespace {

constexpr unsigned int kBuiltInKeyLength = 80;

// Binary, not text: it may hold zero bytes. Data enciphered by one build can
// only be read by a build with the same key.
constexpr unsigned char kBuiltInKey[kBuiltInKeyLength] = {
    0xB5, 0x78, 0x92, 0xF2, 0x19, 0x32, 0x5A, 0xD8, 0xD4, 0x85, 0x86, 0x9D, 0x41, 0x70, 0x81, 0x89,
    0xCB, 0x54, 0x0F, 0xFD, 0x4D, 0x7B, 0xC8, 0xB8, 0x5D, 0x00, 0xAC, 0x0A, 0xA1, 0xE8, 0xF6, 0x47,
    0x7E, 0x30, 0x35, 0x66, 0x1F, 0x3B, 0xFD, 0xFF, 0xD1, 0xD4, 0x81, 0xD4, 0x26, 0xC8, 0x63, 0x43,
    0x85, 0x18, 0x54, 0x5C, 0x9D, 0x90, 0x0F, 0x01, 0xE3, 0x42, 0x8F, 0xE3, 0x34, 0x20, 0x1D, 0x93,
    0x68, 0x21, 0x7B, 0x12, 0x83, 0x88, 0xDA, 0x33, 0x53, 0x7A, 0x2B, 0x16, 0x53, 0xE0, 0x88, 0x32};

}  // namespace

extern "C" {

KURVO_API void kEncipher(const unsigned char *input, unsigned int length, unsigned char *output) {
  cipherSaberEncrypt(length, input, kBuiltInKeyLength, kBuiltInKey, output);
}

KURVO_API void kDecipher(const unsigned char *input, unsigned int length, unsigned char *output) {
  cipherSaberDecrypt(length, input, kBuiltInKeyLength, kBuiltInKey, output);
}

KURVO_API void convertToHex(unsigned int length, const unsigned char *input, char *output) {
  if (length == 0) return;
  for (unsigned int n = 0; n < length; ++n) tohex(input[n], &output[2 * n], &output[2 * n + 1]);
  output[2 * length] = '\0';
}

KURVO_API void convertFromHex(const char *input, unsigned int length, unsigned char *output) {
  for (unsigned int n = 0; n < length; ++n) fromhex(input[2 * n], input[2 * n + 1], &output[n]);
}

}  // extern "C"
