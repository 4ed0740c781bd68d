// Process-wide exported functions: creating an index, name matching, freeing blocks, checking a store.
#include <cstdlib>
#include <string>

#include "index/kurvo_index.h"
#include "index/name_match.h"
#include "kurvo.h"
#include "storage/storage_check.h"

extern "C" {

KURVO_API void *kCreateNewIndex(int create, const char *storagePath) {
  try {
    return new CKurvoIndex(create != 0, std::string(storagePath));
  } catch (...) {
    return nullptr;
  }
}

KURVO_API int kGetVersion(void) {
  return KURVO_VERSION_MAJOR * 10000 + KURVO_VERSION_MINOR * 100 + KURVO_VERSION_PATCH;
}

KURVO_API int kFileNameMatch(const char *name, const char *pattern) { return fileNameMatch(name, pattern); }

// Blocks handed to the host come from malloc inside the library; the host
// must give them back here so that they meet the same allocator.
KURVO_API void kDeleteChar(void *block) { std::free(block); }

KURVO_API unsigned int kCheckStorage(const char *folder, KurvoDamageCallback found, void *context) {
  try {
    return checkStorage(folder ? folder : "", [&](const char *file, uint32_t offset, const char *what) {
      if (found) found(file, offset, what, context);
    });
  } catch (...) {
    // Only memory can run out here: count it as a store that is not known sound.
    return 1;
  }
}

}  // extern "C"
