// Every message key the library reports; hosts translate them into words.
// Tables laid out by hand:
// clang-format off
#pragma once

namespace kurvo_keys {

// Errors and warnings (the kind is given after each key).
inline constexpr const char kAnalyzerNotFound[] = "AnalyzerNotFound";            // warning
inline constexpr const char kStorageReadError[] = "StorageReadError";
// Beyond the classic keys: an index stored on a machine of the other byte order.
inline constexpr const char kStorageByteOrder[] = "StorageByteOrder";
inline constexpr const char kHaltRequested[] = "HaltRequested";
inline constexpr const char kPruneParentError[] = "PruneParentError";
inline constexpr const char kSkipOpenFail[] = "SkipOpenFail";
inline constexpr const char kExternalAnalyzersFileTooBig[] = "externalAnalyzersFileTooBig";
inline constexpr const char kAssertionFailed[] = "AssertionFailed";
inline constexpr const char kEndOfContents[] = "EndOfContents";
inline constexpr const char kNoFileContentsForDir[] = "NoFileContentsForDir";
inline constexpr const char kArchivesNestedTooDeep[] = "ArchivesNestedTooDeep";
inline constexpr const char kArchiveExtractError[] = "ArchiveExtractError";
inline constexpr const char kCannotOpenContentsFile[] = "CannotOpenContentsFile";
inline constexpr const char kNoMemory[] = "NoMemory";
inline constexpr const char kUnmapFail[] = "UnmapFail";
inline constexpr const char kFileMapWriteFail[] = "FileMapWriteFail";
inline constexpr const char kMemFileOpenFail[] = "MemFileOpenFail";
inline constexpr const char kMemFileExtendFail[] = "MemFileExtendFail";
inline constexpr const char kFileMapOpenRWFail[] = "FileMapOpenRWFail";
inline constexpr const char kGetHugeSpace[] = "GetHugeSpace";

// Status messages.
inline constexpr const char kSkippedKurvoDirectory[] = "Skipped Kurvo Directory";
inline constexpr const char kIndexingFile[] = "IndexingFile";
inline constexpr const char kIndexingExcluded[] = "IndexingExcluded";
inline constexpr const char kBytesIndexing[] = "BytesIndexing";
inline constexpr const char kDecodingGeneric[] = "DecodingGeneric";
inline constexpr const char kDecodingPdf[] = "DecodingPdf";
inline constexpr const char kCountingCompress[] = "CountingCompress";
inline constexpr const char kCompLinksFmt[] = "CompLinksFmt";
inline constexpr const char kDone[] = "Done";
inline constexpr const char kUpdatingStatus[] = "UpdatingStatus";
// Beyond the classic keys: an entry of "externanalyzers.txt" left out because
// its command lacks %i or %o (argument: the entry's name).
inline constexpr const char kExternalAnalyzerRejected[] = "ExternalAnalyzerRejected";
// Beyond the classic keys: an archive nested too deep to be opened while
// indexing, or one that unpacks to more than the bounds allow; the argument
// is the archive's path. Said once per outermost archive; the run goes on.
inline constexpr const char kArchiveTooDeep[] = "ArchiveTooDeep";
inline constexpr const char kArchiveTooLarge[] = "ArchiveTooLarge";
// Beyond the classic keys: a PDF whose streams inflate to more than its
// bounds; the argument is its path. Said once per file; the run goes on.
inline constexpr const char kPdfTooLarge[] = "PdfTooLarge";
// Beyond the classic keys, sent only when asked for (kidxSetReportSkipped): a
// file or folder left out or read in part; the argument is the reason
// ("folder", "file", "path" or "cut"), a TAB and the path.
inline constexpr const char kFileSkipped[] = "FileSkipped";

// Every key above, for hosts' tables and their tests.
inline constexpr const char *kAllKeys[] = {
    kAnalyzerNotFound, kStorageReadError, kStorageByteOrder, kHaltRequested, kPruneParentError, kSkipOpenFail,
    kExternalAnalyzersFileTooBig, kAssertionFailed, kEndOfContents, kNoFileContentsForDir, kArchivesNestedTooDeep,
    kArchiveExtractError, kCannotOpenContentsFile, kNoMemory, kUnmapFail, kFileMapWriteFail, kMemFileOpenFail,
    kMemFileExtendFail, kFileMapOpenRWFail, kGetHugeSpace, kSkippedKurvoDirectory, kIndexingFile,
    kIndexingExcluded, kBytesIndexing, kDecodingGeneric, kDecodingPdf, kCountingCompress, kCompLinksFmt, kDone,
    kUpdatingStatus, kExternalAnalyzerRejected, kArchiveTooDeep, kArchiveTooLarge, kPdfTooLarge, kFileSkipped};

}  // namespace kurvo_keys
