#include <algorithm>
#include <filesystem>
#include <locale>
#include <stdexcept>

#include <gmock/gmock.h>

#include "qncore/string_trace_data.h"
#include "qncore/trace_message.h"
#include "tests/support/allocations.h"
#include "tests/support/child_process.h"
#include "tests/support/trace_capture.h"

namespace qntrace {
namespace {

using support::TraceCapture;
using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;

intTopicHdl* topic() {
    return get_trace_mgr().open_topic("Test", nullptr, static_cast<char>(0x81));
}

TEST(Trace, TheLevelsOfTheEnvironmentGovernTheGate) {
    const std::tuple<const char*, int, int> cases[] = {
        // levels, of our topic, of another
        {"", 0, 0},
        {"41", 41, 41},
        {"Test=81", 81, 0},
        {"Test=81,*=11", 81, 11},
        {"*=11,Test=0", 0, 11},
        {"Tes=81", 0, 0},
        {"Test=128,Test=-1,Test=x,Test=,nonsense", 0, 0},
        {"Test=8 1,21", 21, 21},
    };
    for (const auto& [levels, ours, others] : cases) {
        const TraceCapture capture(levels);
        EXPECT_EQ(topic()->topic->trace_level(), ours) << levels;
        EXPECT_EQ(get_system_topic_handle()->topic->trace_level(), others) << levels;
        EXPECT_EQ(is_enabled(topic(), level_note), ours >= level_note);
    }
    EXPECT_FALSE(is_enabled(nullptr, level_error));
    const TraceCapture capture("21");
    const support::EnvironmentGuard later("QNTRACE", "41"); // not read again
    EXPECT_EQ(get_trace_mgr().open_topic("New", nullptr, 0)->topic->trace_level(), 21);
}

TEST(Trace, AMessageAtTheLevelIsWrittenAndOneAboveItEvaluatesNothing) {
    const TraceCapture capture("Test=41");
    int evaluated = 0;
    const auto value = [&] { return ++evaluated; };
    QN_TRACE_NOTE(topic(), "a::b()", "value {} of {}", value(), "x");
    QN_TRACE(topic(), 42, eUserMsgNote, "a::b()", "{}", value());
    QN_TRACE_ERROR(static_cast<intTopicHdl*>(nullptr), "a::b()", "{}", value());
    EXPECT_EQ(evaluated, 1);
    EXPECT_THAT(capture.lines(), ElementsAre(EndsWith(" 41 Test a::b() value 1 of x")));
}

TEST(Trace, ALineHasItsFieldsAndStaysOneLine) {
    const TraceCapture capture("Test=81");
    QN_TRACE_WARNING(topic(), "f()", "a\nb\t{}\x7F", "\r\n\xC3\xA4");
    const std::string line = capture.text();
    EXPECT_THAT(line, EndsWith(" 21 Test f() a\\nb\\x09\\x0d\\n\xC3\xA4\\x7f\n"));
    std::string start = line.substr(0, line.find(" 21 "));
    std::ranges::replace_if(
        start, [](char c) { return c >= '0' && c <= '9'; }, '0');
    const std::string time = "0000-00-00T00:00:00.000000Z ";
    EXPECT_THAT(start, testing::StartsWith(time));
    EXPECT_EQ(start.find_first_not_of("0:", time.size()), std::string::npos); // process:thread
}

struct Grouping : std::numpunct<char> {
    std::string do_grouping() const override { return "\3"; }
};

struct Data final : qncore::RefCounted<qncore::AtomicRefCount>, qncore::StringTraceData {
    std::string_view trace_text() const override { return "data"; }
};

TEST(Trace, ValuesTakeThePlaceholdersInTurnAndReadTheSameUnderEveryLocale) {
    const std::pair<const char*, std::string> cases[] = {
        {"{}{}{}", "1234twodata"},
        {"{}, {} {} {} end", "1234, two data  end"},
        {"none", "none1234twodata"},
        {"{@a} { } {}", "{@a} { } 1234twodata"},
    };
    const TraceCapture capture("Test=81");
    const qncore::InterfacePtr<const qncore::StringTraceData, qncore::AtomicHolder> data(
        qncore::make_ref_counted<Data>());
    const std::locale before = std::locale::global(std::locale({}, new Grouping));
    for (const auto& [format, text] : cases) {
        QN_TRACE_NOTE(topic(), "f()", format, 1234, std::string("two"), data);
        EXPECT_THAT(capture.lines().back(), EndsWith(" f() " + text));
    }
    std::locale::global(before);
}

TEST(Trace, EntryAndExitAreWrittenHoweverTheFunctionEnds) {
    const TraceCapture capture("Test=81");
    const auto traced = [](bool fails) {
        QN_TRACE_FUNCTION(topic(), "f()");
        QN_TRACE_NOTE(topic(), "f()", "inside");
        if (fails) {
            throw std::runtime_error("x");
        }
    };
    traced(false);
    EXPECT_THROW(traced(true), std::runtime_error);
    EXPECT_THAT(capture.lines(), ElementsAre(EndsWith(" 81 Test f() entry"), EndsWith("inside"),
                                             EndsWith(" 81 Test f() exit"), EndsWith("entry"),
                                             EndsWith("inside"), EndsWith("exit")));
}

const std::string long_text(6000, 'x');

CHILD_PROCESS(write_trace_lines) {
    support::say("ready");
    support::wait_to_be_told();
    for (int turn = 0; turn < 300; ++turn) {
        QN_TRACE_NOTE(topic(), "f()", "<{}>", long_text);
    }
    return 0;
}

// The children read the environment with their first message, as every program does.
TEST(Trace, LinesOfSeveralProcessesStayWhole) {
    const TraceCapture capture("Test=41");
    support::ChildProcess children[]{{"write_trace_lines", {}}, {"write_trace_lines", {}}};
    std::ranges::for_each(children, [](auto& child) { child.wait_for("ready"); });
    std::ranges::for_each(children, &support::ChildProcess::tell);
    for (support::ChildProcess& child : children) {
        EXPECT_EQ(child.wait(), 0);
    }
    EXPECT_EQ(capture.lines().size(), 600U);
    EXPECT_THAT(capture.lines(), testing::Each(EndsWith(" 41 Test f() <" + long_text + ">")));
}

/// Returns 1 if the file is open from the start of the process (only Linux can show it).
CHILD_PROCESS(has_file_open) {
    std::error_code ignored;
    return static_cast<int>(std::ranges::any_of(
        std::filesystem::directory_iterator("/proc/self/fd", ignored), [&](const auto& entry) {
            return std::filesystem::read_symlink(entry, ignored) == arguments[0];
        }));
}

TEST(Trace, TheFileIsMadeByTheFirstLineKeptByTheNextAndTurnsOverWhenFull) {
    const TraceCapture capture("Test=41");
    QN_TRACE(topic(), 42, eUserMsgNote, "f()", "not written");
    EXPECT_FALSE(std::filesystem::exists(capture.file()));
    QN_TRACE_NOTE(topic(), "f()", "one");
    reload_configuration();
    QN_TRACE_NOTE(topic(), "f()", "two");
    EXPECT_THAT(capture.lines(), ElementsAre(EndsWith("one"), EndsWith("two")));
    for (const char* const last : {"three", "four", "five", "six"}) {
        const std::string full = last + std::string(5U << 20, '\n');
        support::write_file(capture.file(), full);
        QN_TRACE_NOTE(topic(), "f()", "{}", last);
        EXPECT_THAT(capture.lines(), ElementsAre(EndsWith(last)));
        EXPECT_EQ(support::read_file(capture.file() + ".1"), full);
    }
    EXPECT_EQ(support::read_file(capture.file() + ".3").substr(0, 4), "four");
    EXPECT_FALSE(std::filesystem::exists(capture.file() + ".4"));
    EXPECT_EQ(support::ChildProcess("has_file_open", {capture.file()}).wait(), 0);
    std::filesystem::remove(support::native(capture.file())); // open as it is
    reload_configuration();                                   // Windows removes it with the close
    EXPECT_FALSE(std::filesystem::exists(capture.file()));
}

TEST(Trace, NoFailedAllocationReachesTheCaller) {
    const TraceCapture capture("Test=81");
    intTopicHdl* const handle = topic();
    for (const auto which : {support::Failing::once, support::Failing::from_there_on}) {
        bool failed = true;
        for (std::size_t number = 1; failed; ++number) {
            reload_configuration();
            failed = support::with_failing_allocation(number, which, [handle] {
                QN_TRACE_FUNCTION(handle, "f()");
                QN_TRACE_NOTE(handle, "f()", "{} a text longer than any string's own room {}",
                              std::string_view(long_text), 2);
            });
        }
    }
    EXPECT_GE(capture.lines().size(), 3U);
}

TEST(Trace, AFileThatCannotBeWrittenStopsNobody) {
    const TraceCapture capture("Test=41");
    const auto written_to_stderr = [](const char* file) {
        const support::EnvironmentGuard guard("QNTRACE_FILE", file);
        testing::internal::CaptureStderr();
        reload_configuration();
        QN_TRACE_NOTE(topic(), "f()", "to standard error");
        return testing::internal::GetCapturedStderr();
    };
    EXPECT_THAT(written_to_stderr("/dev/null/trace.log"), testing::HasSubstr("to standard error"));
    if (std::filesystem::exists("/dev/full")) {
        EXPECT_EQ(written_to_stderr("/dev/full"), "");
    }
    EXPECT_THAT(capture.lines(), IsEmpty());
}

} // namespace
} // namespace qntrace
