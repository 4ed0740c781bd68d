// Error, warning and status reporting through the host's three callbacks.
#pragma once

#include <string>

#include "kurvo.h"

// The host's callbacks; process-wide, null until the host installs them.
extern KurvoMessageCallback pThrowCallBack;
extern KurvoMessageCallback pWarningCallBack;
extern KurvoStatusCallback pStatusCallBack;

// Reports the error to the error callback (if any), then throws int 1.
[[noreturn]] void throwKurvoError(const char *key, std::string argument);

// Reports the warning to the warning callback (if any), then throws int 1:
// a warning ends the operation just as an error does.
[[noreturn]] void postWarning(const char *key, std::string argument);

// The status callback's answer for (key, argument, 1), or 1 without one.
// 0 asks the running operation to stop.
int setStatus(const char *key, const std::string &argument);
