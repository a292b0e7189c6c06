#include "tests/tools/program_fixture.h"

namespace tools_test {
namespace {

using testing::HasSubstr;
using testing::Not;

class Passwords : public ProgramTest {
  protected:
    /// What was stored, as JSON text shows it.
    std::string stored() {
        const std::string text = done({"get", "cluster", "--format=json", "--show-password"});
        const std::string key = "\"password\": ";
        const std::size_t start = text.find(key) + key.size();
        return text.substr(start, text.find('\n', start) - start);
    }
};

TEST_F(Passwords, OneLineEndIsDropped) {
    struct Case {
        std::string given;
        std::string json;
    };
    const std::vector<Case> cases{
        {"geheim", "\"geheim\""},
        {"geheim\n", "\"geheim\""},
        {"geheim\r\n", "\"geheim\""},
        {"geheim\n\n", "\"geheim\\n\""},
        {"geheim\r", "\"geheim\\r\""},
        {" a \t\xC3\xA4<&>\" ", "\" a \\t\xC3\xA4<&>\\\" \""},
        {"", "\"\""},
        {"\n", "\"\""},
        {std::string(245, 'x') + "\r\n", "\"" + std::string(245, 'x') + "\""},
    };
    const Words words = set_words("cluster", "/c");
    const std::string password_file = machine.file("password");
    for (const Case& password : cases) {
        done(words + Words{"--password-stdin"}, password.given);
        EXPECT_EQ(stored(), password.json) << testing::PrintToString(password.given);
        support::write_file(password_file, password.given);
        done(words + Words{"--password-file", password_file});
        EXPECT_EQ(stored(), password.json) << testing::PrintToString(password.given);
    }
}

TEST_F(Passwords, AreNowhereInClear) {
    const Words words = set_words("cluster", "/c") + Words{"--password-stdin"};
    environment["QNTRACE"] = "81";
    environment["QNTRACE_FILE"] = machine.file("trace.log");
    std::string printed = done(words, "geheim-1");
    for (const Words& command : {Words{"get", "cluster"}, Words{"get", "cluster", "--format=json"},
                                 Words{"list"}, Words{"list", "--format=json"}, Words{"where"}}) {
        printed += done(command);
    }
    printed += run({"check"}).output;
    EXPECT_THAT(printed, Not(HasSubstr("geheim")));
    for (const auto& entry : std::filesystem::recursive_directory_iterator(machine.path())) {
        if (entry.is_regular_file()) {
            EXPECT_THAT(support::read_file(entry.path().string()), Not(HasSubstr("geheim")))
                << entry.path();
        }
    }
}

TEST_F(Passwords, StandardInputIsOnlyReadWhenAskedFor) {
    done(set_words("cluster", "/c"), "not a password");
    EXPECT_EQ(stored(), "\"\"");
}

} // namespace
} // namespace tools_test
