// A small stored index in a fresh temporary folder, for the storage fuzzers.
#pragma once

#include <cstdlib>
#include <string>

#include "index/kurvo_index.h"

// One folder record and two files sharing three words, compressed and stored.
inline std::string makeSmallStore() {
  char pattern[] = "/tmp/kurvo-fuzz-XXXXXX";
  const std::string path = std::string(mkdtemp(pattern)) + "/a/b/c/";
  std::system(("mkdir -p " + path).c_str());
  CKurvoIndex index(true, path);
  index.newFileLinks();
  const uint32_t folder = index.files->addFile("/tmp");
  for (const char *name : {"x.txt", "y.txt"}) {
    const uint32_t file = index.files->addFile(name);
    file_record::setParent(index.files->getData(file), folder);
    for (const char *word : {"alpha", "beta", "gamma"}) index.indexWord(word, file);
  }
  index.compressLinks();
  index.storeStorage(path);
  return path;
}
