// The failure a command reports: one line for the user and an exit status.
#pragma once

#include <stdexcept>
#include <string>

namespace kurvo_cli {

// Exit statuses: 0 found or done, 1 nothing found, 2 error, 130 interrupted.
inline constexpr int kExitFound = 0;
inline constexpr int kExitNothing = 1;
inline constexpr int kExitError = 2;
inline constexpr int kExitInterrupted = 130;

class HostError : public std::runtime_error {
 public:
  explicit HostError(const std::string &message, int status = kExitError)
      : std::runtime_error(message), m_status(status) {}
  int status() const { return m_status; }

 private:
  int m_status;
};

}  // namespace kurvo_cli
