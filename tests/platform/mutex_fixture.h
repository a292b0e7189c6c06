#pragma once

#include <gmock/gmock.h>

#include "platform/named_mutex.h"
#include "platform/system_error.h"
#include "platform/testing/testing.h"
#include "tests/support/temporary_directory.h"

namespace platform {

inline constexpr const char* name = "Global\\{orva-test}";

/// Gives the mutex of each test a name of its own, and removes it.
class MutexTest : public ::testing::Test {
  protected:
    MutexTest() { testing::set_mutex_name_suffix(suffix_); }
    void TearDown() override {
        testing::remove_named_mutex(name);
        testing::set_mutex_name_suffix("");
    }

    support::TemporaryDirectory directory_;
    std::string suffix_ = directory_.path().filename().string();
};

} // namespace platform
