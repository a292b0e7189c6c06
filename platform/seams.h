#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <string>

#include "platform/system_error.h"

// Values by which a test replaces the machine. The library only reads them; the functions that set
// them are in platform/testing, which only tests link.
namespace platform {

/// The calls that a test can make fail.
enum class Call : std::uint8_t {
    none,
    open,
    read,
    write,
    seek,
    size,
    set_end,
    flush,
    existence,
    access,
    create_directory,
    is_directory,
    set_mode, ///< of a key file
    open_directory,
    read_directory,
    close_directory,
    follow_link, ///< on Linux: the status of a symbolic link's target
    create_mutex,
    lock_mutex,
    unlock_mutex,
    computer_name,
    machine_setting,
    start_name_service,
    host_name,
    copy,
    set_times,
    remove_file,
    remove_link, ///< also for other files than links, since Wine cannot remove links
    remove_linked_directory,
    current_directory,
    application_path,
    path_of_file, ///< Windows: the path has as many units as the capacity, so it does not fit
};

struct Seams {
    std::string machine_setting;   ///< replaces the place of the machine's setting if not empty
    std::string mutex_name_suffix; ///< appended to every mutex name
    std::string computer_name;     ///< replaces the computer's name if not empty
    std::atomic<Call> failing_call{Call::none}; ///< fails by its kind,
    std::atomic<int> failures_left{0};          ///< that many times
    std::atomic<int> failing_number{0};         ///< fails by its number, whatever its kind
    std::atomic<int> calls{0};                  ///< calls since that number was set
    SystemError failure; ///< the failing calls' error; success makes a write one byte shorter
    /// Called with each path before a RemovalAnchor opens or removes it.
    std::function<void(const std::string&)> before_removal;
};

Seams& seams() noexcept;

/// Counts one call of the platform layer. Returns true if a test makes this call fail.
bool take_failure(Call call) noexcept;

} // namespace platform

/// Counts a call of that kind. If a test makes it fail, the calling function returns the failure.
#define PLATFORM_SEAM(call)                                                                        \
    do {                                                                                           \
        if (::platform::take_failure(::platform::Call::call)) {                                    \
            return ::platform::seams().failure;                                                    \
        }                                                                                          \
    } while (false)
