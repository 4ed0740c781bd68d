// Paths of records: folders, files, nested archive members, broken chains.
#include <gtest/gtest.h>

#include "record_paths.h"

using namespace kurvo_cli;

namespace {

RecordTable sampleTable() {
  // 180 is deleted, 210 lies inside it, 240's parent is unknown, 330 and 360 loop.
  // clang-format off
  const struct {
    uint32_t number, parent;
    const char *name;
  } rows[] = {{36, 0, "/docs"}, {60, 36, "notes.txt"}, {90, 36, "docs.zip"}, {120, 90, "inner.tar"},
              {150, 120, "notes.txt"}, {180, 36, "\xFFld.txt"}, {210, 180, "member.txt"}, {240, 999, "orphan.txt"},
              {270, 0, "/"}, {300, 270, "top.txt"}, {330, 360, "loop-a"}, {360, 330, "loop-b"}};
  // clang-format on
  RecordTable t;
  for (const auto &r : rows) {
    FileRecord &record = t[r.number];
    record.parent = r.parent;
    record.name = r.name;
    record.deleted = r.name[0] == '\xFF';
  }
  return t;
}

TEST(RecordPaths, AreBuiltFromTheParentChain) {
  // A folder, a deleted file, one inside it, a missing parent and a loop give no path.
  // clang-format off
  const struct {
    uint32_t record;
    const char *path;
  } cases[] = {{60, "/docs/notes.txt"}, {150, "/docs/docs.zip::inner.tar::notes.txt"}, {36, ""}, {180, ""}, {210, ""},
               {240, ""}, {300, "/top.txt"}, {330, ""}, {12345, ""}};
  // clang-format on
  RecordTable t = sampleTable();
  RecordPaths paths(t);
  for (const auto &c : cases) EXPECT_EQ(paths.filePath(c.record), c.path) << "record " << c.record;
}

TEST(RecordPaths, FindsLiveFilesByPath) {
  RecordTable t = sampleTable();
  RecordPaths paths(t);
  EXPECT_EQ(paths.findFile("/docs/docs.zip::inner.tar::notes.txt"), 150u);
  EXPECT_EQ(paths.findFile("/docs/old.txt"), 0u);
  EXPECT_EQ(paths.findFile("/docs"), 0u);
  // A file indexed again is found under its new record, not the deleted one.
  t[60].deleted = true;
  t[60].name[0] = '\xFF';
  t[400].parent = 36;
  t[400].name = "notes.txt";
  EXPECT_EQ(RecordPaths(t).findFile("/docs/notes.txt"), 400u);
}

}  // namespace
