// Error, warning and status reporting through the host's three callbacks.
#include "report/reporting.h"

#include <unistd.h>

#include <cstring>

KurvoMessageCallback pThrowCallBack = nullptr;
KurvoMessageCallback pWarningCallBack = nullptr;
KurvoStatusCallback pStatusCallBack = nullptr;

void throwKurvoError(const char *key, std::string argument) {
  if (pThrowCallBack) pThrowCallBack(key, argument.c_str());
  throw 1;
}

void postWarning(const char *key, std::string argument) {
  if (pWarningCallBack) pWarningCallBack(key, argument.c_str());
  throw 1;
}

int setStatus(const char *key, const std::string &argument) {
  if (!pStatusCallBack) return 1;
  return pStatusCallBack(key, argument.c_str(), 1);
}

extern "C" {

KURVO_API void kSetThrowCallBack(KurvoMessageCallback cb) { pThrowCallBack = cb; }

KURVO_API void kSetWarningCallBack(KurvoMessageCallback cb) { pWarningCallBack = cb; }

KURVO_API void kSetStatusCallBack(KurvoStatusCallback cb) { pStatusCallBack = cb; }

KURVO_API int kSetStatus(const char *key, const char *argument) {
  if (!pStatusCallBack) return 1;
  return pStatusCallBack(key, argument, 0);
}

KURVO_API int kRawStdoutWrite(const char *text) { return static_cast<int>(write(1, text, std::strlen(text))); }

}  // extern "C"
