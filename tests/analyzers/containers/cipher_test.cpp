// The password cipher (ARCFOUR, CipherSaber with a fixed vector) and the hex codec.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "analyzers/containers/cipher.h"
#include "kurvo.h"

namespace {

using Bytes = std::vector<unsigned char>;

Bytes bytesOf(const std::string &s) { return Bytes(s.begin(), s.end()); }

Bytes encipher(const Bytes &plain) {
  Bytes out(plain.size() + 10);
  kEncipher(plain.data(), static_cast<unsigned int>(plain.size()), out.data());
  return out;
}

Bytes decipher(const Bytes &cipher) {
  Bytes out(cipher.size() - 10 + 1);
  kDecipher(cipher.data(), static_cast<unsigned int>(cipher.size()), out.data());
  out.pop_back();
  return out;
}

std::string hexOf(const Bytes &b) {
  std::string out(2 * b.size() + 1, '\x7f');
  convertToHex(static_cast<unsigned int>(b.size()), b.data(), out.data());
  return out;
}

TEST(Arcfour, PublishedVectors) {
  const std::string cases[][3] = {{"Key", "Plaintext", "BBF316E8D940AF0AD3"},
                                  {"Secret", "Attack at dawn", "45A01F645FC35B383552544B9BF5"}};
  for (const auto &c : cases) {
    Bytes key = bytesOf(c[0]), plain = bytesOf(c[1]), out(plain.size());
    arcfourCrypt(static_cast<unsigned int>(plain.size()), plain.data(), static_cast<unsigned int>(key.size()),
                 key.data(), out.data());
    EXPECT_EQ(hexOf(out), c[2] + '\0') << c[0];
  }
}

TEST(CipherSaber, BodyIsArcfourUnderKeyAndVector) {
  Bytes key = bytesOf("user key"), plain = bytesOf("hello"), cipher(plain.size() + 10);
  cipherSaberEncrypt(5, plain.data(), static_cast<unsigned int>(key.size()), key.data(), cipher.data());
  // Bytes 10.. are plain RC4 under key + vector, the vector sent in clear.
  Bytes extended = key;
  extended.insert(extended.end(), cipher.begin(), cipher.begin() + 10);
  Bytes body(5);
  arcfourCrypt(5, plain.data(), static_cast<unsigned int>(extended.size()), extended.data(), body.data());
  EXPECT_EQ(Bytes(cipher.begin() + 10, cipher.end()), body);
}

TEST(Encipher, RoundTripsAnyBytes) {
  const std::string texts[] = {"", "password", std::string("\0\x01\xfe\xff", 4), std::string(300, 'x')};
  for (const auto &t : texts) {
    Bytes plain = bytesOf(t);
    Bytes cipher = encipher(plain);
    ASSERT_EQ(cipher.size(), plain.size() + 10);
    EXPECT_EQ(decipher(cipher), plain) << t;
  }
}

TEST(Encipher, EqualPlaintextsGiveEqualCiphertexts) {
  Bytes plain = bytesOf("same secret");
  Bytes first = encipher(plain);
  EXPECT_EQ(encipher(plain), first);
  EXPECT_NE(Bytes(first.begin() + 10, first.end()), plain);
  // Every ciphertext starts with the same vector, the empty one included.
  EXPECT_EQ(encipher(Bytes()), Bytes(first.begin(), first.begin() + 10));
}

TEST(Hex, ToHexWritesUpperCaseDigitsAndNulButNothingForLengthZero) {
  EXPECT_EQ(hexOf(Bytes{0x00, 0xAB}), std::string("00AB\0", 5));
  char out[2] = {'x', 'y'};
  convertToHex(0, nullptr, out);
  EXPECT_EQ(std::string(out, 2), "xy");
}

TEST(Hex, FromHexAcceptsEitherCase) {
  for (const char *text : {"00ab", "00AB", "00aB"}) {
    unsigned char out[2] = {0xEE, 0xEE};
    convertFromHex(text, 2, out);
    EXPECT_EQ(out[0], 0x00) << text;
    EXPECT_EQ(out[1], 0xAB) << text;
  }
}

TEST(Hex, NonDigitsAreNotRejected) {
  unsigned char out = 0;
  fromhex('0', 'g', &out);  // 'g' counts on from 'f'
  EXPECT_EQ(out, 16);
  fromhex('g', '0', &out);  // 16 * 16 cut to 8 bits
  EXPECT_EQ(out, 0);
  fromhex('1', 'G', &out);  // the low digit is lower-cased first
  EXPECT_EQ(out, 0x20);
  fromhex('0', '.', &out);  // a negative nibble wraps
  EXPECT_EQ(out, static_cast<unsigned char>('.' - 'a' + 10));
}

}  // namespace
