#pragma once

#include <functional>
#include <string>

#include <gmock/gmock.h>

#include "qncore/error_exception.h"

namespace qnfile {

/// The record that an action throws; fails the test when it throws none.
inline qncore::ErrorInfoPtr failure_of(const std::function<void()>& action) {
    try {
        action();
    } catch (const qncore::ErrorException& exception) {
        return exception.info();
    }
    ADD_FAILURE() << "nothing was thrown";
    return {};
}

/// All that a record has to say. The cause, where there is one, is the system's, at the same place.
struct ExpectedFailure {
    const char* code;
    std::string message;
    const char* function;
    bool has_cause = true;
};

inline void expect_failure(const qncore::ErrorInfoPtr& info, const ExpectedFailure& expected) {
    ASSERT_TRUE(info);
    EXPECT_EQ(info->code().path(), expected.code);
    EXPECT_EQ(info->text(), expected.message);
    EXPECT_EQ(info->location().function.view(), expected.function);
    ASSERT_EQ(static_cast<bool>(info->nested()), expected.has_cause);
    if (expected.has_cause) {
        EXPECT_EQ(info->nested()->location().function.view(), expected.function);
        EXPECT_THAT(std::string(info->nested()->code().path()),
                    ::testing::AnyOf("error.qncore.errno", "error.qncore.windows"));
    }
}

} // namespace qnfile
