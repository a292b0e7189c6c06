#pragma once

#include <memory>
#include <optional>
#include <string>

namespace platform {

/// True if the standard stream is a terminal.
bool output_is_terminal();
bool error_is_terminal();

/// The controlling terminal (Windows: the console) without echo, for one or more questions. The
/// destructor restores the echo; a signal that ends the process takes effect after that. A process
/// that was suspended disables the echo again before it continues to read.
class SecretPrompt {
  public:
    SecretPrompt();
    SecretPrompt(const SecretPrompt&) = delete;
    SecretPrompt& operator=(const SecretPrompt&) = delete;
    ~SecretPrompt();

    /// False if there is no terminal.
    bool has_terminal() const noexcept { return state_ != nullptr; }

    /// Asks and returns the typed line without its end, or nullopt at the end of the input. Wipes
    /// all memory that held the line except the returned text.
    std::optional<std::string> ask(const std::string& prompt);

  private:
    struct State;
    std::unique_ptr<State> state_;
};

} // namespace platform
