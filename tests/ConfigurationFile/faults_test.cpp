// Makes each platform call and each allocation of the first use, of a getter and of a setter fail,
// and checks what the caller gets and what the key files and the configuration file hold then.
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

// Makes OpenSSL call `new` before each allocation, so that these count, too. OpenSSL accepts other
// functions only before its first allocation.
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

bool set(ConfigurationFile& file, const char* password) {
    return file.set_webconfig_certificate_information("NEW", "p", "k", "c", password);
}

struct Scene {
    const char* name;
    bool first_use;
    bool (*run)(ConfigurationFile& file);
};

const Scene scenes[] = {
    {"first use", true, [](ConfigurationFile& file) { return set(file, ""); }},
    {"get", false, has_secret},
    {"set", false, [](ConfigurationFile& file) { return set(file, "new"); }},
};

enum class Answer { yes, no, thrown };

class FaultsTest : public StoreTest {
  protected:
    FaultsTest() {
        EXPECT_TRUE(file.set_cluster_certificate_information("p", "k", "c", "secret"));
        EXPECT_TRUE(file.set_devices_certificate_information("SRV", "p", "k", "c", "other", "t"));
        before = configuration();
    }

    void prepare(const Scene& scene) const {
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
            ConfigurationFile store;
            return scene.run(store) ? Answer::yes : Answer::no;
        } catch (const std::exception&) {
            return Answer::thrown;
        }
    }

    /// Checks the files after a fault that the trace reported or not. Without a fault the file
    /// would be `right`.
    void check(const Scene& scene, Answer answer, bool reported, const std::string& right) const {
        const std::string after =
            fs::exists(machine.default_file()) ? configuration() : std::string();
        if (!scene.first_use) {
            EXPECT_EQ(support::read_file(machine.public_key_file()), public_key);
            EXPECT_EQ(support::read_file(machine.private_key_file()), private_key);
        }
        if (answer == Answer::yes) {
            // Required: a setter goes on with what could be read, and the trace reports it.
            EXPECT_TRUE(after == right || (reported && after.find("\"NEW\"") != std::string::npos))
                << after;
        } else {
            EXPECT_TRUE(after == before || right.starts_with(after)) << after;
        }
        ConfigurationFile next;
        EXPECT_TRUE(set(next, ""));
    }

    /// Runs an action whose call of that number fails. Returns false if it made fewer calls.
    using Fail = std::function<bool(std::size_t number, const std::function<void()>& action)>;

    /// Runs the scenes with each number from 1 on in steps of `stride`.
    void fail_each(std::size_t stride, bool traced, const Fail& fail) {
        for (const Scene& scene : scenes) {
            prepare(scene);
            EXPECT_EQ(run(scene), Answer::yes);
            const std::string right = configuration();
            bool failed = true;
            for (std::size_t number = 1; failed; number += stride) {
                SCOPED_TRACE(std::string(scene.name) + ", number " + std::to_string(number));
                prepare(scene);
                std::optional<support::TraceCapture> capture;
                if (traced) {
                    capture.emplace("11");
                }
                Answer answer{};
                failed = fail(number, [&] { answer = run(scene); });
                check(scene, answer, !traced || !capture->text().empty(), right);
            }
        }
    }

    ConfigurationFile file; ///< makes the keys
    std::string before;
    const std::string public_key = support::read_file(machine.public_key_file());
    const std::string private_key = support::read_file(machine.private_key_file());
};

TEST_F(FaultsTest, EachPlatformCall) {
    for (const platform::SystemError error :
         {platform::SystemError::posix(EACCES), platform::sharing_violation()}) {
        SCOPED_TRACE(platform::describe(error));
        fail_each(1, true, [error](std::size_t number, const std::function<void()>& action) {
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
    for (const auto& [which, stride] :
         {std::pair(Failing::once, 1U), {Failing::from_there_on, 5U}}) {
        SCOPED_TRACE(which == Failing::once ? "one" : "all from there on");
        fail_each(stride, false,
                  [which = which](std::size_t number, const std::function<void()>& action) {
                      return support::with_failing_allocation(number, which, action);
                  });
    }
}

} // namespace
} // namespace store_test
