// `get` and `set` through the class, by the number of servers in the file, with and without
// passwords. Each server has one entry of the subsystems server role.

#include <cstdlib>
#include <filesystem>
#include <string>

#include <benchmark/benchmark.h>

#include "ConfigurationFile/configuration_file.h"
#include "platform/testing/testing.h"

namespace {

namespace fs = std::filesystem;
using vdcertificates::ConfigurationFile;
using vdcertificates::ConfigurationFileNodes;

/// A machine of the benchmark's own, in a directory that goes at the end.
class Machine {
  public:
    Machine()
        : root_(fs::temp_directory_path() / "orva-bench-store") {
        fs::remove_all(root_);
        fs::create_directories(root_);
        ::setenv("USERPROFILE", root_.c_str(), 1);
        ::unsetenv("ORVA_Certificates");
        platform::testing::set_machine_setting((root_ / "machine.conf").string());
        platform::testing::set_mutex_name_suffix("-bench");
        platform::testing::set_computer_name("BENCH");
    }
    Machine(const Machine&) = delete;
    Machine& operator=(const Machine&) = delete;
    ~Machine() {
        platform::testing::remove_named_mutex(
            vdcertificates::ConfigurationFileMutex::sm_configurationFileMutexName);
        std::error_code ignored;
        fs::remove_all(root_, ignored);
    }

  private:
    fs::path root_;
};

std::string server_name(std::int64_t number) {
    std::string digits = std::to_string(number);
    return "SRV" + std::string(6 - digits.size(), '0') + digits;
}

/// Replaces the file by one with that many servers.
void fill(ConfigurationFile& file, std::int64_t servers, bool passwords) {
    fs::remove(vdcertificates::create_and_get_default_root_configuration_directory() +
               "/BENCH_ORVA_Certificates.xml");
    ConfigurationFileNodes nodes;
    for (std::int64_t i = 0; i < servers; ++i) {
        const std::string name = server_name(i);
        nodes.notifiers[name] = {{"SubsystemsServerCertificate", "/keys/" + name + ".pub",
                                  "/keys/" + name + ".key", "/keys/" + name + ".crt",
                                  passwords ? "password of " + name : "", "/keys/authority.crt"}};
    }
    file.set_additional_certificate_information(nodes);
}

void get(benchmark::State& state) {
    ConfigurationFile file;
    fill(file, state.range(0), state.range(1) != 0);
    const std::string name = server_name(state.range(0) / 2);
    std::string publicKey;
    std::string privateKey;
    std::string certificate;
    std::string password;
    std::string trusted;
    for ([[maybe_unused]] auto turn : state) {
        if (!file.get_subsystems_server_certificate_information(name, publicKey, privateKey,
                                                                certificate, password, trusted)) {
            state.SkipWithError("the file could not be read");
            break;
        }
    }
    state.SetComplexityN(state.range(0));
}

void set(benchmark::State& state) {
    ConfigurationFile file;
    fill(file, state.range(0), state.range(1) != 0);
    const std::string name = server_name(state.range(0) / 2);
    for ([[maybe_unused]] auto turn : state) {
        if (!file.set_subsystems_server_certificate_information(
                name, "/keys/p", "/keys/k", "/keys/c",
                state.range(1) != 0 ? "another password" : "", "/keys/t")) {
            state.SkipWithError("the file could not be written");
            break;
        }
    }
    state.SetComplexityN(state.range(0));
}

void sizes(benchmark::internal::Benchmark* bench) {
    bench->ArgNames({"servers", "passwords"})->Unit(benchmark::kMillisecond)->UseRealTime();
    for (const std::int64_t passwords : {0, 1}) {
        for (const std::int64_t servers : {1, 100, 1000}) {
            bench->Args({servers, passwords});
        }
    }
}

BENCHMARK(get)->Apply(sizes);
BENCHMARK(set)->Apply(sizes);

} // namespace

int main(int argc, char** argv) {
    const Machine machine;
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
