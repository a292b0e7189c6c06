#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <variant>

namespace platform {

/// The error of a system call: an error number and the system that defines it. A default
/// SystemError means success.
class SystemError {
  public:
    enum class Domain : std::uint8_t { none, posix, windows };

    constexpr SystemError() noexcept = default;

    /// An `errno` value.
    static constexpr SystemError posix(int number) noexcept {
        return SystemError(Domain::posix, static_cast<unsigned long>(number));
    }

    /// A value of `GetLastError`.
    static constexpr SystemError windows(unsigned long number) noexcept {
        return SystemError(Domain::windows, number);
    }

    constexpr explicit operator bool() const noexcept { return domain_ != Domain::none; }
    constexpr Domain domain() const noexcept { return domain_; }
    constexpr unsigned long number() const noexcept { return number_; }

    /// The file or a directory of its path does not exist: ENOENT, ENOTDIR; ERROR_FILE_NOT_FOUND,
    /// ERROR_PATH_NOT_FOUND.
    bool is_not_found() const noexcept;
    bool is_access_denied() const noexcept;
    bool is_already_exists() const noexcept;
    bool is_sharing_violation() const noexcept;

    friend constexpr bool operator==(const SystemError&, const SystemError&) noexcept = default;

  private:
    constexpr SystemError(Domain domain, unsigned long number) noexcept
        : domain_(domain)
        , number_(number) {}

    Domain domain_ = Domain::none;
    unsigned long number_ = 0;
};

/// The error of an open that another opener's share mode forbids: EBUSY; ERROR_SHARING_VIOLATION.
SystemError sharing_violation() noexcept;

/// Returns the system's message for an error in UTF-8, one line without a final full stop.
std::string describe(SystemError error);
/// The same for a Windows error number; on Linux only the number.
std::string describe_windows_error(unsigned long number);

/// A value, or the error of the call that failed to produce one.
template <class T>
class [[nodiscard]] Result {
  public:
    Result(T value)
        : content_(std::in_place_index<0>, std::move(value)) {} // implicit by design
    Result(SystemError error)
        : content_(std::in_place_index<1>, error) {} // implicit by design

    explicit operator bool() const noexcept { return content_.index() == 0; }
    const T& operator*() const { return std::get<0>(content_); }
    T& operator*() { return std::get<0>(content_); }
    const T* operator->() const { return &std::get<0>(content_); }
    T* operator->() { return &std::get<0>(content_); }

    /// Returns the error, or success if there is a value.
    SystemError error() const noexcept {
        const SystemError* error = std::get_if<1>(&content_);
        return error != nullptr ? *error : SystemError();
    }

  private:
    std::variant<T, SystemError> content_;
};

} // namespace platform
