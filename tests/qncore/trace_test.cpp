#include <algorithm>
#include <stdexcept>
#include <thread>

#include <gmock/gmock.h>

#include "qncore/string_trace_data.h"
#include "qncore/trace_message.h"
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
    struct Case {
        const char* levels;
        int ours;
        int others;
    };
    const Case cases[] = {
        {"", 0, 0},
        {"41", 41, 41},
        {"Test=81", 81, 0},
        {"Test=81,*=11", 81, 11},
        {"*=11,Test=0", 0, 11},
        {"Tes=81", 0, 0},
        {"Test=128,Test=-1,Test=x,Test=,nonsense", 0, 0},
        {"Test=8 1,21", 21, 21},
    };
    for (const Case& test : cases) {
        const TraceCapture capture(test.levels);
        EXPECT_EQ(topic()->topic->trace_level(), test.ours) << test.levels;
        EXPECT_EQ(get_system_topic_handle()->topic->trace_level(), test.others) << test.levels;
        EXPECT_EQ(is_enabled(topic(), level_note), test.ours >= level_note);
    }
    EXPECT_FALSE(is_enabled(nullptr, level_error));
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
    const std::vector<std::string> lines = capture.lines();
    ASSERT_EQ(lines.size(), 1U);
    const std::string end = " 21 Test f() a\\nb\\x09\\x0d\\n\xC3\xA4\\x7f";
    EXPECT_THAT(lines[0], EndsWith(end));
    std::string start = lines[0].substr(0, lines[0].size() - end.size());
    std::ranges::replace_if(
        start, [](char c) { return c >= '0' && c <= '9'; }, '0');
    const std::string time = "0000-00-00T00:00:00.000000Z ";
    EXPECT_THAT(start, testing::StartsWith(time));
    EXPECT_EQ(start.find_first_not_of("0:", time.size()), std::string::npos); // process:thread
}

TEST(Trace, ValuesTakeThePlaceholdersInTurn) {
    const std::pair<const char*, std::string> cases[] = {
        {"{}{}{}", "1two3"},   {"{} {} {} end", "1 two 3 end"},
        {"{}, {}", "1, two3"}, {"{} {} {} {}", "1 two 3 "},
        {"none", "none1two3"}, {"{@a} { } {}", "{@a} { } 1two3"},
    };
    const TraceCapture capture("Test=81");
    for (const auto& [format, text] : cases) {
        QN_TRACE_NOTE(topic(), "f()", format, 1, std::string("two"), 3U);
        EXPECT_THAT(capture.lines().back(), EndsWith(" f() " + text));
    }
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

TEST(Trace, ConcurrentMessagesNeverInterleave) {
    const TraceCapture capture("Test=41");
    std::vector<std::thread> threads;
    threads.reserve(4);
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([] {
            const std::string text(500, 'x');
            for (int turn = 0; turn < 100; ++turn) {
                QN_TRACE_NOTE(topic(), "f()", "<{}>", text);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    const auto lines = capture.lines();
    EXPECT_EQ(lines.size(), 400U);
    EXPECT_THAT(lines, testing::Each(EndsWith("<" + std::string(500, 'x') + ">")));
}

TEST(Trace, AFileThatCannotBeOpenedStopsNobody) {
    const TraceCapture capture("Test=41");
    const support::EnvironmentGuard nowhere("QNTRACE_FILE", "/dev/null/trace.log");
    testing::internal::CaptureStderr();
    reload_configuration();
    QN_TRACE_NOTE(topic(), "f()", "to standard error");
    EXPECT_THAT(testing::internal::GetCapturedStderr(), testing::HasSubstr("to standard error"));
    EXPECT_THAT(capture.lines(), IsEmpty());
}

TEST(Trace, TraceDataIsAskedForOnlyWhenWritten) {
    class Data final : public qncore::RefCounted<qncore::AtomicRefCount>,
                       public qncore::StringTraceData {
      public:
        std::string_view trace_text() const override {
            ++asked;
            return "shown";
        }
        mutable int asked = 0;
    };
    const auto data = qncore::make_ref_counted<Data>();
    const qncore::InterfacePtr<const qncore::StringTraceData, qncore::AtomicHolder> view(data);
    const TraceCapture capture("Test=21");
    QN_TRACE_NOTE(topic(), "f()", "{}", view);
    EXPECT_EQ(data->asked, 0);
    QN_TRACE_WARNING(topic(), "f()", "{}", view);
    EXPECT_THAT(capture.lines(), ElementsAre(EndsWith(" f() shown")));
}

} // namespace
} // namespace qntrace
