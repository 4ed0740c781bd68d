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

// Equal plaintexts give equal ciphertexts: every one starts with the same
// vector, the empty one included.
TEST(Encipher, RoundTripsAnyBytesBehindOneFixedVector) {
  const Bytes vector = encipher(Bytes());
  ASSERT_EQ(vector.size(), 10u);
  const std::string texts[] = {"", "password", std::string("\0\x01\xfe\xff", 4), std::string(300, 'x')};
  for (const auto &t : texts) {
    Bytes plain = bytesOf(t);
    Bytes cipher = encipher(plain);
    EXPECT_EQ(encipher(plain), cipher) << t;
    EXPECT_EQ(Bytes(cipher.begin(), cipher.begin() + 10), vector) << t;
    EXPECT_TRUE(t.empty() || Bytes(cipher.begin() + 10, cipher.end()) != plain) << t;
    EXPECT_EQ(decipher(cipher), plain) << t;
  }
}

TEST(Hex, UpperCaseOutEitherCaseInAndNonDigitsNotRejected) {
  EXPECT_EQ(hexOf(Bytes{0x00, 0xAB}), std::string("00AB\0", 5));
  char untouched[2] = {'x', 'y'};
  convertToHex(0, nullptr, untouched);  // nothing at all for length 0
  EXPECT_EQ(std::string(untouched, 2), "xy");
  Bytes out{0xEE, 0xEE};
  convertFromHex("00aB", 2, out.data());
  EXPECT_EQ(out, (Bytes{0x00, 0xAB}));
  const struct {
    char high, low;
    unsigned char expected;
  } cases[] = {{'0', 'g', 16},                                           // 'g' counts on from 'f'
               {'g', '0', 0},                                            // 16 * 16 cut to 8 bits
               {'1', 'G', 0x20},                                         // the low digit is lower-cased first
               {'0', '.', static_cast<unsigned char>('.' - 'a' + 10)}};  // a negative nibble wraps
  for (const auto &c : cases) {
    fromhex(c.high, c.low, out.data());
    EXPECT_EQ(out[0], c.expected) << c.high << c.low;
  }
}

}  // namespace
