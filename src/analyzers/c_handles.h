// Owners of C library resources the analyzers open: FILE streams and malloc'ed blocks.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <memory>

struct FileCloser {
  void operator()(FILE *file) const { std::fclose(file); }
};
using FileHandle = std::unique_ptr<FILE, FileCloser>;

struct BlockFreer {
  void operator()(char *block) const { std::free(block); }
};
using MallocBlock = std::unique_ptr<char, BlockFreer>;
