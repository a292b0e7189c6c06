#include "tools/vdcertificates/password_source.h"

#include <array>
#include <cstdio>
#include <optional>
#include <string_view>

#include "platform/file.h"
#include "platform/terminal.h"
#include "tools/vdcertificates/exit_status.h"
#include "tools/vdcertificates/text_checks.h"

namespace tool {
namespace {

/// Room for the longest password, its line end, and one byte that shows that there is more.
class Buffer {
  public:
    Buffer() = default;
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;
    ~Buffer() { platform::secure_zero(bytes_.data(), bytes_.size()); }

    char* end() noexcept { return bytes_.data() + used_; }
    std::size_t room() const noexcept { return bytes_.size() - used_; }
    void add(std::size_t count) noexcept { used_ += count; }

    /// What was read, without one final line end.
    Secret password(const std::string& subject) const {
        std::string_view text(bytes_.data(), used_);
        if (text.ends_with('\n')) {
            text.remove_suffix(text.ends_with("\r\n") ? 2 : 1);
        }
        check_password(subject, text);
        return Secret(std::string(text));
    }

  private:
    std::array<char, longest_password + 3> bytes_{};
    std::size_t used_ = 0;
};

Secret read_standard_input() {
    std::setvbuf(stdin, nullptr, _IONBF, 0); // so that no other buffer gets the password
    Buffer buffer;
    while (buffer.room() > 0) {
        const std::size_t count = std::fread(buffer.end(), 1, buffer.room(), stdin);
        if (count == 0) {
            break;
        }
        buffer.add(count);
    }
    if (std::ferror(stdin) != 0) {
        throw UsageError("the password cannot be read from standard input");
    }
    return buffer.password("the password on standard input");
}

/// An open file for a scope.
struct OpenFile {
    explicit OpenFile(platform::FileHandle opened) noexcept
        : handle(opened) {}
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;
    ~OpenFile() { platform::close_file(handle); }

    platform::FileHandle handle;
};

Secret read_password_file(const std::string& name) {
    const auto refuse = [&](platform::SystemError error) -> UsageError {
        return UsageError("cannot read the password file " + name + ": " +
                          platform::describe(error));
    };
    const auto handle = platform::open_input(name); // also the pipe of a process substitution
    if (!handle) {
        throw refuse(handle.error());
    }
    const OpenFile file(*handle);
    Buffer buffer;
    while (buffer.room() > 0) {
        const auto count = platform::read_file(file.handle, buffer.end(),
                                               static_cast<std::uint32_t>(buffer.room()));
        if (!count) {
            throw refuse(count.error());
        }
        if (*count == 0) {
            break;
        }
        buffer.add(*count);
    }
    return buffer.password("the password in " + name);
}

Secret ask(const std::string& prompt) {
    std::optional<std::string> answer = platform::ask_secret(prompt);
    if (!answer) {
        throw UsageError("there is no terminal to ask for the password on");
    }
    return Secret(std::move(*answer));
}

Secret ask_twice() {
    Secret password = ask("Password: ");
    const Secret again = ask("Password again: ");
    if (password.text() != again.text()) {
        throw UsageError("the two passwords differ");
    }
    check_password("the password", password.text());
    return password;
}

} // namespace

Secret read_password(PasswordSource source, const std::string& file) {
    switch (source) {
    case PasswordSource::standard_input:
        return read_standard_input();
    case PasswordSource::file:
        return read_password_file(file);
    case PasswordSource::prompt:
        return ask_twice();
    case PasswordSource::none:
        break;
    }
    return {};
}

} // namespace tool
