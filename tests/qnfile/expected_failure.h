#pragma once

#include <functional>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "qncore/error_exception.h"

namespace qnfile {

/// The record that an action throws, or hands to the slot that it is given; fails the test when
/// there is none.
inline qncore::ErrorInfoPtr failure_of(
    const std::function<void()>& action,
    const std::function<qncore::ErrorInfoPtr()>& otherwise = [] { return nullptr; }) {
    qncore::ErrorInfoPtr info;
    try {
        action();
        info = otherwise();
    } catch (const qncore::ErrorException& exception) {
        info = exception.info();
    }
    EXPECT_TRUE(info) << "nothing was reported";
    return info;
}

/// What lies beneath a report: the system and its number, as "errno 2" or "windows 2".
inline std::string cause_of(const std::function<void()>& action) {
    const qncore::ErrorInfoPtr cause = failure_of(action)->nested();
    return std::string(cause->code().path()).substr(std::string("error.qncore.").size()) + " " +
           *cause->params().find("number");
}

/// An action and what it has to report: code, function and text with "|" between them. The cause,
/// where there is one, is the system's, told at the same place.
struct FailureCase {
    std::function<void(qncore::ErrorInfoPtr*)> action;
    std::string report;
    bool has_cause = true;
    bool throws = true; ///< without a slot
};

inline void check_failure(const qncore::ErrorInfoPtr& info, const std::string& report,
                          bool has_cause = true) {
    ASSERT_TRUE(info);
    const std::string function(info->location().function.view());
    EXPECT_EQ(std::string(info->code().path()) + "|" + function + "|" + info->text(), report);
    ASSERT_EQ(static_cast<bool>(info->nested()), has_cause) << report;
    if (has_cause) {
        EXPECT_EQ(info->nested()->location().function.view(), function);
        EXPECT_THAT(std::string(info->nested()->code().path()),
                    ::testing::AnyOf("error.qncore.errno", "error.qncore.windows"));
    }
}

/// Each case with a slot and without one.
inline void check_failures(const std::vector<FailureCase>& cases) {
    for (const FailureCase& c : cases) {
        qncore::ErrorInfoPtr slot;
        check_failure(failure_of([&] { c.action(&slot); }, [&] { return slot; }), c.report,
                      c.has_cause);
        if (c.throws) {
            check_failure(failure_of([&] { c.action(nullptr); }), c.report, c.has_cause);
        }
    }
}

} // namespace qnfile
