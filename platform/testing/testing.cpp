#include "platform/testing/testing.h"

#include <utility>

namespace platform::testing {

void set_machine_setting(const std::string& place) {
    seams().machine_setting = place;
}

void set_mutex_name_suffix(const std::string& suffix) {
    seams().mutex_name_suffix = suffix;
}

void set_computer_name(const std::string& name) {
    seams().computer_name = name;
}

void fail_next(Call call, SystemError error, int times) {
    seams().counts_calls = true;
    seams().failure = error;
    seams().failures_left = times;
    seams().failing_call = call;
    seams().failing_number = 0;
}

void fail_call(int number, SystemError error) {
    fail_next(Call::none, error, 0);
    seams().calls = 0;
    seams().failing_number = number;
}

int calls_made() {
    return seams().calls;
}

void before_removal(std::function<void(const std::string&)> hook) {
    seams().before_removal = std::move(hook);
}

} // namespace platform::testing
