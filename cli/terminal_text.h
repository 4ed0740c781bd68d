// Text between the user's terminal (UTF-8 when the locale says so) and the index's character set.
#pragma once

#include <string>

namespace kurvo_cli {

// Whether the locale's character set is UTF-8; the locale is read on the
// first call.
bool terminalIsUtf8();

// Index text as the terminal shows it: UTF-8 when the locale is UTF-8,
// otherwise the bytes as they are.
std::string forTerminal(const std::string &text);
// One byte of index text, the same way.
const std::string &terminalCharacter(unsigned char byte);

// Index text as UTF-8 whatever the locale, for JSON.
std::string asUtf8(const std::string &text);

// What the user typed, in the index's character set; foreign counts the
// characters the set cannot hold (each becomes a separator).
std::string fromTerminal(const std::string &text, unsigned *foreign);

}  // namespace kurvo_cli
