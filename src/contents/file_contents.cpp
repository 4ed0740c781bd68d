// CFileContents: one indexed file read again, through its archives, as display text.
#include "contents/file_contents.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "analyzers/file_analyzer.h"
#include "report/message_keys.h"
#include "report/reporting.h"
#include "index/kurvo_index.h"
#include "storage/file_storage.h"

namespace {

// Deeper chains are refused; they can only come from a damaged file table.
constexpr size_t kMaxChainLength = 100;

// The data area of record fileNumber; "AssertionFailed" when the number does
// not name a record of the table.
char *recordOf(CFileStorage *files, uint32_t fileNumber) {
  char *record = files ? files->getData(fileNumber) : nullptr;
  if (!record) throwKurvoError(kurvo_keys::kAssertionFailed, "");
  return record;
}

// The record numbers from fileNumber up to its folder (parent 0), inclusive.
std::vector<uint32_t> parentChain(CFileStorage *files, uint32_t fileNumber) {
  std::vector<uint32_t> chain{fileNumber};
  uint32_t parent = file_record::parent(recordOf(files, fileNumber));
  while (parent != 0) {
    chain.push_back(parent);
    if (chain.size() > kMaxChainLength) throwKurvoError(kurvo_keys::kArchivesNestedTooDeep, "");
    parent = file_record::parent(recordOf(files, parent));
  }
  return chain;
}

std::string recordName(CFileStorage *files, uint32_t fileNumber) {
  return file_record::name(recordOf(files, fileNumber));
}

}  // namespace

CFileContents::CFileContents(CKurvoIndex *index, uint32_t fileNumber, uint32_t maxLength, int wrapWidth,
                             bool displayFlag, int defaultDistance)
    : index(index), maxLength(maxLength), wrapWidth(wrapWidth), defaultDistance(defaultDistance) {
  std::memcpy(firstCharClass, index->validCharMask, sizeof firstCharClass);
  std::memcpy(trailingCharClass, index->validTrailingMask, sizeof trailingCharClass);

  CFileStorage *files = index->files;
  if (file_record::parent(recordOf(files, fileNumber)) == 0) throwKurvoError(kurvo_keys::kNoFileContentsForDir, "");

  // chain: the file, the archives holding it, the outermost file, its folder.
  std::vector<uint32_t> chain = parentChain(files, fileNumber);
  size_t outer = chain.size() - 2;
  path = recordName(files, chain.back()) + "/" + recordName(files, chain[outer]);

  // Each member is extracted from the file extracted one level up, whose
  // temporary copy goes as soon as the next one exists.
  for (size_t level = outer; level-- > 0;) {
    std::string member = recordName(files, chain[level]);
    std::string temp = index->extractToTempFile(path.c_str(), member.c_str(), chain[level]);
    if (extracted) std::remove(path.c_str());
    if (temp.empty()) throwKurvoError(kurvo_keys::kArchiveExtractError, "");
    path = temp;
    extracted = true;
  }

  std::string name = recordName(files, fileNumber);
  CFileAnalyzer *analyzer = index->analyzerThatMatches(name.c_str());
  if (!analyzer) analyzer = index->analyzerNamed("generic");
  if (!analyzer) {
    if (extracted) std::remove(path.c_str());
    throwKurvoError(kurvo_keys::kAssertionFailed, "");
  }

  try {
    contentsText = analyzer->fillDisplayBuffer(path.c_str(), fileNumber, maxLength, wrapWidth, displayFlag);
  } catch (...) {
    if (extracted) std::remove(path.c_str());
    throw;
  }
  if (extracted) std::remove(path.c_str());
  contentsLength = contentsText ? std::strlen(contentsText) : 0;
  readPosition = contentsText;
}

CFileContents::~CFileContents() { std::free(contentsText); }

const char *CFileContents::contents() const { return contentsText ? contentsText : ""; }

const char *CFileContents::nextLine() {
  if (!readPosition || *readPosition == '\0') throwKurvoError(kurvo_keys::kEndOfContents, "");
  const char *end = std::strchr(readPosition, '\n');
  size_t length = end ? static_cast<size_t>(end - readPosition) + 1 : std::strlen(readPosition);
  line.assign(readPosition, length);
  readPosition += length;
  return line.c_str();
}
