// Raw host-order words of the saved table descriptions in the summary file.
#pragma once

#include <cstdint>
#include <cstdio>

inline bool writeWord(FILE *stream, uint32_t word) { return std::fwrite(&word, 4, 1, stream) == 1; }

inline bool readWord(FILE *stream, uint32_t &word) { return std::fread(&word, 4, 1, stream) == 1; }
