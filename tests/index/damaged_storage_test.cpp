// A damaged storage folder must give errors, never a crash or a hang.

#include <algorithm>
#include <random>

#include "contents/file_contents.h"
#include "test_support.h"

using namespace kurvo_test;

namespace {

const char *const kStorageFiles[] = {"files", "words", "links", "skipped", "hash"};

// Reads everything a host or an update reads: the library's errors are fine, faults are not.
void exerciseIndex(const std::string &storage) {
  std::unique_ptr<CKurvoIndex> index;
  throwsKurvo([&] { index = std::make_unique<CKurvoIndex>(false, storage); });
  if (!index) return;
  throwsKurvo([&] { configureIndex(*index); });
  index->reportFolder = storage;  // a failed prune leaves its diagnostic there
  throwsKurvo([&] {
    for (uint32_t w = index->words->getFirst(); w; w = index->words->getNext(w)) {
      // Like a careful host: unreadable entries come back as null.
      const char *text = index->words->getText(w);
      if (text && index->words->getData(w) && index->words->lookup(text)) readWordFiles(*index, w);
    }
  });
  throwsKurvo([&] {
    for (uint32_t r = index->files->getFirst(); r; r = index->files->getNext(r)) {
      const char *data = index->files->getData(r);
      if (!data) continue;
      index->files->lookupFile(file_record::name(data), file_record::parent(data));
      throwsKurvo([&] { CFileContents(index.get(), r, 4096, 0, true, 5).containsHit("alpha"); });
    }
  });
  throwsKurvo([&] {
    index->prune();
    index->compressLinks();
  });
}

void corrupt(const std::string &path, std::mt19937 &random) {
  std::string bytes = readFile(path);
  if (bytes.empty()) return;
  switch (random() % 4) {
    case 3:  // everything behind the header overwritten
      if (bytes.size() > 16) std::fill(bytes.begin() + 16, bytes.end(), static_cast<char>(0xFF));
      break;
    case 0:  // a few random bytes
      for (int i = 0; i < 4; ++i) bytes[random() % bytes.size()] = static_cast<char>(random());
      break;
    case 1: {  // one word set to a value near a boundary
      const uint32_t values[] = {0, 1, 16, 35, 36, 0xFFFFFFFFu, 0x7FFFFFFFu, static_cast<uint32_t>(bytes.size())};
      const size_t at = random() % bytes.size();
      const uint32_t value = values[random() % 8];
      for (size_t i = 0; i < 4 && at + i < bytes.size(); ++i) bytes[at + i] = static_cast<char>(value >> (8 * i));
      break;
    }
    default:  // cut short
      bytes.resize(random() % bytes.size());
      break;
  }
  writeFile(path, bytes);
}

}  // namespace

TEST(DamagedStorage, RandomDamageGivesErrorsNotFaults) {
  TempDir tmp;
  const std::string tree = scratchRoot(tmp) + "tree";
  writeFile(tree + "/one.txt", "alpha beta gamma alpha\n");
  writeFile(tree + "/sub/two.txt", "beta delta alpha epsilon\n");
  writeFile(tree + "/sub/three.txt", "gamma zeta eta theta\n");
  {
    auto index = startFullBuild(tmp, "the\n");
    const uint32_t top = addTopFolder(*index, tree);
    index->indexDirectory(tree.c_str(), top);
    index->compressLinks();
    index->storeStorage(tmp.path());
  }
  std::map<std::string, std::string> pristine;
  for (const char *name : kStorageFiles) pristine[name] = tmp.read(name);

  std::mt19937 random(20261122);
  for (int round = 0; round < 300; ++round) {
    for (const auto &[name, bytes] : pristine) tmp.write(name, bytes);
    std::remove(tmp.file("temp").c_str());
    corrupt(tmp.file(kStorageFiles[random() % 5]), random);
    SCOPED_TRACE(round);
    exerciseIndex(tmp.path());
  }
}
