// Makes each platform call and each allocation of first use, of a getter and of setters fail once,
// and looks at what the caller, the key files and the configuration file see of it.
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <new>

#include <openssl/crypto.h>

#include "platform/testing/testing.h"
#include "tests/ConfigurationFile/store_fixture.h"
#include "tests/support/allocations.h"
#include "tests/support/trace_capture.h"

namespace {

// OpenSSL asks `new` before it takes memory, so that its allocations count, too. This comes before
// its first allocation: later it accepts no other functions.
bool may_take() {
    void* const block = ::operator new(1, std::nothrow);
    ::operator delete(block);
    return block != nullptr;
}

void* take(std::size_t size, const char* /*file*/, int /*line*/) {
    return may_take() ? std::malloc(size) : nullptr;
}

void* take_anew(void* bytes, std::size_t size, const char* /*file*/, int /*line*/) {
    return may_take() ? std::realloc(bytes, size) : nullptr;
}

void give_back(void* bytes, const char* /*file*/, int /*line*/) {
    std::free(bytes);
}

const int openssl_counts = CRYPTO_set_mem_functions(take, take_anew, give_back);

} // namespace

namespace store_test {
namespace {

namespace fs = std::filesystem;
using vdcertificates::ConfigurationFile;
using vdcertificates::ConfigurationFileNodes;
using Access = vdcertificates::ConfigurationFileAccess;

bool set(ConfigurationFile& file, const std::string& password) {
    return file.set_webconfig_certificate_information("NEW", "p", "k", "c", password);
}

bool set_without_password(ConfigurationFile& file) {
    return set(file, "");
}

bool get(ConfigurationFile& file) {
    std::string password;
    std::string other;
    return file.get_cluster_certificate_information(other, other, other, password) &&
           password == "secret";
}

struct Scene {
    const char* name;
    bool first_use;
    bool (*run)(ConfigurationFile& file);
};

const Scene scenes[] = {
    {"first use", true, set_without_password},
    {"get", false, get},
    {"set", false, set_without_password},
    {"set with a password", false, [](ConfigurationFile& file) { return set(file, "n"); }},
};

enum class Answer { yes, no, thrown };

class FaultsTest : public StoreTest {
  protected:
    FaultsTest() {
        ConfigurationFileNodes notifiers;
        ConfigurationFileNodes devices;
        const ConfigurationFileNodes none;
        notifiers.certificates = {entry("ServerGroupCertificate", "p", "k", "c", "secret")};
        notifiers.notifiers["SRV"] = {entry("WebConfigCertificate", "p", "k", "c", "word")};
        devices.notifiers["SRV"] = {entry("SIPDevice", "p", "k", "c", "other", "t")};
        // What a read leaves that ends early, by the number of entries, and last the whole.
        for (const ConfigurationFileNodes& first :
             {ConfigurationFileNodes(), ConfigurationFileNodes{notifiers.certificates, {}},
              notifiers}) {
            replace(file, {&first, &none, &none});
            befores.push_back(configuration());
        }
        replace(file, {&notifiers, &devices, &none});
        befores.push_back(configuration());
    }

    void prepare(const Scene& scene, const std::string& before) const {
        support::remove_all(machine.root());
        fs::create_directories(machine.root());
        if (!scene.first_use) {
            support::write_file(machine.public_key_file(), public_key);
            support::write_file(machine.private_key_file(), private_key);
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
        const std::string after =
            fs::exists(machine.default_file()) ? configuration() : std::string();
        if (scene.first_use) {
            EXPECT_TRUE(answer != Answer::yes || after == allowed.back());
        } else {
            EXPECT_EQ(support::read_file(machine.public_key_file()), public_key);
            EXPECT_EQ(support::read_file(machine.private_key_file()), private_key);
            // Required: a setter goes on with what could be read, and the trace says so.
            const auto fits = [&](const std::string& text) {
                return answer == Answer::yes ? after == text : text.starts_with(after);
            };
            EXPECT_TRUE(fits(allowed.back()) ||
                        (answer != Answer::yes && after == befores.back()) ||
                        (told && std::any_of(allowed.begin(), allowed.end(), fits)))
                << after;
        }
        ConfigurationFile next;
        std::string password;
        std::string other;
        EXPECT_TRUE(set(next, "x") && next.get_webconfig_certificate_information(
                                          "NEW", other, other, other, password));
        EXPECT_EQ(password, "x");
    }

    /// Runs the scenes with each number from 1 on in steps of `stride`, as long as `fails` says
    /// that the action had so many calls that one failed.
    void fail_each(
        std::size_t stride, bool always_told,
        const std::function<bool(std::size_t number, const std::function<void()>& action)>& fails) {
        for (const Scene& scene : scenes) {
            const std::vector<std::string> allowed = outcomes(scene);
            bool failed = true;
            for (std::size_t number = 1; failed; number += stride) {
                SCOPED_TRACE(std::string(scene.name) + ", number " + std::to_string(number));
                prepare(scene, befores.back());
                std::optional<support::TraceCapture> capture;
                if (!always_told) {
                    capture.emplace("11");
                }
                Answer answer{};
                failed = fails(number, [&] { answer = run(scene); });
                check(scene, answer, !capture || !capture->text().empty(), allowed);
            }
        }
    }

    ConfigurationFile file; ///< makes the keys
    std::vector<std::string> befores;
    const std::string public_key = support::read_file(machine.public_key_file());
    const std::string private_key = support::read_file(machine.private_key_file());
};

TEST_F(FaultsTest, EachPlatformCall) {
    for (const platform::SystemError error :
         {platform::SystemError::posix(EIO), platform::SystemError::posix(EACCES),
          platform::sharing_violation()}) {
        SCOPED_TRACE(platform::describe(error));
        fail_each(1, false, [error](std::size_t number, const std::function<void()>& action) {
            platform::testing::fail_call(static_cast<int>(number), error);
            action();
            const bool failed = platform::testing::calls_made() >= static_cast<int>(number);
            platform::testing::fail_call(0, {});
            return failed;
        });
    }
}

TEST_F(FaultsTest, EachAllocation) {
    ASSERT_EQ(openssl_counts, 1);
    using support::Failing;
    for (const Failing which : {Failing::once, Failing::from_there_on}) {
        const std::size_t stride = which == Failing::once ? 1 : 3;
        SCOPED_TRACE(stride == 1 ? "one allocation" : "all allocations from there on");
        fail_each(stride, true, [which](std::size_t number, const std::function<void()>& action) {
            return support::with_failing_allocation(number, which, action);
        });
    }
}

} // namespace
} // namespace store_test
