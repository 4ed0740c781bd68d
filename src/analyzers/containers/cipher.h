// ARCFOUR, CipherSaber with a fixed IV, and a hex codec, for the host's secrets.
#pragma once

void arcfourCrypt(unsigned int length, const unsigned char *input, unsigned int keyLength, const unsigned char *key,
                  unsigned char *output);
void cipherSaberEncrypt(unsigned int length, const unsigned char *input, unsigned int keyLength,
                        const unsigned char *key, unsigned char *output);
void cipherSaberDecrypt(unsigned int length, const unsigned char *input, unsigned int keyLength,
                        const unsigned char *key, unsigned char *output);
void tohex(unsigned char byte, char *high, char *low);
void fromhex(char high, char low, unsigned char *out);
