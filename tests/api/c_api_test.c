/* c_api_test.c: a C host builds an index, reopens it and queries it through kurvo.h only. */
#include "kurvo.h"

#include <dlfcn.h>
#include <errno.h>
#include <ftw.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <time.h>

#define MAC_EPOCH_OFFSET 2082844800.0

#define CHECK(cond, ...)                                                   \
  do {                                                                     \
    if (!(cond)) {                                                         \
      fprintf(stderr, "c_api_test:%d: check failed: %s: ", __LINE__, #cond); \
      fprintf(stderr, __VA_ARGS__);                                        \
      fprintf(stderr, " (last error: %s)\n", lastError);                   \
      exit(1);                                                             \
    }                                                                      \
  } while (0)

static char lastError[512] = "";
static int errorCount = 0;

static void onError(const char *key, const char *argument) {
  snprintf(lastError, sizeof lastError, "%s %s", key, argument);
  ++errorCount;
}

static void onWarning(const char *key, const char *argument) {
  snprintf(lastError, sizeof lastError, "warning %s %s", key, argument);
  ++errorCount;
}

static int onStatus(const char *key, const char *argument, int fromLibrary) {
  (void)key;
  (void)argument;
  (void)fromLibrary;
  return 1;
}

/* snprintf into a path buffer, refusing to cut the path short. */
#define FORMAT_PATH(buffer, ...)                                               \
  CHECK(snprintf(buffer, sizeof buffer, __VA_ARGS__) < (int)sizeof buffer, \
        "path too long")

static int removeEntry(const char *path, const struct stat *st, int kind, struct FTW *walk) {
  (void)st;
  (void)kind;
  (void)walk;
  return remove(path);
}

static void makeFolder(const char *path) {
  CHECK(mkdir(path, 0700) == 0 || errno == EEXIST, "mkdir %s", path);
}

static void writeText(const char *path, const char *text) {
  FILE *f = fopen(path, "wb");
  CHECK(f != NULL, "cannot write %s", path);
  fputs(text, f);
  fclose(f);
}

static const char *const alphaText =
    "the quick brown fox\n"
    "jumps over the lazy dog\n"
    "brown bread again\n";
static const char *const betaText = "lazy afternoon with brown sugar\n";
static const char *const secretText = "zebra crossing\n";

/* The same character classes on every open index: ASCII letters make words,
 * printable ASCII is shown. */
static void setMasks(void *index) {
  int c;
  for (c = 0; c < 256; ++c) {
    int letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
    kidxSetValidCharMask(index, c, letter);
    kidxSetValidTrailingMask(index, c, letter);
    kidxSetValidViewableMask(index, c, c >= 32 && c < 127);
    kidxSetNonAlphaCharMask(index, c, false);
  }
}

static void setPatterns(void *index) {
  kidxCreateAnalyzers(index);
  kidxSetIncludeCount(index, 1);
  kidxSetIncludePattern(index, 0, "*.txt", "generic");
  kidxSetExcludeCount(index, 1);
  kidxSetExcludePattern(index, 0, "*secret*");
}

static void buildIndex(const char *storage, const char *docs, const char *base) {
  char path[1024], tempFolder[1024];
  void *index = kCreateNewIndex(1, storage);
  CHECK(index != NULL, "kCreateNewIndex(1, %s)", storage);

  kidxSetMinWordLength(index, 3);
  kidxSetMaxWordLength(index, 16);
  kidxSetMaxPerFileRead(index, 1000000);
  kidxSetUseRanking(index, 1);
  kidxSetTrackAll(index, 1);
  kidxSetShowStatus(index, 0);
  kidxSetTimeBase(index, MAC_EPOCH_OFFSET);
  FORMAT_PATH(tempFolder, "%stmp", base);
  makeFolder(tempFolder);
  kidxSetTemporaryDirectory(index, tempFolder);
  FORMAT_PATH(path, "%sskipfile.txt", base);
  writeText(path, "the\nover\n");
  kidxSetSkipFilePath(index, path);
  setMasks(index);
  setPatterns(index);

  kidxEmptyIndex(index);
  kidxNewFileLinks(index);
  kidxIndexExclusions(index);
  CHECK(errorCount == 0, "setting up the index");

  {
    void *files = kidxGetFiles(index);
    unsigned int top = kfsAddFile(files, docs);
    void *record;
    struct stat st;
    CHECK(top != 0, "kfsAddFile %s", docs);
    CHECK(stat(docs, &st) == 0, "stat %s", docs);
    record = kfsGetInfo(files, top);
    kfiSetFileParentID(record, 0);
    kfiSetFileTimeLastWritten(record, (double)st.st_mtime + MAC_EPOCH_OFFSET);
    kfiSetFileAttributes(record, 0);
    kidxIndexDirectory(index, docs, top);
  }
  CHECK(errorCount == 0, "indexing %s", docs);
  CHECK(kidxGetContentsIndexed(index) >= 2, "files read: %u", kidxGetContentsIndexed(index));

  kidxCompressLinks(index);
  kidxStoreStorage(index, storage);
  CHECK(errorCount == 0, "compressing and storing");
  kidxClearIndex(index);
}

/* Collects the files of a word: its current file, then its list blocks. */
static int filesOfWord(void *index, const char *word, unsigned int *fileNumbers,
                       unsigned int *ranks, int room) {
  void *words = kidxGetWords(index);
  void *links = kidxGetLinks(index);
  unsigned int entry = ktsLookup(words, word);
  unsigned char data[16];
  unsigned int current, position;
  unsigned short counter;
  int count = 0;
  if (entry == 0) return 0;
  memcpy(data, ktsGetData(words, entry), sizeof data);
  memcpy(&current, data, 4);
  memcpy(&counter, data + 4, 2);
  memcpy(&position, data + 8, 4);
  if (current != 0 && count < room) {
    fileNumbers[count] = current;
    ranks[count++] = counter;
  }
  while (position != 0) {
    unsigned int cursor[2];
    unsigned int file;
    cursor[0] = position;
    cursor[1] = 0;
    while ((file = kflGetFile(links, cursor)) != 0 && count < room) {
      fileNumbers[count] = file;
      ranks[count++] = cursor[1];
    }
    position = kflGetNextList(links, cursor[0]);
  }
  return count;
}

static void checkRecord(void *files, unsigned int number, unsigned int folder, const char *docs,
                        const char *text) {
  void *record = kfsGetInfo(files, number);
  const char *name = kfiGetFileName(record);
  char path[1024];
  struct stat st;
  FORMAT_PATH(path, "%s/%s", docs, name);
  CHECK(stat(path, &st) == 0, "record %u names %s", number, path);
  CHECK(kfiGetFileParentID(record) == folder, "parent of %s", name);
  CHECK(kfiGetFileSize(record) == strlen(text), "size of %s: %u", name, kfiGetFileSize(record));
  CHECK(kfiGetFileTimeLastWritten(record) - MAC_EPOCH_OFFSET == (double)st.st_mtime,
        "time of %s", name);
}

static void checkLookups(void *index, const char *docs) {
  void *files = kidxGetFiles(index);
  unsigned int folder = kfsLookupFile(files, docs, 0);
  unsigned int alpha = kfsLookupFile(files, "alpha.txt", folder);
  unsigned int beta = kfsLookupFile(files, "beta.txt", folder);
  unsigned int fileNumbers[8], ranks[8];
  int n, i, sawAlpha = 0, sawBeta = 0;

  CHECK(folder != 0, "folder record of %s", docs);
  CHECK(alpha != 0 && beta != 0, "records of alpha.txt and beta.txt");
  CHECK(kfsLookupFile(files, "secret.txt", folder) != 0, "excluded file still recorded");
  checkRecord(files, alpha, folder, docs, alphaText);
  checkRecord(files, beta, folder, docs, betaText);

  n = filesOfWord(index, "brown", fileNumbers, ranks, 8);
  CHECK(n == 2, "brown is in %d files", n);
  for (i = 0; i < n; ++i) {
    const char *name = kfiGetFileName(kfsGetInfo(files, fileNumbers[i]));
    if (fileNumbers[i] == alpha) {
      sawAlpha = 1;
      CHECK(ranks[i] == 1, "brown twice in alpha.txt: rank %u", ranks[i]);
    } else if (fileNumbers[i] == beta) {
      sawBeta = 1;
      CHECK(ranks[i] == 0, "brown once in beta.txt: rank %u", ranks[i]);
    } else {
      CHECK(0, "brown listed in %s", name);
    }
  }
  CHECK(sawAlpha && sawBeta, "brown in both files");

  n = filesOfWord(index, "lazy", fileNumbers, ranks, 8);
  CHECK(n == 2, "lazy is in %d files", n);
  n = filesOfWord(index, "quick", fileNumbers, ranks, 8);
  CHECK(n == 1 && fileNumbers[0] == alpha, "quick only in alpha.txt");
  CHECK(ktsLookup(kidxGetWords(index), "QUICK") != 0, "lookup ignores case");
  CHECK(ktsLookup(kidxGetWords(index), "the") == 0, "skip word indexed");
  CHECK(ktsLookup(kidxGetSkipWords(index), "the") != 0, "skip word missing");
  CHECK(ktsLookup(kidxGetWords(index), "zebra") == 0, "word of an excluded file indexed");
  CHECK(kidxDoesWordMatch(index, "brown", "br*") != 0, "br* matches brown");
}

static void checkViewer(void *index, const char *docs) {
  void *files = kidxGetFiles(index);
  unsigned int folder = kfsLookupFile(files, docs, 0);
  unsigned int alpha = kfsLookupFile(files, "alpha.txt", folder);
  char expectedPath[1024], expectedOutline[4096] = "", readBack[4096] = "";
  const char *text, *line;
  char *copy;
  unsigned int hit;
  int lines = 0, i;
  void *viewer;

  CHECK(kidxGetFileContents(index, folder, 10000, 0, false, 5) == NULL, "viewer on a folder");
  CHECK(strncmp(lastError, "NoFileContentsForDir", 20) == 0, "folder refused");
  errorCount = 0;

  viewer = kidxGetFileContents(index, alpha, 10000, 0, false, 5);
  CHECK(viewer != NULL, "viewer on alpha.txt");
  FORMAT_PATH(expectedPath, "%s/alpha.txt", docs);
  CHECK(strcmp(kfcFilePath(viewer), expectedPath) == 0, "path %s", kfcFilePath(viewer));

  text = kfcContents(viewer);
  CHECK(text != NULL && strstr(text, "quick") != NULL, "display text: [%s]", text);
  CHECK(kfcContainsHit(viewer, "brown"), "brown is a hit");
  CHECK(!kfcContainsHit(viewer, "zebra"), "zebra is no hit");
  hit = kfcSearchBuffer(viewer, 0, "brown");
  CHECK(hit == (unsigned int)(strstr(text, "brown") - text) + 1, "first brown at %u", hit);
  CHECK(kfcTokenLength(viewer, hit - 1) == 5, "length of brown");
  hit = kfcSearchBuffer(viewer, hit, "brown");
  CHECK(hit != 0 && strncmp(text + hit - 1, "brown", 5) == 0, "second brown at %u", hit);
  CHECK(kfcSearchBuffer(viewer, hit, "brown") == 0, "no third brown");

  /* The outline keeps exactly the lines that hold "brown", in order. */
  copy = malloc(strlen(text) + 1);
  CHECK(copy != NULL, "memory");
  for (line = text; *line;) {
    const char *end = strchr(line, '\n');
    size_t length = end ? (size_t)(end - line) + 1 : strlen(line);
    memcpy(copy, line, length);
    copy[length] = '\0';
    if (strstr(copy, "brown")) strcat(expectedOutline, copy);
    line += length;
  }
  free(copy);
  kfcConvertToOutline(viewer, "brown");
  text = kfcContents(viewer);
  CHECK(strcmp(text, expectedOutline) == 0, "outline [%s], expected [%s]", text, expectedOutline);
  for (i = 0; text[i]; ++i)
    if (text[i] == '\n') ++lines;
  if (i > 0 && text[i - 1] != '\n') ++lines;
  for (i = 0; i < lines; ++i) strcat(readBack, kfcNext(viewer));
  CHECK(strcmp(readBack, text) == 0, "lines read back [%s]", readBack);

  kfcDeleteContentsObject(viewer);
  kfcDeleteContentsObject(NULL);
  CHECK(errorCount == 0, "viewing alpha.txt");
}

static void checkProcessWide(void) {
  unsigned char plain[] = "secret", cipher[16], back[8];
  char hex[40];
  kEncipher(plain, 6, cipher);
  kDecipher(cipher, 16, back);
  CHECK(memcmp(back, plain, 6) == 0, "cipher round trip");
  convertToHex(2, (const unsigned char *)"\x00\xab", hex);
  CHECK(strcmp(hex, "00AB") == 0, "hex %s", hex);
  CHECK(kFileNameMatch("main.c", "*.c&^tmp*") == 1, "name match");
  CHECK(kFileNameMatch("tmp.c", "*.c&^tmp*") == 0, "name match with negation");
  CHECK(kSetStatus("Mine", "x") == 1, "status answer");
}

int main(int argc, char **argv) {
  const char *root = argc > 1 ? argv[1] : "/tmp";
  char base[1024], storage[1024], docs[1024], path[1024], missing[1024];
  void *index;

  kSetThrowCallBack(onError);
  kSetWarningCallBack(onWarning);
  kSetStatusCallBack(onStatus);

  makeFolder(root);
  FORMAT_PATH(base, "%s/kurvo-c-%ld-XXXXXX", root, (long)time(NULL));
  CHECK(mkdtemp(base) != NULL, "mkdtemp %s", base);
  strcat(base, "/");
  FORMAT_PATH(path, "%sa", base);
  makeFolder(path);
  FORMAT_PATH(path, "%sa/b", base);
  makeFolder(path);
  FORMAT_PATH(path, "%sa/b/c", base);
  makeFolder(path);
  FORMAT_PATH(storage, "%sa/b/c/store/", base);
  makeFolder(storage);
  FORMAT_PATH(docs, "%sdocs", base);
  makeFolder(docs);
  FORMAT_PATH(path, "%s/alpha.txt", docs);
  writeText(path, alphaText);
  FORMAT_PATH(path, "%s/beta.txt", docs);
  writeText(path, betaText);
  FORMAT_PATH(path, "%s/secret.txt", docs);
  writeText(path, secretText);

  checkProcessWide();

  /* minizip's unzip functions are reachable through the library's handle. */
  if (argc > 2) {
    void *library = dlopen(argv[2], RTLD_NOW);
    CHECK(library != NULL, "dlopen %s", argv[2]);
    CHECK(dlsym(library, "unzOpen") != NULL && dlsym(library, "unzReadCurrentFile") != NULL,
          "unzOpen through the library's handle");
    dlclose(library);
  }

  FORMAT_PATH(missing, "%sa/b/c/nothing/", base);
  CHECK(kCreateNewIndex(0, missing) == NULL, "opening a folder without an index");
  CHECK(strncmp(lastError, "StorageReadError", 16) == 0, "StorageReadError reported");
  errorCount = 0;
  lastError[0] = '\0';

  buildIndex(storage, docs, base);

  index = kCreateNewIndex(0, storage);
  CHECK(index != NULL, "reopening %s", storage);
  setMasks(index);
  setPatterns(index);
  CHECK(errorCount == 0, "reopening");
  checkLookups(index, docs);
  checkViewer(index, docs);
  kidxClearIndex(index);
  CHECK(errorCount == 0, "closing");

  printf("c_api_test: all checks passed in %s\n", base);
  nftw(base, removeEntry, 16, FTW_DEPTH | FTW_PHYS);
  return 0;
}
