#pragma once

#include <memory>
#include <optional>
#include <string>

namespace platform {

/// True when the standard stream goes to a terminal.
bool output_is_terminal();
bool error_is_terminal();

/// The controlling terminal (Windows: the console) without echo, for one or more questions. The
/// echo is restored whatever happens: a signal that ends the process takes effect after that, and
/// a process that was suspended takes the echo away again before it reads on.
class SecretPrompt {
  public:
    SecretPrompt();
    SecretPrompt(const SecretPrompt&) = delete;
    SecretPrompt& operator=(const SecretPrompt&) = delete;
    ~SecretPrompt();

    /// False when there is no terminal to ask on.
    bool has_terminal() const noexcept { return state_ != nullptr; }

    /// Asks and returns the line typed without its end, or nothing when the input ends. Memory
    /// that held the line has been wiped but for the text returned.
    std::optional<std::string> ask(const std::string& prompt);

  private:
    struct State;
    std::unique_ptr<State> state_;
};

} // namespace platform
