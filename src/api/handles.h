// Turns the host's untyped handles back into the library's objects.
#pragma once

class CKurvoIndex;
class CTextStorage;
class CFileStorage;
class CFileLinks;
class CFileContents;

// Handles are never checked: a null or stale one is the host's error.
inline CKurvoIndex *asIndex(void *handle) { return static_cast<CKurvoIndex *>(handle); }
inline CTextStorage *asTextStorage(void *handle) { return static_cast<CTextStorage *>(handle); }
inline CFileStorage *asFileStorage(void *handle) { return static_cast<CFileStorage *>(handle); }
inline CFileLinks *asFileLinks(void *handle) { return static_cast<CFileLinks *>(handle); }
inline CFileContents *asContents(void *handle) { return static_cast<CFileContents *>(handle); }
inline char *asRecord(void *handle) { return static_cast<char *>(handle); }

// Runs the work of an exported function that catches every error: the host
// has already heard of it through its callback and gets no result.
template <typename Work>
void caught(Work &&work) noexcept {
  try {
    work();
  } catch (...) {
  }
}
