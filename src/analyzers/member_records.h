// What the container analyzers share: member names, records, analyzers and temporary copies.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

class CFileAnalyzer;
class CKurvoIndex;

// The part of a member name after its last '/' or '\'; empty for a folder.
const char *memberBaseName(const char *name);

// The analyzer a member's base name selects, or null (also when excluded).
CFileAnalyzer *memberAnalyzer(CKurvoIndex &index, const char *baseName);

// Finds or adds the record of fullName under parent (counting an added one)
// and writes its parent, time, size and attributes 0; returns its number.
uint32_t recordMember(CKurvoIndex &index, const char *fullName, uint32_t parent, int32_t time, uint32_t size);

// True in update mode when the member is known and not newer than the time base.
bool memberUnchanged(CKurvoIndex &index, const char *fullName, uint32_t parent, int64_t time);

// "<temporary folder>/<member number><base name>", at most 1,023 bytes.
std::string memberTempPath(CKurvoIndex &index, uint32_t member, const char *baseName);

// Closes a temporary copy written for a member. When a write failed (a full
// disk) the copy is removed, reported as skipped ("write") and false returned.
bool closeTempFile(CKurvoIndex &index, FILE *out, const char *path);

// The index's unpacking bounds make an archive that holds itself, or a small
// file that unpacks to gigabytes, cost one file, never the run or the disk.
// One container being indexed, for the life of the object: counts the
// nesting and starts the byte count at the outermost archive.
class ArchiveLevel {
 public:
  ArchiveLevel(CKurvoIndex &index, const char *archivePath);
  ~ArchiveLevel();
  ArchiveLevel(const ArchiveLevel &) = delete;
  ArchiveLevel &operator=(const ArchiveLevel &) = delete;

  // True (and said once) when this archive lies too deep to be opened.
  bool tooDeep() const { return m_tooDeep; }
  // Counts bytes about to be unpacked from one member (memberSoFar of them
  // already); how many of them may be, 0 once a bound is reached (said once).
  uint64_t allow(uint64_t memberSoFar, uint64_t bytes);

 private:
  CKurvoIndex &m_index;
  const char *m_path;
  bool m_tooDeep = false;
};

// Cuts one piece of a member read into memory: the carry-over buffer is
// emptied first, since container pieces are indexed each on its own. buffer
// holds length bytes and one spare byte.
void indexMemberPiece(CKurvoIndex &index, CFileAnalyzer &analyzer, char *buffer, unsigned long length, uint32_t member,
                      bool firstPiece);
