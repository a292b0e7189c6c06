#include "platform/machine.h"
#include "platform/path.h"
#include "platform/testing/testing.h"
#include "tests/tools/program_fixture.h"

namespace tools_test {
namespace {

using testing::HasSubstr;

class Where : public ProgramTest {
  protected:
    /// The lines for a file and for the directory of the keys.
    static std::string lines(const std::string& file, const std::string& file_rule,
                             const std::string& prefix, const std::string& key_rule) {
        return "file: " + file + "\nfile chosen by: " + file_rule + "\npublic key: " + prefix +
               "_PublicKey.bin\nprivate key: " + prefix +
               "_PrivateKey.bin\nkeys chosen by: " + key_rule + "\n";
    }
};

TEST_F(Where, TheProfileIsTheLastResort) {
    EXPECT_EQ(done({"where"}), lines(file() + " (not there yet)", "the directory of the keys",
                                     in_root(""), "the user's profile"));
    done(set_words("cluster", "/c"));
    EXPECT_EQ(done({"where"}),
              lines(file(), "the directory of the keys", in_root(""), "the user's profile"));
}

TEST_F(Where, TheVariableMovesTheFileAlone) {
    const std::string moved = machine.file("moved/x.xml");
    environment["ORVA_Certificates"] = moved;
    EXPECT_EQ(done({"where"}), lines(moved, "the environment variable ORVA_Certificates",
                                     in_root(""), "the user's profile"));
    EXPECT_TRUE(std::filesystem::exists(moved)) << "the probe leaves an empty file";
}

TEST_F(Where, TheMachinesSettingMovesAll) {
    const std::string directory = machine.file("all");
    std::filesystem::create_directory(directory);
    platform::testing::store_machine_root(directory + platform::preferred_separator);
    const std::string prefix = directory + in_root("").substr(root().size());
    EXPECT_EQ(done({"where"}),
              lines(prefix + "_ORVA_Certificates.xml", "the directory of the keys", prefix,
                    "the machine's setting in " + platform::machine_setting_source()));
}

TEST_F(Where, APlaceThatCannotBeWrittenIsExplained) {
    support::write_file(machine.file("plain"), "");
    platform::testing::store_machine_root(machine.file("plain"));
    std::filesystem::create_directory(machine.file("directory.xml"));
    environment["ORVA_Certificates"] = machine.file("directory.xml");
    const std::string text = done({"where"});
    EXPECT_THAT(text, HasSubstr("file chosen by: the directory of the keys\n"));
    EXPECT_THAT(text, HasSubstr("keys chosen by: the user's profile\n"));
    EXPECT_THAT(
        text, HasSubstr("warning: Current user has NO access to: " + machine.file("directory.xml") +
                        ", as specified by the environment variable: "
                        "ORVA_Certificates.\n"));
    EXPECT_THAT(text, HasSubstr("warning: Current user has NO access to: " + machine.file("plain") +
                                ", as specified under the "));
    const auto result = run(set_words("cluster", "/c"));
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.errors, HasSubstr("vdcertificates: warning: Current user has NO access"));
}

} // namespace
} // namespace tools_test
