#pragma once

#include <functional>
#include <optional>
#include <string>

#include "platform/seams.h"

// For tests only: replaces the machine that the platform layer of this process uses.
namespace platform::testing {

/// Sets a variable of this process, or removes it if there is no value. The value is UTF-8 on
/// Windows, where an empty one removes it too.
void set_environment_variable(const char* name, const std::optional<std::string>& value);

/// Replaces the place of the machine's setting: by another file on Linux, by a key of the current
/// user on Windows.
void set_machine_setting(const std::string& place);

/// Returns a place for the machine's setting that belongs to a test's own directory.
std::string machine_setting_of(const std::string& directory);

/// Writes the root directory to the place that was set; nullopt removes the place.
void store_machine_root(const std::optional<std::string>& root);

/// Appends this text to the name of every named mutex of this process.
void set_mutex_name_suffix(const std::string& suffix);

/// Sets the name that computer_name() returns.
void set_computer_name(const std::string& name);

/// Makes the next `times` calls of a kind fail with an error. If the error is success, writes are
/// one byte shorter than requested.
void fail_next(Call call, SystemError error, int times = 1);

/// Makes the call of that number fail once with an error, regardless of its kind; the next call
/// is 1. 0 makes no call fail and only restarts the count of calls_made().
void fail_call(int number, SystemError error);

/// Returns the number of calls since the last fail_call().
int calls_made();

/// Calls the hook with each path before a RemovalAnchor opens or removes it, until an empty hook is
/// set.
void before_removal(std::function<void(const std::string&)> hook);

/// Removes the lock file of a test's named mutex; a no-op on Windows.
void remove_named_mutex(const std::string& name);

} // namespace platform::testing
