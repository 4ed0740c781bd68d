/* kurvo.h: the public C interface of the kurvo full-text indexing library.
 *
 * Conventions that hold for every function below:
 *
 * - Handles are untyped pointers owned by the library. An index comes from
 *   kCreateNewIndex and is released with kidxClearIndex; table handles come
 *   from the index (kidxGetWords, kidxGetFiles, kidxGetSkipWords,
 *   kidxGetLinks) and become invalid when the index empties, replaces or frees
 *   its tables (kidxEmptyIndex, kidxNewFileLinks, kidxClearIndex): ask again
 *   after such calls. A record handle from kfsGetInfo stays valid until the
 *   file table grows. Handles are never checked: null or stale handles are
 *   host errors.
 * - Errors are delivered to the error callback as a message key (a fixed
 *   identifier such as "StorageReadError") and one argument text; warnings
 *   likewise to the warning callback. Functions marked CAUGHT then return
 *   their neutral result (nothing, NULL or 0). Functions marked THROWS let the
 *   error leave as a C++ exception of type int (value 1) after the callback
 *   has run: a C++ host must catch it, a C host must only call them where no
 *   error can arise (valid handles, valid offsets).
 * - Texts passed to callbacks are owned by the library and valid only during
 *   the call. Texts returned by the table functions point into the library's
 *   memory and stay valid until the table grows or is freed.
 * - Times cross this interface as double seconds since 1904-01-01 00:00 UTC;
 *   subtract KURVO_MAC_EPOCH_OFFSET (2082844800.0) to get Unix time.
 * - Everything runs on the caller's thread; the library locks nothing, so
 *   one index must be driven by one thread at a time.
 * - minizip's unzip functions (unzOpen, unzReadCurrentFile, ...) are reachable
 *   unchanged through the library's handle (dlsym on the dlopen handle of
 *   libkurvo), since the library links minizip; they are not declared here.
 * - Status keys beyond the classic set, sent whatever the ShowStatus level and
 *   whose answer is ignored: "ExternalAnalyzerRejected" (kidxCreateAnalyzers),
 *   "ArchiveTooDeep" and "ArchiveTooLarge" (argument: the archive's path)
 *   when indexing meets archives nested more than 8 deep or unpacking to more
 *   than 1 GiB a member or 4 GiB in all; the rest of such an archive is left
 *   out and the run goes on. "PdfTooLarge" (argument: the PDF's path) when a
 *   PDF's compressed streams inflate to more than 64 MiB one stream or 4 GiB
 *   in all; the text up to there is kept. Each is sent once per file.
 */
#ifndef KURVO_H
#define KURVO_H

#ifndef __cplusplus
#include <stdbool.h>
#endif

#if defined(__GNUC__)
#define KURVO_API __attribute__((visibility("default")))
#else
#define KURVO_API
#endif

/* Seconds from 1904-01-01 00:00 UTC, the epoch of every time on this
 * interface, to the Unix epoch. */
#define KURVO_MAC_EPOCH_OFFSET 2082844800.0

/* The version of this header; kGetVersion gives the library's. */
#define KURVO_VERSION_MAJOR 0
#define KURVO_VERSION_MINOR 2
#define KURVO_VERSION_PATCH 0

