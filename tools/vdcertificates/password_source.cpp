#include "tools/vdcertificates/password_source.h"

#include <optional>
#include <string_view>

#include "platform/terminal.h"
#include "tools/vdcertificates/exit_status.h"
#include "tools/vdcertificates/input.h"
#include "tools/vdcertificates/text_checks.h"

namespace tool {
namespace {

/// The longest password, its line end, and one byte that shows that the input is longer.
constexpr std::size_t most = longest_password + 3;

/// The text of a source, without one final line end.
Secret without_line_end(Secret text, const std::string& subject) {
    const std::string_view read = text.text();
    const std::size_t end = read.ends_with("\r\n") ? 2 : read.ends_with('\n') ? 1 : 0;
    text.resize(read.size() - end);
    if (text.text().empty()) {
        throw UsageError(subject + " is empty; to store none use --no-password");
    }
    check_password(subject, text.text());
    return text;
}

Secret ask(platform::SecretPrompt& terminal, const std::string& prompt) {
    std::optional<std::string> answer = terminal.ask(prompt);
    if (!answer) {
        throw UsageError("the input ended before a password was given");
    }
    return Secret(std::move(*answer));
}

Secret ask_twice() {
    platform::SecretPrompt terminal;
    if (!terminal.has_terminal()) {
        throw UsageError("there is no terminal to ask for the password on");
    }
    Secret password = ask(terminal, "Password: ");
    const Secret again = ask(terminal, "Password again: ");
    if (password.text() != again.text()) {
        throw UsageError("the two passwords differ");
    }
    return without_line_end(std::move(password), "the password");
}

} // namespace

Secret read_password(PasswordSource source, const std::string& file) {
    switch (source) {
    case PasswordSource::standard_input:
        return without_line_end(read_standard_input(most), "the password on standard input");
    case PasswordSource::file:
        return without_line_end(read_file(file, most), "the password in " + file);
    case PasswordSource::prompt:
        return ask_twice();
    case PasswordSource::none:
        break;
    }
    return {};
}

} // namespace tool
