#pragma once

#include <functional>
#include <optional>
#include <string>

#include "platform/seams.h"

// For tests only: makes the platform layer of this process take another machine's place.
namespace platform::testing {

/// Linux: another file in place of the machine's configuration file. Windows: another key, of the
/// current user.
void set_machine_setting(const std::string& place);

/// A place for the setting of the machine that lies in a directory of a test's own.
std::string machine_setting_of(const std::string& directory);

/// Writes the root directory into the place that was set; with nothing removes the place.
void store_machine_root(const std::optional<std::string>& root);

/// Every named mutex of this process gets this text behind its name.
void set_mutex_name_suffix(const std::string& suffix);

/// What computer_name() answers.
void set_computer_name(const std::string& name);

/// The next `times` calls of that kind fail with the error; with success in place of an error,
/// writes do one byte less than asked.
void fail_next(Call call, SystemError error, int times = 1);

/// The call of that number from now on, the next being 1, fails once with the error, whatever its
/// kind. 0 lets no call fail, and only starts the count of calls_made() anew.
void fail_call(int number, SystemError error);

/// How many calls have been made since fail_call().
int calls_made();

/// Calls the hook with each path that a RemovalAnchor is about to open or to remove; an empty one
/// ends that.
void before_removal(std::function<void(const std::string&)> hook);

/// Removes the system's trace of a named mutex that tests made.
void remove_named_mutex(const std::string& name);

} // namespace platform::testing
