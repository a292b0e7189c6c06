// Makes each platform call and each allocation of first use, of a getter and of setters fail once,
// and looks at what the caller, the key files and the configuration file see of it.
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <new>

#include <openssl/crypto.h>

#include "platform/testing/testing.h"
#include "tests/ConfigurationFile/store_fixture.h"
#include "tests/support/allocations.h"
#include "tests/support/trace_capture.h"

namespace {

// OpenSSL takes its memory by `new`, so that its allocations count, too; a block begins with its
// size. This comes before its first allocation: later it takes no other functions.
constexpr std::size_t header = 16;

void* take(std::size_t size, const char* /*file*/, int /*line*/) {
    void* const block = ::operator new(size + header, std::nothrow);
    if (block == nullptr) {
        return nullptr;
    }
    std::memcpy(block, &size, sizeof size);
    return static_cast<char*>(block) + header;
}

void give_back(void* bytes, const char* /*file*/, int /*line*/) {
    ::operator delete(bytes != nullptr ? static_cast<char*>(bytes) - header : nullptr);
}

void* take_anew(void* bytes, std::size_t size, const char* file, int line) {
    void* const other = take(size, file, line);
    if (bytes != nullptr && other != nullptr) {
        std::size_t old_size = 0;
        std::memcpy(&old_size, static_cast<char*>(bytes) - header, sizeof old_size);
        std::memcpy(other, bytes, std::min(size, old_size));
        give_back(bytes, file, line);
    }
    return other;
}

const int openssl_counts = CRYPTO_set_mem_functions(take, take_anew, give_back);

} // namespace

namespace store_test {
namespace {

namespace fs = std::filesystem;
using vdcertificates::ConfigurationFile;
using vdcertificates::ConfigurationFileNodes;
using Access = vdcertificates::ConfigurationFileAccess;

bool get(ConfigurationFile& file) {
    std::string password;
    std::string other;
    return file.get_cluster_certificate_information(other, other, other, password) &&
           password == "secret";
}

template <char Password>
bool set(ConfigurationFile& file) {
    return file.set_webconfig_certificate_information(
        "NEW", "p", "k", "c", Password != 0 ? std::string(1, Password) : "");
}

struct Scene {
    const char* name;
    bool first_use;
    bool (*run)(ConfigurationFile& file);
};

const Scene scenes[] = {
    {"first use", true, set<'\0'>},
    {"get", false, get},
    {"set", false, set<'\0'>},
    {"set with a password", false, set<'n'>},
};

/// The files of a machine.
struct Files {
    std::string public_key, private_key, configuration;
};

enum class Answer { yes, no, thrown };

class FaultsTest : public StoreTest {
  protected:
    FaultsTest() {
        ConfigurationFile file;
        ConfigurationFileNodes notifiers;
        ConfigurationFileNodes devices;
        notifiers.certificates = {entry("ServerGroupCertificate", "p", "k", "c", "secret")};
        notifiers.notifiers["SRV"] = {entry("WebConfigCertificate", "p", "k", "c", "word")};
        devices.notifiers["SRV"] = {entry("SIPDevice", "p", "k", "c", "other", "t")};
        // What a read leaves that ends early, by the number of entries, and last the whole.
        for (const ConfigurationFileNodes& first :
             {ConfigurationFileNodes(), ConfigurationFileNodes{notifiers.certificates, {}},
              notifiers}) {
            Access::replace(file, first, {}, {});
            befores.push_back(configuration());
        }
        Access::replace(file, notifiers, devices, {});
        befores.push_back(configuration());
        keys = files();
    }

    Files files() const {
        const auto content = [](const std::string& name) {
            return fs::exists(name) ? support::read_file(name) : "";
        };
        return {content(machine.public_key_file()), content(machine.private_key_file()),
                content(machine.default_file())};
    }

