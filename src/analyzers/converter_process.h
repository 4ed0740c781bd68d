// Running an external converter through the shell, bounded in time and in what it writes.
#pragma once

#include <cstdint>
#include <string>

// The path as one literal shell word, whatever bytes it holds.
std::string shellQuoted(const std::string &path);

enum class ConverterResult { Finished, TimedOut, NotStarted };

// Runs command with /bin/sh -c and waits for it. Past timeLimitSeconds its
// whole process group is killed; no file it writes may grow past outputLimit
// bytes (the write fails and the converter is stopped by SIGXFSZ); 0 leaves
// either unbounded. Its exit status is not looked at.
ConverterResult runConverter(const std::string &command, int timeLimitSeconds, uint64_t outputLimit);
