#pragma once

#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "qncore/error_exception.h"

namespace support {

/// Returns the record of the ErrorException that the action throws; null if it throws none.
template <class Action>
qncore::ErrorInfoPtr error_of(const Action& action) {
    try {
        action();
    } catch (const qncore::ErrorException& exception) {
        EXPECT_STREQ(exception.what(), exception.info()->text().c_str());
        return exception.info();
    }
    return {};
}

/// Returns what the action throws: code, function and message, separated by blanks; empty if it
/// throws nothing.
template <class Action>
std::string failure_of(const Action& action) {
    const qncore::ErrorInfoPtr error = error_of(action);
    return error ? std::string(error->code().path()) + " " +
                       std::string(error->location().function.view()) + " " + error->text()
                 : "";
}

/// One row of a table of failures.
struct FailureCase {
    using Slot = qncore::ErrorInfoPtr*;

    /// The action takes an error slot, and is called with one and with null, or nothing.
    template <class Action>
    FailureCase(Action does, std::string expected, std::string nested = "")
        : has_slot(std::is_invocable_v<Action, Slot>)
        , report(std::move(expected))
        , cause(std::move(nested)) {
        if constexpr (std::is_invocable_v<Action, Slot>) {
            action = std::move(does);
        } else {
            action = [does](Slot) { does(); };
        }
    }

    std::function<void(Slot)> action;
    bool has_slot;
    std::string report; ///< "code|function", or "code|function|text" where the text matters
    /// Code of the nested record, "system" or "errno 2" or "windows 2" for the system's; empty:
    /// none.
    std::string cause;
};

/// Compares a record with what a row expects; a cause of the system has the same location.
inline void check_failure(const qncore::ErrorInfoPtr& info, const FailureCase& expected) {
    ASSERT_TRUE(info) << "nothing was reported";
    const std::string function(info->location().function.view());
    const std::string place = std::string(info->code().path()) + "|" + function;
    EXPECT_EQ(expected.report == place ? place : place + "|" + info->text(), expected.report);
    const qncore::ErrorInfoPtr& nested = info->nested();
    std::string cause = nested ? std::string(nested->code().path()) : "";
    if (cause == "error.qncore.errno" || cause == "error.qncore.windows") {
        EXPECT_EQ(nested->location().function.view(), function);
        const std::string number =
            cause.substr(cause.rfind('.') + 1) + " " + *nested->params().find("number");
        cause = expected.cause == cause || expected.cause == number ? expected.cause : "system";
    }
    EXPECT_EQ(cause, expected.cause) << info->chain_text();
}

/// Runs each row; an action with a slot leaves the same record there that it throws without one.
inline void check_failures(const std::vector<FailureCase>& cases) {
    for (const FailureCase& row : cases) {
        SCOPED_TRACE(row.report);
        check_failure(error_of([&] { row.action(nullptr); }), row);
        if (row.has_slot) {
            qncore::ErrorInfoPtr slot;
            EXPECT_FALSE(error_of([&] { row.action(&slot); })) << "thrown although there is a slot";
            check_failure(slot, row);
        }
    }
}

} // namespace support