    void prepare(const Scene& scene, const std::string& before) const {
        support::remove_all(machine.root());
        fs::create_directories(machine.root());
        if (!scene.first_use) {
            support::write_file(machine.public_key_file(), keys.public_key);
            support::write_file(machine.private_key_file(), keys.private_key);
            support::write_file(machine.default_file(), before);
        }
    }

    static Answer run(const Scene& scene) {
        try {
            ConfigurationFile file;
            return scene.run(file) ? Answer::yes : Answer::no;
        } catch (const std::exception&) {
            return Answer::thrown;
        }
    }

    /// The files that a scene may leave: from each early end of its reads, and last the right one.
    std::vector<std::string> outcomes(const Scene& scene) const {
        std::vector<std::string> texts;
        for (const std::string& before : befores) {
            prepare(scene, before);
            EXPECT_EQ(run(scene),
                      scene.run == get && &before < &befores[1] ? Answer::no : Answer::yes);
            texts.push_back(configuration());
        }
        return texts;
    }

    /// Looks at the files after a fault. `told` says that the trace has a word about it.
    void check(const Scene& scene, Answer answer, bool told,
               const std::vector<std::string>& allowed) const {
        const Files after = files();
        if (scene.first_use) {
            EXPECT_TRUE(answer != Answer::yes || after.configuration == allowed.back());
        } else {
            EXPECT_EQ(after.public_key, keys.public_key);
            EXPECT_EQ(after.private_key, keys.private_key);
            // Required: a setter goes on with what could be read, and the trace says so.
            const auto fits = [&](const std::string& text) {
                return answer == Answer::yes ? after.configuration == text
                                             : text.starts_with(after.configuration);
            };
            EXPECT_TRUE(fits(allowed.back()) ||
                        (answer != Answer::yes && after.configuration == befores.back()) ||
                        (told && std::any_of(allowed.begin(), allowed.end(), fits)))
                << after.configuration;
        }
        ConfigurationFile next;
        EXPECT_TRUE(set<'x'>(next));
        EXPECT_TRUE(file_has(next, "x"));
    }

    static bool file_has(ConfigurationFile& file, const std::string& expected) {
        std::string password;
        std::string other;
        return file.get_webconfig_certificate_information("NEW", other, other, other, password) &&
               password == expected;
    }

    std::vector<std::string> befores;
    Files keys;
};

TEST_F(FaultsTest, EachPlatformCall) {
    const platform::SystemError errors[] = {platform::SystemError::posix(EIO),
                                            platform::SystemError::posix(EACCES),
                                            platform::sharing_violation()};
    for (const Scene& scene : scenes) {
        const std::vector<std::string> allowed = outcomes(scene);
        for (const platform::SystemError error : errors) {
            int number = 0;
            int made = 0;
            do {
                ++number;
                SCOPED_TRACE(std::string(scene.name) + ", call " + std::to_string(number) + ", " +
                             platform::describe(error));
                prepare(scene, befores.back());
                const support::TraceCapture capture("11");
                platform::testing::fail_call(number, error);
                const Answer answer = run(scene);
                made = platform::testing::calls_made();
                platform::testing::fail_call(0, {});
                check(scene, answer, !capture.text().empty(), allowed);
            } while (made >= number);
        }
    }
}

TEST_F(FaultsTest, EachAllocation) {
    ASSERT_EQ(openssl_counts, 1);
    for (const Scene& scene : scenes) {
        const std::vector<std::string> allowed = outcomes(scene);
        for (const auto& [which, stride] : {std::pair(support::Failing::once, 1U),
                                            std::pair(support::Failing::from_there_on, 3U)}) {
            bool failed = true;
            for (std::size_t number = 1; failed; number += stride) {
                SCOPED_TRACE(std::string(scene.name) + ", allocation " + std::to_string(number) +
                             (which == support::Failing::once ? "" : " and all later ones"));
                prepare(scene, befores.back());
                Answer answer{};
                failed =
                    support::with_failing_allocation(number, which, [&] { answer = run(scene); });
                check(scene, answer, true, allowed);
            }
        }
    }
}

} // namespace
} // namespace store_test
