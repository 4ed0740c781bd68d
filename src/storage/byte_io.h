// Unaligned, host-order access to the 16- and 32-bit words of storage files.
#pragma once

#include <cstdint>
#include <cstring>

// Storage records lie back to back at any byte offset, so their words are
// never read through a cast pointer: memcpy is exact and free of alignment
// and aliasing faults.
inline uint32_t load32(const void *p) {
  uint32_t v;
  std::memcpy(&v, p, sizeof v);
  return v;
}

inline void store32(void *p, uint32_t v) { std::memcpy(p, &v, sizeof v); }

inline int32_t loadSigned32(const void *p) {
  int32_t v;
  std::memcpy(&v, p, sizeof v);
  return v;
}

inline void storeSigned32(void *p, int32_t v) { std::memcpy(p, &v, sizeof v); }

inline uint16_t load16(const void *p) {
  uint16_t v;
  std::memcpy(&v, p, sizeof v);
  return v;
}

inline void store16(void *p, uint16_t v) { std::memcpy(p, &v, sizeof v); }

// A word as a machine of the other byte order holds it.
inline uint32_t swapBytes32(uint32_t v) {
  return (v >> 24) | ((v >> 8) & 0xFF00u) | ((v << 8) & 0xFF0000u) | (v << 24);
}
