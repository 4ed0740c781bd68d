// The manual page, written in roff from the command's own help texts.
#pragma once

#include <string>

namespace CLI {
class App;
}

namespace kurvo_cli {

std::string manPage(const CLI::App &app);

}  // namespace kurvo_cli
