// Programs from their start to their end, in turn, on one core: vdcertificates against
// `openssl version`, and the shared library's load and first `get` against a bare load of
// libcrypto. Prints medians of microseconds, and the ratios of medians and of minima.

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sched.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

constexpr int rounds = 400;
constexpr const char* machine_setting = "/etc/orvane-systems/certificates.conf";

/// A user's profile of the benchmark's own, in a directory that goes at the end.
class Profile {
  public:
    Profile()
        : root_(fs::temp_directory_path() / ("orva-bench-start-" + std::to_string(::getpid()))) {
        fs::create_directories(root_);
        ::setenv("USERPROFILE", root_.c_str(), 1);
        ::unsetenv("ORVA_Certificates");
    }
    Profile(const Profile&) = delete;
    Profile& operator=(const Profile&) = delete;
    ~Profile() {
        std::error_code ignored;
        fs::remove_all(root_, ignored);
    }

  private:
    fs::path root_;
};

/// A command, and its microseconds of each round.
struct Command {
    const char* name;
    std::vector<std::string> words;
    std::vector<double> times = {};

    /// True if it ended with status 0.
    bool run() {
        std::vector<char*> arguments;
        for (std::string& word : words) {
            arguments.push_back(word.data());
        }
        arguments.push_back(nullptr);
        posix_spawn_file_actions_t actions;
        ::posix_spawn_file_actions_init(&actions);
        ::posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
        pid_t child = 0;
        int status = -1;
        const auto start = std::chrono::steady_clock::now();
        if (::posix_spawnp(&child, arguments[0], &actions, nullptr, arguments.data(), environ) ==
            0) {
            ::waitpid(child, &status, 0);
        }
        const std::chrono::duration<double, std::micro> time =
            std::chrono::steady_clock::now() - start;
        ::posix_spawn_file_actions_destroy(&actions);
        times.push_back(time.count());
        return status == 0;
    }
};

/// Takes sorted times.
void print(const Command& command, const Command& beside) {
    const auto median = [](const Command& of) { return of.times[of.times.size() / 2]; };
    std::printf("%-42s %6.0f us   of %s: %.2f (medians), %.2f (minima)\n", command.name,
                median(command), beside.name, median(command) / median(beside),
                command.times.front() / beside.times.front());
}

void measure() {
    std::array<Command, 6> commands{{
        {"openssl version", {"openssl", "version"}},
        {"vdcertificates --version", {PROGRAM, "--version"}},
        {"vdcertificates get cluster", {PROGRAM, "get", "cluster"}},
        {"load of libcrypto", {LOADER, CRYPTO}},
        {"load of the library", {LOADER, LIBRARY}},
        {"load of the library, first get",
         {LOADER, LIBRARY, "get_cluster_certificate_information"}},
    }};
    for (int round = 0; round < rounds; ++round) {
        for (Command& command : commands) {
            if (!command.run()) {
                throw std::runtime_error(std::string(command.name) + " failed");
            }
        }
    }
    for (Command& command : commands) {
        std::ranges::sort(command.times);
    }
    for (std::size_t i = 0; i < commands.size(); ++i) {
        print(commands[i], commands[i < 3 ? 0 : 3]);
    }
}

} // namespace

int main() {
    if (::access(machine_setting, F_OK) == 0) {
        std::fprintf(stderr, "bench_start: %s chooses another file than this benchmark's own\n",
                     machine_setting);
        return EXIT_FAILURE;
    }
    cpu_set_t one_core;
    CPU_ZERO(&one_core);
    CPU_SET(0, &one_core);
    ::sched_setaffinity(0, sizeof(one_core), &one_core);
    try {
        const Profile profile;
        Command set{"set",
                    {PROGRAM, "set", "cluster", "--public-key", "/k/p", "--private-key", "/k/k",
                     "--certificate", "/k/c", "--no-password"}};
        if (!set.run()) {
            throw std::runtime_error("the entry could not be stored");
        }
        measure();
    } catch (const std::exception& exception) {
        std::fprintf(stderr, "bench_start: %s\n", exception.what());
        return EXIT_FAILURE;
    }
}
