// The library's file-name pattern language: terms with '*' and '?', '|', '&', '^'.
#pragma once

// 1 when name matches the first term of pattern (0/1 flipped by a leading '^').
int termMatch(const char *name, const char *pattern);
// termMatch by trying the rest of the term at every place the next literal
// occurs; termMatch gives the same answers faster for plain globs.
int backtrackingTermMatch(const char *name, const char *pattern);
// 1 when name matches the whole pattern, evaluated left to right.
int fileNameMatch(const char *name, const char *pattern);
// 1 when a folder path can still lead to files that pattern names.
int dirMatch(const char *path, const char *pattern);
