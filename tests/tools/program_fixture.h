#pragma once

#include <deque>

#include <gmock/gmock.h>

#include "tests/support/child_process.h"
#include "tests/support/environment_guard.h"
#include "tests/support/temporary_directory.h"

namespace tools_test {

using Words = std::vector<std::string>;

/// The program that is tested, in the folder of the tests.
std::string program_file();

/// The program on a machine of the test's own, which has a profile, keys and no setting.
class ProgramTest : public testing::Test {
  public:
    ProgramTest();
    ~ProgramTest() override;

  protected:
    support::CommandResult run(const Words& arguments, const std::string& input = "");
    /// Stores or fetches and expects that it works; gives what was printed.
    std::string done(const Words& arguments, const std::string& input = "");

    /// Expects the status, nothing on standard output, and the text on standard error.
    void refused(int status, const Words& arguments, const std::string& text,
                 const std::string& input = "");
    void remove_keys();

    /// The words of a `set` of all that a role needs, with paths that begin with `prefix`.
    static Words set_words(const std::string& role, const std::string& prefix);

    /// A file with these entries in two of its sections.
    static std::string document(const std::string& notifiers, const std::string& devices = "") {
        return "<ORVACertificates><Notifiers>" + notifiers + "</Notifiers><SIPDevices>" + devices +
               "</SIPDevices></ORVACertificates>";
    }

    /// Where the keys lie, and the file unless a variable moves it.
    std::string root() const { return machine.file("home/Orvane Systems/Certificates"); }
    std::string in_root(const std::string& suffix) const;
    std::string file() const { return in_root("_ORVA_Certificates.xml"); }
    std::string previous() const { return file() + ".previous"; }
    static constexpr const char* key_files[] = {"_PublicKey.bin", "_PrivateKey.bin"};

    support::TemporaryDirectory machine;

  private:
    void place_keys();

    std::deque<support::EnvironmentGuard> environment_; ///< restores all variables that tests set
};

/// `words` with more at the end.
Words operator+(Words words, const Words& more);

} // namespace tools_test
