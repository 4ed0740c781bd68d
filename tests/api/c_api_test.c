/* c_api_test.c: a C host builds an index, reopens it, queries and views it through kurvo.h only. */
#include "kurvo.h"

#include <dlfcn.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>

#define CHECK(cond, what)                                                                            \
  do {                                                                                               \
    if (!(cond)) {                                                                                   \
      fprintf(stderr, "c_api_test:%d: %s: %s (last error: %s)\n", __LINE__, #cond, what, lastError); \
      exit(1);                                                                                       \
    }                                                                                                \
  } while (0)

static char lastError[512] = "";
static int errorCount = 0;

static void onMessage(const char *key, const char *argument) {
  snprintf(lastError, sizeof lastError, "%s %s", key, argument);
  ++errorCount;
}

static void writeText(const char *path, const char *text) {
  FILE *f = fopen(path, "wb");
  CHECK(f != NULL, path);
  fputs(text, f);
  fclose(f);
}

/* What every open index needs: a read limit, ASCII letters make words,
 * printable ASCII is shown, and *.txt files are read as plain text. */
static void *openIndex(int create, const char *storage) {
  int c;
  void *index = kCreateNewIndex(create, storage);
  CHECK(index != NULL, storage);
  kidxSetMaxPerFileRead(index, 1000000);
  for (c = 0; c < 256; ++c) {
    int letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
    kidxSetValidCharMask(index, c, letter);
    kidxSetValidTrailingMask(index, c, letter);
    kidxSetValidViewableMask(index, c, c >= 32 && c < 127);
    kidxSetNonAlphaCharMask(index, c, false);
  }
  kidxCreateAnalyzers(index);
  kidxSetIncludeCount(index, 1);
  kidxSetIncludePattern(index, 0, "*.txt", "generic");
  return index;
}

static void buildIndex(const char *storage, const char *docs, const char *skipFile) {
  void *index = openIndex(1, storage);
  void *files;
  unsigned int top;
  kidxSetSkipFilePath(index, skipFile);
  kidxSetTimeBase(index, KURVO_MAC_EPOCH_OFFSET);
  kidxEmptyIndex(index);
  kidxNewFileLinks(index);
  kidxIndexExclusions(index);
  files = kidxGetFiles(index);
  top = kfsAddFile(files, docs);
  CHECK(top != 0, docs);
  kfiSetFileParentID(kfsGetInfo(files, top), 0);
  kidxIndexDirectory(index, docs, top);
  CHECK(kidxGetContentsIndexed(index) == 2, "both files read");
  kidxCompressLinks(index);
  kidxStoreStorage(index, storage);
  kidxStoreWordOrder(index, storage);
  kidxClearIndex(index);
  CHECK(errorCount == 0, "building");
}

static void queryAndView(void *index, const char *docs) {
  void *files = kidxGetFiles(index), *words = kidxGetWords(index), *viewer;
  unsigned int alpha = kfsLookupFile(files, "alpha.txt", kfsLookupFile(files, docs, 0)), hit, entries[4];
  CHECK(ktsLookup(words, "brown") != 0 && ktsLookup(words, "QUICK") != 0, "words found without regard to case");
  CHECK(ktsLookup(words, "the") == 0, "skip words stay out");
  CHECK(kidxWordsWithPrefix(index, "b", entries, 4) == 2 && entries[0] == ktsLookup(words, "bread") &&
            entries[1] == ktsLookup(words, "brown"),
        "words with a prefix, in order");
  viewer = kidxGetFileContents(index, alpha, 10000, 0, false, 5);
  CHECK(viewer != NULL, "viewer");
  hit = kfcSearchBuffer(viewer, 0, "brown");
  CHECK(hit != 0 && strncmp(kfcContents(viewer) + hit - 1, "brown", 5) == 0, "first hit");
  kfcConvertToOutline(viewer, "quick");
  CHECK(strcmp(kfcContents(viewer), "the quick brown fox\n") == 0, "outline");
  kfcDeleteContentsObject(viewer);
}

static void onDamage(const char *file, unsigned int offset, const char *what, void *context) {
  (void)file, (void)offset, (void)what;
  ++*(int *)context;
}

int main(int argc, char **argv) {
  char base[1024], storage[1100], docs[1100], path[2400];
  void *index;
  int damages = 0;

  kSetThrowCallBack(onMessage);
  kSetWarningCallBack(onMessage);
  kSetStatusCallBack(NULL); /* every status answered "go on" */
  CHECK(kGetVersion() == KURVO_VERSION_MAJOR * 10000 + KURVO_VERSION_MINOR * 100 + KURVO_VERSION_PATCH,
        "library and header versions");

  snprintf(base, sizeof base, "%s/kurvo-c-XXXXXX", argc > 1 ? argv[1] : "/tmp");
  mkdir(argc > 1 ? argv[1] : "/tmp", 0700);
  CHECK(mkdtemp(base) != NULL, base);
  snprintf(storage, sizeof storage, "%s/a/b/c/store/", base);
  snprintf(docs, sizeof docs, "%s/docs", base);
  snprintf(path, sizeof path, "mkdir -p '%s' '%s'", storage, docs);
  CHECK(system(path) == 0, path);
  snprintf(path, sizeof path, "%s/alpha.txt", docs);
  writeText(path, "the quick brown fox\njumps over the lazy dog\nbrown bread again\n");
  snprintf(path, sizeof path, "%s/beta.txt", docs);
  writeText(path, "lazy afternoon with brown sugar\n");
  snprintf(path, sizeof path, "%s/skipfile.txt", base);
  writeText(path, "the\nover\n");

  /* minizip's unzip functions are reachable through the library's handle. */
  if (argc > 2) {
    void *library = dlopen(argv[2], RTLD_NOW);
    CHECK(library != NULL && dlsym(library, "unzOpen") != NULL, "unzOpen through the library");
    dlclose(library);
  }

  CHECK(kCreateNewIndex(0, docs) == NULL && strncmp(lastError, "StorageReadError", 16) == 0, "no index there");
  errorCount = 0;

  buildIndex(storage, docs, path);
  CHECK(kCheckStorage(storage, onDamage, &damages) == 0 && damages == 0, "a sound store");
  index = openIndex(0, storage);
  queryAndView(index, docs);
  kidxClearIndex(index);
  CHECK(errorCount == 0, "querying");

  printf("c_api_test: all checks passed\n");
  snprintf(path, sizeof path, "rm -rf '%s'", base);
  return system(path);
}
