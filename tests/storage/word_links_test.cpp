// CWordLinks: per-file groups of word entries, with and without count bytes (storing and reopening the
// region they share with the file links is tested there).

#include "storage/word_links.h"
#include "test_support.h"

using namespace kurvo_test;

namespace {

struct Link {
  uint32_t file;
  uint32_t word;
  unsigned char count;
  bool operator==(const Link &o) const { return file == o.file && word == o.word && count == o.count; }
};

// The pairs of the region in order, read the way compression reads them.
std::vector<Link> readAll(const CWordLinks &links) {
  std::vector<Link> out;
  uint32_t pos = 16;
  for (uint32_t file = links.getFile(pos); file != 0; file = links.getFile(pos)) {
    unsigned char count = 0;
    for (uint32_t word = links.getWord(pos, count); word != 0; word = links.getWord(pos, count))
      out.push_back({file, word, count});
  }
  return out;
}

}  // namespace

TEST(WordLinks, WordsOfFilesAAndBFormTwoGroups) {
  for (int counts : {0, 1}) {
    SCOPED_TRACE(counts);
    TempDir dir;
    CWordLinks links(dir.file("temp"), 65535, 1048575, counts);
    links.addWord(36, 100, 3);
    links.addWord(36, 200, 255);
    links.addWord(60, 300, 0);
    const std::string body(links.getPointer(16), links.getUsed() - 16);
    if (counts) {
      EXPECT_EQ(body, wordBytes({36, 100}) + '\3' + wordBytes({200}) + '\xFF' + wordBytes({0}) + '\0' +
                          wordBytes({60, 300}) + '\0');
      EXPECT_EQ(readAll(links), (std::vector<Link>{{36, 100, 3}, {36, 200, 255}, {60, 300, 0}}));
    } else {
      EXPECT_EQ(body, wordBytes({36, 100, 200, 0, 60, 300}));
      // Without count bytes every entry reads as 255.
      EXPECT_EQ(readAll(links), (std::vector<Link>{{36, 100, 255}, {36, 200, 255}, {60, 300, 255}}));
    }
  }
}
