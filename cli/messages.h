// English sentences for the library's message keys.
#pragma once

#include <string>

namespace kurvo_cli {

// One sentence (no trailing period) for the key with its argument worked in.
std::string describeMessage(const std::string &key, const std::string &argument);

}  // namespace kurvo_cli
