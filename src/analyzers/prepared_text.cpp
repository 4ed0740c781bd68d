// PreparedText: reading and cutting a UTF-8 text file ahead of its indexing.
#include "analyzers/prepared_text.h"

#include <sys/stat.h>
#include <unistd.h>

#include "analyzers/c_handles.h"
#include "analyzers/utf8_words.h"
#include "storage/hashed_storage.h"

void PreparedText::push(const char *word, size_t length) {
  words.push_back({static_cast<uint32_t>(texts.size()), static_cast<uint32_t>(length), textHash(word)});
  texts.append(word, length + 1);
}

std::unique_ptr<PreparedText> prepareText(const CKurvoIndex &index, int fd, const struct stat &info) {
  FileHandle file(fdopen(fd, "rb"));
  if (!file) {
    close(fd);
    return nullptr;
  }
  auto prepared = std::make_unique<PreparedText>();
  prepared->size = static_cast<uint32_t>(info.st_size);
  prepared->time = static_cast<int32_t>(info.st_mtime);
  utf8_words::WordCollector<PreparedText> words(index, *prepared);
  Utf8Decoder decoder;
  PreparedText &p = *prepared;
  p.cut = utf8_words::cutFile(file.get(), index, decoder, words, [&p](size_t got) {
    p.reads.push_back({got, p.words.size()});
  });
  if (!p.cut) words.finish();
  p.foreign = decoder.foreignCount();
  return prepared;
}
