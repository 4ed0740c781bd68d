// The initial length and growth step every storage table is created with.
#pragma once

#include <cstdint>

struct TableSize {
  uint32_t initial;
  uint32_t increment;
};

namespace table_sizes {
constexpr TableSize kFiles{65535, 1048575};
constexpr TableSize kWords{131071, 1048575};
constexpr TableSize kSkipped{32767, 65535};
constexpr TableSize kLinks{65535, 1048575};  // "temp" too
}  // namespace table_sizes
