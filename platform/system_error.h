#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <variant>

namespace platform {

/// The answer of a failed call of the operating system: whose number it is, and the number.
/// A default SystemError means success.
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

/// The refusal that an open answers when another opener's share mode forbids it.
SystemError sharing_violation() noexcept;

/// The system's own words for an error, UTF-8, one line without a final full stop or line end.
std::string describe(SystemError error);

/// A value, or the SystemError of the call that did not give one.
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

    /// The error; success when there is a value.
    SystemError error() const noexcept {
        const SystemError* error = std::get_if<1>(&content_);
        return error != nullptr ? *error : SystemError();
    }

  private:
    std::variant<T, SystemError> content_;
};

} // namespace platform
