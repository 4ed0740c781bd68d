// Checking a stored index's files without trusting any of them.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

// One damage: the storage file, the byte offset in it, and what is wrong.
using DamageSink = std::function<void(const char *file, uint32_t offset, const char *what)>;

// Reads "hash", "files", "words", "skipped" and "links" in folder (ending in
// '/') and checks every header, description, record, chain, text terminator,
// word datum and list block they hold. Returns the number of damages, each
// also given to sink. Fields of free value (times, sizes, attributes, counts,
// the initial size) cannot be checked.
uint32_t checkStorage(const std::string &folder, const DamageSink &sink);
