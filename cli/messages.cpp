// English sentences for the library's message keys.
// Tables laid out by hand:
// clang-format off
#include "messages.h"

#include <map>

namespace kurvo_cli {

namespace {

// "%s" marks where the argument goes; a sentence without it ignores the
// argument, and an empty argument drops the part after "|".
struct Sentence {
  const char *withArgument;
  const char *withoutArgument;
};

const std::map<std::string, Sentence> &sentences() {
  static const std::map<std::string, Sentence> table = {
      {"AnalyzerNotFound", {"there is no analyzer named \"%s\" in this build", "there is no such analyzer in this build"}},
      {"StorageReadError", {"the index storage at %s cannot be read or written (missing or damaged index?)",
                            "the index storage cannot be read or written"}},
      {"ExternalAnalyzerRejected",
       {"the converter \"%s\" in externanalyzers.txt is left out: its command must hold %i and %o once each",
        "a converter in externanalyzers.txt is left out: its command must hold %i and %o once each"}},
      {"ArchiveTooDeep", {"archives in %s are nested too deep; the innermost are listed without their words",
                          "archives are nested too deep; the innermost are listed without their words"}},
      {"ArchiveTooLarge", {"%s unpacks to more than kurvo unpacks from one archive (1 GiB a member, 4 GiB in all); the rest is left out",
                           "an archive unpacks to more than kurvo unpacks from one archive; the rest is left out"}},
      {"PdfTooLarge", {"%s inflates to more than kurvo reads from one PDF (64 MiB a stream, 4 GiB in all); the rest is left out",
                       "a PDF inflates to more than kurvo reads from one PDF; the rest is left out"}},
      {"StorageByteOrder", {"the index at %s was written on a machine of the other byte order; rebuild it here with `kurvo index`",
                            "the index was written on a machine of the other byte order; rebuild it here with `kurvo index`"}},
      {"FileSkipped", {"left out or read in part (reason and path): %s", "a file or folder was left out or read in part"}},
      {"HaltRequested", {"stopped on request", "stopped on request"}},
      {"PruneParentError", {"the index is damaged: a record's folder is missing; rebuild it with `kurvo index`",
                            "the index is damaged: a record's folder is missing; rebuild it with `kurvo index`"}},
      {"SkipOpenFail", {"the skip-word file %s cannot be opened", "the skip-word file cannot be opened"}},
      {"externalAnalyzersFileTooBig", {"the external analyzer list %s is too large (it must stay below 64 KiB)",
                                       "the external analyzer list is too large (it must stay below 64 KiB)"}},
      {"AssertionFailed", {"the index is damaged (a consistency check failed): %s",
                           "the index is damaged (a consistency check failed); rebuild it with `kurvo index`"}},
      {"EndOfContents", {"there are no more lines to show", "there are no more lines to show"}},
      {"NoFileContentsForDir", {"%s is a folder, not a file", "that record is a folder, not a file"}},
      {"ArchivesNestedTooDeep", {"archive members are nested too deeply to be opened",
                                 "archive members are nested too deeply to be opened"}},
      {"ArchiveExtractError", {"an archive member could not be extracted (%s)",
                               "an archive member could not be extracted"}},
      {"CannotOpenContentsFile", {"the file %s cannot be opened", "the file cannot be opened"}},
      {"NoMemory", {"out of memory while reading the file for display", "out of memory while reading the file for display"}},
      {"UnmapFail", {"the storage file %s could not be released", "a storage file could not be released"}},
      {"FileMapWriteFail", {"the storage file %s cannot be opened or mapped", "a storage file cannot be opened or mapped"}},
      {"MemFileOpenFail", {"the storage file %s cannot be opened to grow it", "a storage file cannot be opened to grow it"}},
      {"MemFileExtendFail", {"a storage file cannot be extended to %s bytes (is the disk full?)",
                             "a storage file cannot be extended (is the disk full?)"}},
      {"FileMapOpenRWFail", {"the storage file %s cannot be mapped for writing", "a storage file cannot be mapped for writing"}},
      {"GetHugeSpace", {"a storage file would grow past its limit (%s bytes asked for)",
                        "a storage file would grow past its limit"}},
      {"Skipped Kurvo Directory", {"skipped the kurvo folder", "skipped the kurvo folder"}},
      {"IndexingFile", {"indexing %s", "indexing"}},
      {"IndexingExcluded", {"reading the skip words", "reading the skip words"}},
      {"BytesIndexing", {"%s bytes read", "reading"}},
      {"DecodingGeneric", {"decoding %s", "decoding"}},
      {"DecodingPdf", {"decoding the PDF %s", "decoding a PDF"}},
      {"CountingCompress", {"compressing links: %s%", "compressing links"}},
      {"CompLinksFmt", {"writing file lists: %s", "writing file lists"}},
      {"Done", {"file lists written", "file lists written"}},
      {"UpdatingStatus", {"checking records: %s", "checking records"}},
  };
  return table;
}

}  // namespace

std::string describeMessage(const std::string &key, const std::string &argument) {
  auto it = sentences().find(key);
  if (it == sentences().end()) {
    std::string text = "the library reported \"" + key + "\"";
    if (!argument.empty()) text += " (" + argument + ")";
    return text;
  }
  std::string pattern = argument.empty() ? it->second.withoutArgument : it->second.withArgument;
  size_t at = pattern.find("%s");
  if (at != std::string::npos) pattern.replace(at, 2, argument);
  return pattern;
}

}  // namespace kurvo_cli
