// Exported access to the word, skip-word, file and file-link tables and to file records.
//
// Only kfsAddFile catches; every other table function lets "AssertionFailed"
// and the like through to the host.
#include "api/handles.h"
#include "kurvo.h"
#include "storage/file_links.h"
#include "storage/file_storage.h"
#include "storage/text_storage.h"

extern "C" {

// Text storage.

KURVO_API unsigned int ktsGetFirst(void *table) { return asTextStorage(table)->getFirst(); }
KURVO_API unsigned int ktsGetNext(void *table, unsigned int entry) { return asTextStorage(table)->getNext(entry); }
KURVO_API unsigned int ktsLookup(void *table, const char *text) { return asTextStorage(table)->lookup(text); }
KURVO_API const char *ktsGetText(void *table, unsigned int entry) { return asTextStorage(table)->getText(entry); }
KURVO_API void *ktsGetData(void *table, unsigned int entry) { return asTextStorage(table)->getData(entry); }

// File storage.

KURVO_API unsigned int kfsAddFile(void *files, const char *name) {
  try {
    return asFileStorage(files)->addFile(name);
  } catch (...) {
    return 0;
  }
}
KURVO_API void *kfsGetInfo(void *files, unsigned int record) { return asFileStorage(files)->getData(record); }
KURVO_API unsigned int kfsGetFirst(void *files) { return asFileStorage(files)->getFirst(); }
KURVO_API unsigned int kfsGetNext(void *files, unsigned int record) { return asFileStorage(files)->getNext(record); }
KURVO_API unsigned int kfsLookupFile(void *files, const char *name, unsigned int parent) {
  return asFileStorage(files)->lookupFile(name, parent);
}

// One file record (the data area that kfsGetInfo returned).

KURVO_API unsigned int kfiGetFileParentID(void *record) { return file_record::parent(asRecord(record)); }
KURVO_API double kfiGetFileTimeLastWritten(void *record) { return file_record::macTime(asRecord(record)); }
KURVO_API unsigned int kfiGetFileSize(void *record) { return file_record::size(asRecord(record)); }
KURVO_API unsigned int kfiGetFileAttributes(void *record) { return file_record::attributes(asRecord(record)); }
KURVO_API const char *kfiGetFileName(void *record) { return file_record::name(asRecord(record)); }
KURVO_API void kfiSetFileParentID(void *record, unsigned int value) { file_record::setParent(asRecord(record), value); }
KURVO_API void kfiSetFileTimeLastWritten(void *record, double macTime) {
  file_record::setMacTime(asRecord(record), macTime);
}
KURVO_API void kfiSetFileSize(void *record, unsigned int value) { file_record::setSize(asRecord(record), value); }
KURVO_API void kfiSetFileAttributes(void *record, unsigned int value) {
  file_record::setAttributes(asRecord(record), value);
}
KURVO_API void kfiMarkFileObsolete(void *record) { file_record::markObsolete(asRecord(record)); }

// File links. The host's cursor is (position, rank); the rank byte is widened.

KURVO_API unsigned int kflGetFile(void *links, unsigned int cursor[2]) {
  uint32_t position = cursor[0];
  unsigned char rank = 0;
  uint32_t file = asFileLinks(links)->getFile(position, rank);
  cursor[0] = position;
  cursor[1] = rank;
  return file;
}
KURVO_API unsigned int kflGetNextList(void *links, unsigned int position) {
  return asFileLinks(links)->getNextList(position);
}

}  // extern "C"
