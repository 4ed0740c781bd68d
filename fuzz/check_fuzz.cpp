// Fuzzes the store check and the link measure over one replaced storage file.
#include <cstdio>
#include <fstream>
#include <string>

#include "index/kurvo_index.h"
#include "small_store.h"
#include "storage/storage_check.h"

namespace {

const char *const kFiles[] = {"hash", "files", "words", "skipped", "links"};

// A small stored index, kept whole in memory so that each input starts from it.
struct Store {
  Store() : path(makeSmallStore()) {
    for (int i = 0; i < 5; ++i) {
      std::ifstream in(path + kFiles[i], std::ios::binary);
      pristine[i].assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    }
  }
  void write(int i, const char *data, size_t size) const {
    std::ofstream(path + kFiles[i], std::ios::binary | std::ios::trunc).write(data, static_cast<std::streamsize>(size));
  }
  std::string path;
  std::string pristine[5];
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, size_t size) {
  static Store store;
  if (size == 0) return 0;
  for (int i = 0; i < 5; ++i) store.write(i, store.pristine[i].data(), store.pristine[i].size());
  const int replaced = data[0] % 5;
  store.write(replaced, reinterpret_cast<const char *>(data + 1), size - 1);
  checkStorage(store.path, [](const char *, uint32_t, const char *) {});
  try {
    CKurvoIndex index(false, store.path);
    double live = 0, dead = 0;
    index.measureLinkSpace(live, dead);
  } catch (int) {
  }
  return 0;
}
