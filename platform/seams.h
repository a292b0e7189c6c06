#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <string>

#include "platform/system_error.h"

// What the platform layer asks where a test may stand in for the machine. The library only reads
// these values; the functions that set them are in platform/testing and only tests link those.
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
    remove_link, ///< of any directory: Wine has no links that could be removed
    remove_linked_directory,
    current_directory,
    application_path,
    path_of_file, ///< on Windows: the path has as many units as may be, and does not fit
};

struct Seams {
    std::string machine_setting;   ///< stands for the machine's place of the setting when not empty
    std::string mutex_name_suffix; ///< appended to every mutex name
    std::string computer_name;     ///< stands for the computer's name when not empty
    std::atomic<Call> failing_call{Call::none}; ///< fails by its kind,
    std::atomic<int> failures_left{0};          ///< that many times
    std::atomic<int> failing_number{0};         ///< fails by its number, whatever its kind
    std::atomic<int> calls{0};                  ///< calls since that number was set
    SystemError failure; ///< what the failing calls answer; success: a write does one byte less
    /// Called with each path that a RemovalAnchor is about to open or to remove.
    std::function<void(const std::string&)> before_removal;
};

Seams& seams() noexcept;

/// Counts one call of the platform layer. True if a test has it fail.
bool take_failure(Call call) noexcept;

} // namespace platform
