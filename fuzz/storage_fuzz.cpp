// Fuzzes reopening an index from an arbitrary summary file over real tables.
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <string>

#include "index/kurvo_index.h"
#include "small_store.h"
#include "storage/byte_io.h"

namespace {

// A small stored index whose "hash" each input replaces.
struct Store {
  std::string path = makeSmallStore();
};

void walk(CKurvoIndex &index) {
  for (uint32_t w = index.words->getFirst(); w; w = index.words->getNext(w)) {
    const char *text = index.words->getText(w);
    if (text) index.words->lookup(text);
  }
  for (uint32_t r = index.files->getFirst(); r; r = index.files->getNext(r)) {
    const char *data = index.files->getData(r);
    if (data) index.files->lookupFile(file_record::name(data), file_record::parent(data));
  }
  index.skipWords->lookup("alpha");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, size_t size) {
  static Store store;
  std::ofstream(store.path + "hash", std::ios::binary | std::ios::trunc)
      .write(reinterpret_cast<const char *>(data), static_cast<std::streamsize>(size));
  try {
    CKurvoIndex index(false, store.path);
    walk(index);
  } catch (int) {
  }
  return 0;
}
