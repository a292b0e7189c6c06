#pragma once

#include <gmock/gmock.h>

#include "platform/named_mutex.h"
#include "platform/system_error.h"
#include "platform/testing/testing.h"
#include "tests/support/temporary_directory.h"

/// Gives the mutex of each test a name of its own, and removes it.
class MutexTest : public ::testing::Test {
  protected:
    static constexpr const char* mutex_name = "Global\\{orva-test}";

    MutexTest() { platform::testing::set_mutex_name_suffix(suffix_); }
    void TearDown() override {
        platform::testing::remove_named_mutex(mutex_name);
        platform::testing::set_mutex_name_suffix("");
    }

    support::TemporaryDirectory directory_;
    std::string suffix_ = directory_.path().filename().string();
};