#ifdef __cplusplus
extern "C" {
#endif

/* ------------------------------------------------------------ message keys
 *
 * Every key the library sends, with its kind (E: error callback, W: warning
 * callback, S: status callback) and its argument. Hosts translate the keys;
 * the texts are not meant for users as they stand.
 *
 * E "StorageReadError"     a table or "hash" cannot be read or written;
 *                          argument: the storage folder or table file.
 * E "StorageByteOrder"     (beyond the classic keys) the index was stored on
 *                          a machine of the other byte order; the folder.
 * E "HaltRequested"        the status callback answered 0 during a walk or
 *                          prune; "".
 * E "PruneParentError"     pruning met a record whose folder is missing; "".
 * E "SkipOpenFail"         "skipfile.txt" cannot be read; its path.
 * E "externalAnalyzersFileTooBig"  "externanalyzers.txt" holds 65,535 bytes
 *                          or more; its path.
 * E "AssertionFailed"      a table, list or viewer is not as it must be (a
 *                          damaged index, or a call out of order); "".
 * E "EndOfContents"        the viewer was asked for a line past the last; "".
 * E "NoFileContentsForDir" the viewer was opened on a folder record; "".
 * E "ArchivesNestedTooDeep" the viewer met members nested too deep; "".
 * E "ArchiveExtractError"  the viewer could not extract a member; "".
 * E "CannotOpenContentsFile" a file to display cannot be opened; its path.
 * E "NoMemory"             a display buffer cannot be allocated; "".
 * E "UnmapFail"            a storage file cannot be unmapped; its path.
 * E "FileMapWriteFail"     a storage file cannot be mapped or renamed; its path.
 * E "MemFileOpenFail"      a storage file cannot be opened to grow; its path.
 * E "MemFileExtendFail"    a storage file cannot grow (a full disk); the size.
 * E "FileMapOpenRWFail"    a grown storage file cannot be mapped; its path.
 * E "GetHugeSpace"         one request exceeds a table's growth step (see
 *                          kidxSetGrowByRequest); the size.
 * W "AnalyzerNotFound"     an include pattern names no registered analyzer;
 *                          the name.
 * S "Skipped Kurvo Directory" the walk met the storage folder itself; "".
 * S "IndexingFile"         walk progress, at most once a second; the path, a
 *                          TAB and the folders read so far.
 * S "IndexingExcluded"     reading the skip-word file begins; "".
 * S "BytesIndexing"        bytes read of one file (ShowStatus > 1); a number.
 * S "DecodingGeneric"      display decoding, at most once a second; the
 *                          path. Answering 0 stops decoding.
 * S "DecodingPdf"          the same for a PDF.
 * S "CountingCompress"     link compression's first pass; a percentage.
 * S "CompLinksFmt"         link compression's second pass; "FROM<TAB>TO".
 * S "Done"                 link compression finished; "".
 * S "UpdatingStatus"       prune progress, at most once a second;
 *                          "visited/total".
 * Beyond the classic keys, sent whatever ShowStatus (answers are ignored):
 * S "ExternalAnalyzerRejected" a converter entry was left out; its name.
 * S "ArchiveTooDeep", "ArchiveTooLarge", "PdfTooLarge"  see the conventions
 *                          above; the file's path.
 * S "FileSkipped"          see kidxSetReportSkipped; reason, TAB, path.
 */

/* ---------------------------------------------------------------- callbacks */

/* Receives an error or a warning: a message key and its argument. Must return
 * normally. */
typedef void (*KurvoMessageCallback)(const char *key, const char *argument);

/* Receives a status (progress) message. fromLibrary is 1 for the library's own
 * reports and 0 for texts the host passed through kSetStatus. Returning 0 asks
 * a running directory walk or prune to halt ("HaltRequested") and stops
 * decoding for display; any other value lets the work go on. */
typedef int (*KurvoStatusCallback)(const char *key, const char *argument, int fromLibrary);

/* Install the error, warning and status callbacks, process-wide. NULL turns a
 * channel off; errors and warnings still end the operation that raised them. */
KURVO_API void kSetThrowCallBack(KurvoMessageCallback cb);
KURVO_API void kSetWarningCallBack(KurvoMessageCallback cb);
KURVO_API void kSetStatusCallBack(KurvoStatusCallback cb);

/* Pass the host's own status text through the status callback (fromLibrary 0).
 * Returns the callback's answer, or 1 when none is installed. */
KURVO_API int kSetStatus(const char *key, const char *argument);

/* Write text (no terminator, no newline added) to descriptor 1 with a single
 * write(2). Returns write's result: the bytes written, 0 for "", -1 on error. */
KURVO_API int kRawStdoutWrite(const char *text);

/* ------------------------------------------------------------- process-wide */

/* Create an index on storagePath (a folder path ending in "/"; give it at least
 * four '/' so that the folder three levels up, which holds "skipfile.txt" and
 * "externanalyzers.txt", is defined). create != 0 builds new empty tables;
 * create == 0 reopens the index stored there by kidxStoreStorage.
 * CAUGHT: NULL on error ("StorageReadError" when there is no "hash";
 * "StorageByteOrder", a key beyond the classic set, when the index was stored
 * on a machine of the other byte order: storage files hold host-order words). */
KURVO_API void *kCreateNewIndex(int create, const char *storagePath);

/* The library's version as MAJOR * 10000 + MINOR * 100 + PATCH; a host built
 * against this header can compare it with the macros above. */
KURVO_API int kGetVersion(void);

/* 1 when name matches pattern: case-insensitive terms with '*' and '?',
 * joined by '|' (or) and '&' (and), '^' negating a term. */
KURVO_API int kFileNameMatch(const char *name, const char *pattern);

/* Release a block that the library allocated with the C library's malloc
 * and handed to the host. No function of this version hands out such blocks
 * (every text returned points into the library's own memory); the function
 * stays for hosts written against the interface. NULL is ignored. */
KURVO_API void kDeleteChar(void *block);

/* Receives one damage found by kCheckStorage: the storage file's name
 * ("hash", "files", "words", "skipped" or "links"), the byte offset in it, and
 * an English sentence saying what is wrong. The strings live for the call. */
typedef void (*KurvoDamageCallback)(const char *file, unsigned int offset, const char *what, void *context);

/* Beyond the classic behaviour: check the index stored in folder (ending in
 * "/") without opening it and without trusting any of its files: headers and
 * free space, the table descriptions in "hash", every record, text
 * terminator and hash chain, parent references, word data, and every list
 * block a word reaches. Fields of free value (times, sizes, attributes,
 * counts) cannot be checked. Calls found (when not NULL) for each damage and
 * returns their number: 0 for a sound index. Raises nothing; a missing file
 * is a damage. Do not check a folder while a run writes into it. */
KURVO_API unsigned int kCheckStorage(const char *folder, KurvoDamageCallback found, void *context);

/* Encipher length bytes of input with the built-in key: writes length + 10
 * bytes to output (a 10-byte fixed prefix, then the ciphertext). Equal
 * plaintexts give equal ciphertexts. The caller owns both buffers. */
KURVO_API void kEncipher(const unsigned char *input, unsigned int length, unsigned char *output);

/* Decipher a ciphertext of length bytes (prefix included, length >= 10):
 * writes length - 10 bytes to output. The caller owns both buffers. */
KURVO_API void kDecipher(const unsigned char *input, unsigned int length, unsigned char *output);

/* Write 2 * length upper-case hex digits and, when length > 0, a NUL to output
 * (which needs 2 * length + 1 bytes). Nothing at all is written for length 0. */
KURVO_API void convertToHex(unsigned int length, const unsigned char *input, char *output);

/* Read 2 * length hex digits (either case) and write length bytes. Digits are
 * not validated. */
KURVO_API void convertFromHex(const char *input, unsigned int length, unsigned char *output);

/* Beyond the classic interface: text between UTF-8 and the index's character
 * set (ISO 8859-1, with the Windows-1252 punctuation in 0x80-0x9F), as the
 * "utf8" analyzer reads files.
 * kTextFromUtf8 converts the NUL-terminated utf8: bytes that are not valid
 * UTF-8 are taken as Latin-1 and characters the set cannot hold become the
 * byte 0x1A. It writes at most outSize - 1 bytes and a NUL (nothing when
 * outSize is 0); the result is never longer than the input. Returns how many
 * characters the set could not hold.
 * kTextToUtf8 converts the NUL-terminated text (0x1A becomes U+FFFD): it
 * writes at most outSize - 1 bytes and a NUL, never a cut character, and
 * returns the length the whole result needs (at most 3 bytes a byte).
 * The caller owns every buffer. */
KURVO_API unsigned int kTextFromUtf8(const char *utf8, char *out, unsigned int outSize);
KURVO_API unsigned int kTextToUtf8(const char *text, char *out, unsigned int outSize);

/* Beyond the classic interface: fold the NUL-terminated text to lower case in
 * place, as the index folds words and names (A-Z, the Latin-1 capitals
 * 0xC1-0xDE, and the Windows-1250 capitals at 0x8A-0x8F, 0xA3, 0xA5, 0xAF);
 * every other byte stays. ktsLookup compares ASCII case only, so a host folds
 * a word before looking it up. The caller owns the text. */
KURVO_API void kFoldCase(char *text);

/* -------------------------------------------------------------------- index */

/* Close the index's tables (nothing is stored) and free it. CAUGHT. The handle
 * must not be NULL. */
KURVO_API void kidxClearIndex(void *index);

/* Build the analyzer registry: the built-in analyzers ("generic", "macroman",
 * "dosoem", "html", "rtf", "zip", "tar", "gzip", "mbox", "pdf", and beyond the
 * classic set "utf8" (UTF-8 text, folded into the index's character set) and
 * "auto" (picks one of the others from a file's first bytes)), then one external analyzer per entry of
 * "externanalyzers.txt" in the folder three levels above the storage folder's
 * own name. An entry is three non-empty lines: the analyzer's name, the
 * extension of the converted file (without its dot, or "..." for the source's
 * inner extension) and a shell command holding %i (the file) and %o (the
 * converted file in the temporary folder) once each; '#' starts a comment, a
 * missing file means no external analyzers. An entry with the name of an
 * earlier one replaces it. Beyond the classic behaviour, the paths are passed
 * to the shell quoted (quotes around a placeholder in the command are
 * dropped), and an entry whose command lacks %i or %o, or repeats one, is left
 * out with the status "ExternalAnalyzerRejected" (argument: its name). Call
 * before setting include patterns.
 * THROWS "externalAnalyzersFileTooBig" (the list has 65,535 bytes or more;
 * the built-ins are in place). */
KURVO_API void kidxCreateAnalyzers(void *index);

/* Free all include (exclude) patterns and make room for count new ones, all
 * unset. THROWS nothing in practice. */
KURVO_API void kidxSetIncludeCount(void *index, int count);
KURVO_API void kidxSetExcludeCount(void *index, int count);

/* Store include pattern i (0 <= i < count) with the analyzer that handles the
 * files it selects ("generic" when analyzerName is NULL or ""). CAUGHT: an
 * unregistered name raises the warning "AnalyzerNotFound"; the pattern is then
 * stored without an analyzer. Set each slot once. */
KURVO_API void kidxSetIncludePattern(void *index, int i, const char *pattern, const char *analyzerName);

/* Store exclude pattern i (0 <= i < count). Set each slot once. */
KURVO_API void kidxSetExcludePattern(void *index, int i, const char *pattern);

/* 1 when files below the folder path can still match pattern. */
KURVO_API int kidxDirMatch(void *index, const char *path, const char *pattern);

/* 1 when the lower-case index word matches the lower-case query pattern,
 * where '*' and '?' are wildcards unless the character masks make them word
 * characters. THROWS nothing in practice. */
KURVO_API int kidxDoesWordMatch(void *index, const char *word, const char *pattern);

/* Beyond the classic behaviour: the number of words whose text begins with
 * the bytes of prefix (the empty prefix: every word), read from the word
 * order that kidxStoreWordOrder wrote into the storage folder. The first
 * capacity of their entries go into entries (NULL when capacity is 0), in
 * byte order of their texts; call again with more room when the count is
 * larger. A pattern's bytes before its first '*' or '?' are such a prefix.
 * -1 when the folder holds no word order that fits the word table as it is
 * now (none written, a word added since, or a damaged one): walk the words
 * with ktsGetFirst and ktsGetNext instead. The order is read from disk once
 * per open index. CAUGHT: -1 and "AssertionFailed" when the index has no word table. */
KURVO_API int kidxWordsWithPrefix(void *index, const char *prefix, unsigned int *entries, unsigned int capacity);

/* Start the index afresh in its storage folder (new empty file and word
 * tables, counters zeroed, skip words kept). Call kidxNewFileLinks next.
 * CAUGHT. */
KURVO_API void kidxEmptyIndex(void *index);

/* Create the file-link table and the word-link list for a full build. CAUGHT. */
KURVO_API void kidxNewFileLinks(void *index);

/* Rebuild the skip-word table from the skip file (kidxSetSkipFilePath, or
 * "skipfile.txt" three folders above the storage folder). CAUGHT:
 * "SkipOpenFail" with the path when the file cannot be opened. */
KURVO_API void kidxIndexExclusions(void *index);

/* Record one occurrence of a lower-case word in the file with that record
 * number. CAUGHT. */
KURVO_API void kidxIndexWord(void *index, const char *word, unsigned int fileNumber);

/* Walk folderPath and index every file the patterns select, recording them
 * under parentId (the folder's own record, added by the host with kfsAddFile).
 * CAUGHT: "HaltRequested" when the status callback answered 0. */
KURVO_API void kidxIndexDirectory(void *index, const char *folderPath, unsigned int parentId);

/* Bring a reopened index up to date with the disk: mark vanished files
 * deleted, re-index files newer than the time base, walk changed folders.
 * Makes the tables writable. CAUGHT. */
KURVO_API void kidxPrune(void *index);

/* Beyond the classic behaviour: whether kidxPrune would find anything to do,
 * by its own rules (with the time base, exact updates and kept folders as
 * set): 1 when a recorded file or folder has vanished or changed, 0 when none
 * has. Stops at the first change; reads the disk and changes nothing, so a
 * host can leave an index nothing has overtaken as it is. A table of 1,000
 * records or more is checked by the caller's thread from the start and a
 * second thread from the end at once, a run of records at a time; that
 * thread starts on another processor than the caller's (where the process
 * may use one) and has ended when the call returns, callbacks still come on
 * the caller's thread, and the answer is that of a check in order.
 * CAUGHT: -1 on a broken file table ("AssertionFailed", then
 * "PruneParentError" as for kidxPrune). */
KURVO_API int kidxHasChanges(void *index);

/* Turn the word-link list into one file list per word and delete the word-link
 * file. CAUGHT; after an error the index holds no tables and must be reopened. */
KURVO_API void kidxCompressLinks(void *index);

/* Make the tables read-only and write the summary file folder + "hash".
 * CAUGHT: "StorageReadError" with folder when it cannot be written. */
KURVO_API void kidxStoreStorage(void *index, const char *folder);

/* Beyond the classic behaviour: write folder + "wordorder", every word entry
 * sorted by the bytes of its text, for kidxWordsWithPrefix. Call after
 * kidxStoreStorage with the same folder; the file is written beside its
 * place and renamed into it. CAUGHT: "FileMapWriteFail" with the file's path
 * when it cannot be written, "AssertionFailed" when the index has no word table. */
KURVO_API void kidxStoreWordOrder(void *index, const char *folder);

/* Beyond the classic behaviour. Bytes of "links" past its reserved word that
 * one block per word of its live files would take (*live), and the rest
 * (*dead): entries of removed files, slots never filled, blocks of earlier
 * runs. A compaction leaves no dead bytes. Reads every word's chain. CAUGHT: "AssertionFailed" when a chain is
 * damaged. */
KURVO_API void kidxGetLinkSpace(void *index, double *live, double *dead);

/* Beyond the classic behaviour: rewrite "links" as one block per word holding
 * the files its chain lists, newest first, without removed files (numbers
 * overwritten with 1, records marked deleted, as a changed file's old record
 * is, and members held by such a record), so "links" shrinks to the live size and every query answers as before. The
 * new table is written beside the old one as "links.compact" and renamed over it when complete; the words' list
 * positions change only then, so an error leaves the index as it was. Makes the word table writable; call
 * kidxStoreStorage afterwards. Not between indexing and kidxCompressLinks.
 * CAUGHT: "AssertionFailed" (a damaged chain, or word links pending),
 * "MemFileExtendFail" (no room for the new table), "FileMapWriteFail" (the
 * word table cannot be written or the new table cannot be renamed). */
KURVO_API void kidxCompactLinks(void *index);

/* Open a contents viewer on file record fileNumber: its display text is at
 * most maxLength bytes, wrapped at wrapWidth columns (0: no wrapping).
 * displayFlag asks analyzers of mark-up to drop tags; defaultDistance is the
 * proximity used by a query's "<" without a number. CAUGHT: NULL on error.
 * Release with kfcDeleteContentsObject. */
KURVO_API void *kidxGetFileContents(void *index, unsigned int fileNumber, unsigned int maxLength, int wrapWidth,
                                    bool displayFlag, int defaultDistance);

/* The index's tables; owned by the index, never freed by the host. */
KURVO_API void *kidxGetWords(void *index);
KURVO_API void *kidxGetFiles(void *index);
KURVO_API void *kidxGetSkipWords(void *index);
KURVO_API void *kidxGetLinks(void *index);

/* Counters: bytes read, folders opened, records added, files whose contents
 * were indexed, distinct words added. */
KURVO_API double kidxGetBytesRead(void *index);
KURVO_API unsigned int kidxGetDirectoriesRead(void *index);
KURVO_API unsigned int kidxGetFilesIndexed(void *index);
KURVO_API unsigned int kidxGetContentsIndexed(void *index);
KURVO_API unsigned int kidxGetWordsIndexed(void *index);
/* Beyond the classic counters: files read by the "utf8" analyzer that held
 * characters the index's character set cannot hold (they separate words). */
KURVO_API unsigned int kidxGetFilesWithForeignText(void *index);
KURVO_API void kidxSetBytesRead(void *index, double value);
KURVO_API void kidxSetDirectoriesRead(void *index, unsigned int value);
KURVO_API void kidxSetFilesIndexed(void *index, unsigned int value);
KURVO_API void kidxSetContentsIndexed(void *index, unsigned int value);
KURVO_API void kidxSetWordsIndexed(void *index, unsigned int value);

/* Settings. Word lengths default to 3 and 16 (a maximum of 0 means 100; words
 * of maximum + 1 characters are still taken). MaxPerFileRead limits the bytes
 * read from one file and must be set before indexing; the PDF analyzer, which
 * reads a PDF whole, sizes its reads from it (at most 65,535 bytes) when
 * kidxCreateAnalyzers runs, so set it first. UseRanking (default 1)
 * keeps a per-file occurrence count; set it before kidxNewFileLinks. TrackAll
 * (default 1) records files no include pattern selects. ShowStatus > 0 sends
 * progress to the status callback (> 1 also per-file byte counts). IsUpdate
 * marks an update run. NumberHandling, InternationalChar and SavePassword are
 * only kept for the host. */
KURVO_API void kidxSetMinWordLength(void *index, int value);
KURVO_API void kidxSetMaxWordLength(void *index, int value);
KURVO_API void kidxSetMaxPerFileRead(void *index, int value);
KURVO_API void kidxSetNumberHandling(void *index, int value);
KURVO_API void kidxSetInternationalChar(void *index, int value);
KURVO_API void kidxSetTrackAll(void *index, int value);
KURVO_API void kidxSetUseRanking(void *index, int value);
KURVO_API void kidxSetSavePassword(void *index, int value);
KURVO_API void kidxSetShowStatus(void *index, int value);
KURVO_API void kidxSetIsUpdate(void *index, int value);
/* Beyond the classic behaviour (default 0): an update also re-reads a file,
 * and walks a folder, whose modification time or size differs from its
 * record, whatever the time base; so files put back older than the last run
 * (mv, cp -p, tar x, rsync -a) are seen. */
KURVO_API void kidxSetExactUpdates(void *index, int on);
/* Beyond the classic behaviour (default 0): kidxCompressLinks gives a word's
 * new list block room for the files it gained in this run only, and none to a
 * word that gained none, so an update that changes nothing leaves "links" as
 * it was. A first build stores the same bytes either way. */
KURVO_API void kidxSetSizedListBlocks(void *index, int on);
/* Beyond the classic behaviour (default 0): a list block larger than the
 * links table's growth step (1,048,575 bytes, a word in about 210,000 files)
 * is stored instead of refused with "GetHugeSpace". */
KURVO_API void kidxSetGrowByRequest(void *index, int on);
/* Beyond the classic behaviour (default 0): while kidxIndexDirectory walks a
 * tree, a second thread walks it ahead in the same order and reads up to
 * files files ahead of it (each up to the read limit), so that their bytes
 * are in memory when they are indexed; files of 2 KiB to 1 MiB for the "utf8"
 * analyzer it also decodes and cuts into words, which the analyzer then
 * takes instead of reading the file again (unless the file's size or time
 * has changed since). The walk cuts such a file the same way itself when the
 * second thread has not got ahead of it, and indexes each read's words once
 * with their counts. Every callback still comes on the caller's thread, the
 * stored bytes are the same, and the thread has ended when
 * kidxIndexDirectory returns. With this set, kidxCompressLinks also writes
 * the list blocks on a second thread, and sorts the words for
 * kidxStoreWordOrder on another unless the stored order needs only the few
 * words added since (both ended when it returns), and leaves unmapping the
 * spent word links (their "temp" file already removed) to a thread that
 * kidxClearIndex waits for; kidxPrune looks up each block of 1,024 records
 * on the disk before it visits them, on its own thread and a second one at
 * once, while the tables are left alone, and takes each answer whose path is
 * still the one it would look up. Negative counts are taken as 0. */
KURVO_API void kidxSetReadAhead(void *index, int files);
/* Beyond the classic behaviour: kidxPrune leaves the records below the folder
 * path (absolute, no trailing '/') as they are, neither dropped nor read, for
 * a folder that cannot be reached now (an unmounted drive). Each call adds a
 * folder for the life of the index object. */
KURVO_API void kidxKeepFolder(void *index, const char *path);
/* Beyond the classic behaviour: the folder into which kidxPrune writes
 * "deadkurvo.txt" when it finds a broken file table (NULL or "": the current
 * folder, as classic hosts have it). */
KURVO_API void kidxSetReportFolder(void *index, const char *path);
/* Beyond the classic behaviour (default 0): the status "FileSkipped" is sent
 * (whatever ShowStatus) for each file or folder the walk leaves out or reads in
 * part; its argument is the reason, a TAB and the path. Reasons: "folder" (a
 * folder that cannot be opened), "file" (a file that cannot be opened),
 * "path" (a name too long for the system) and "cut" (a text file longer than
 * MaxPerFileRead, read up to it). */
KURVO_API void kidxSetReportSkipped(void *index, int on);

/* Bounds on one run of an external converter, beyond the classic settings and
 * always in force: a converter running longer than seconds (default 120) is
 * killed with its process group and its file is skipped; no file it writes may
 * grow past bytes (default 256 MiB; it is stopped there). 0 removes a bound. */
KURVO_API void kidxSetConverterTimeLimit(void *index, int seconds);
KURVO_API void kidxSetConverterOutputLimit(void *index, double bytes);

/* The time of the last completed run (seconds since 1904); pruning re-reads
 * what changed after it. Stored truncated to whole seconds since 1970. */
KURVO_API void kidxSetTimeBase(void *index, double macTime);

/* Character classes, one entry per byte value c (0..255, unchecked): bytes that
 * may start a word, may continue one, are shown by the viewer, count as
 * non-letters. They have no defaults: set every entry you rely on. */
KURVO_API void kidxSetValidCharMask(void *index, int c, bool on);
KURVO_API void kidxSetValidTrailingMask(void *index, int c, bool on);
KURVO_API void kidxSetValidViewableMask(void *index, int c, bool on);
KURVO_API void kidxSetNonAlphaCharMask(void *index, int c, bool on);

/* Folder for temporary files (extracted members, converter output); the path
 * of the skip-word file. The texts are copied. */
KURVO_API void kidxSetTemporaryDirectory(void *index, const char *path);
KURVO_API void kidxSetSkipFilePath(void *index, const char *path);

/* ------------------------------------- text storage (word and skip tables) */

/* Walk the entries in the order they were added: first, then next until 0.
 * An entry number is the byte offset of its text; 0 means none. THROWS. */
KURVO_API unsigned int ktsGetFirst(void *table);
KURVO_API unsigned int ktsGetNext(void *table, unsigned int entry);

/* The entry whose text equals text ignoring ASCII case, or 0. THROWS
 * "AssertionFailed" on a damaged table. */
KURVO_API unsigned int ktsLookup(void *table, const char *text);

/* The entry's text, or NULL when out of range or damaged. THROWS. */
KURVO_API const char *ktsGetText(void *table, unsigned int entry);

/* The entry's data area. For the word table: 16 bytes in host byte order,
 * possibly unaligned: u32 current file (the last file the word was seen in,
 * never in the file lists), u16 occurrence counter, u16 reserved, u32 list
 * position (0: no list), u32 earlier files. Read it with memcpy. NULL when the
 * entry is out of range or damaged. THROWS. */
KURVO_API void *ktsGetData(void *table, unsigned int entry);

/* ------------------------------------------------------------- file storage */

/* Append a record with that name and zero fields; returns its record number.
 * Does not look for an existing one. CAUGHT: 0 on error. */
KURVO_API unsigned int kfsAddFile(void *files, const char *name);

/* The record handle for the kfi functions, or NULL when the record is out of
 * range or damaged (check it: the kfi functions do not). THROWS. */
KURVO_API void *kfsGetInfo(void *files, unsigned int record);

/* Walk all records (deleted ones included) in the order added. THROWS. */
KURVO_API unsigned int kfsGetFirst(void *files);
KURVO_API unsigned int kfsGetNext(void *files, unsigned int record);

/* The record named name (ASCII case ignored) under parent, or 0. Folders have
 * parent 0 and their full path as name. THROWS "AssertionFailed". */
KURVO_API unsigned int kfsLookupFile(void *files, const char *name, unsigned int parent);

/* --------------------------------------------------------- one file record */

KURVO_API unsigned int kfiGetFileParentID(void *record);
/* Seconds since 1904. */
KURVO_API double kfiGetFileTimeLastWritten(void *record);
KURVO_API unsigned int kfiGetFileSize(void *record);
KURVO_API unsigned int kfiGetFileAttributes(void *record);
/* The record's own name (a folder's full path); first byte 0xFF: deleted. */
KURVO_API const char *kfiGetFileName(void *record);
KURVO_API void kfiSetFileParentID(void *record, unsigned int value);
/* Stores macTime - 2082844800 truncated toward zero. */
KURVO_API void kfiSetFileTimeLastWritten(void *record, double macTime);
KURVO_API void kfiSetFileSize(void *record, unsigned int value);
KURVO_API void kfiSetFileAttributes(void *record, unsigned int value);
/* Mark the record deleted (its name's first byte becomes 0xFF; an empty name
 * is left alone). */
KURVO_API void kfiMarkFileObsolete(void *record);

/* --------------------------------------------------------------- file links */

/* A word's files are its current file (word data), then the entries read from
 * its list position upward until file 0, then the older blocks chained by
 * kflGetNextList until position 0. cursor[0] is the position and advances;
 * cursor[1] receives the count byte (occurrences - 1, or 255 without ranking).
 * Returns the file number, 0 at the end of a block. THROWS. */
KURVO_API unsigned int kflGetFile(void *links, unsigned int cursor[2]);

/* The position of the word's next older block, read at the position just past
 * a block's terminating 0 entry; 0 when there is none. THROWS. */
KURVO_API unsigned int kflGetNextList(void *links, unsigned int position);

/* ---------------------------------------------------------- contents viewer */

/* The display text, never NULL (the empty text when there is none). Owned by
 * the viewer. */
KURVO_API const char *kfcContents(void *contents);

/* The next line of the display text, its line feed included; valid until the
 * next call on the viewer. THROWS "EndOfContents" after the last line. */
KURVO_API const char *kfcNext(void *contents);

/* Queries mark words of the display text. A query is a row of terms: word
 * characters and the wildcards '*' and '?' (a trailing '?' may match
 * nothing). The text is lower-cased before comparing, the terms are not, so
 * write them in lower case. Other characters only separate terms. A term or
 * parenthesised group after '+' never marks. "a <N b" marks a only when a
 * word matching b follows within the next N + 1 words; N is read from the
 * digits 0 to 8 (a 9 ends it), and without a number the viewer's
 * defaultDistance applies. */

/* True when the display text holds a hit of the query. */
KURVO_API bool kfcContainsHit(void *contents, const char *query);

/* Reduce the display text, for good, to the lines that hold hits, each once.
 * Hits shorter than the minimum or longer than the maximum word length do not
 * count. kfcNext goes on from where it stood. */
KURVO_API void kfcConvertToOutline(void *contents, const char *query);

/* 1-based byte position of the next hit at or after byte offset; 0 when none.
 * For the following hit search again from (position - 1) + its token length. */
KURVO_API unsigned int kfcSearchBuffer(void *contents, unsigned int offset, const char *query);

/* Length of the word at byte offset (0 when no word starts there). */
KURVO_API unsigned int kfcTokenLength(void *contents, unsigned int offset);

/* The path that was read (for archive members, the temporary file, already
 * removed). Owned by the viewer. */
KURVO_API const char *kfcFilePath(void *contents);

/* Destroy the viewer and its text. NULL is ignored. */
KURVO_API void kfcDeleteContentsObject(void *contents);

#ifdef __cplusplus
}
#endif

#endif /* KURVO_H */
