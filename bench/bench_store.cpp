// `get` and `set` through the class, by the number of servers in the file, with and without
// passwords; each server has one entry of the subsystems server role. Then both against the work
// that cannot be saved, in turn: the parses of the file, and OpenSSL's bare operations.

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <openssl/rsa.h>
#include <sys/resource.h>

#include "ConfigurationFile/configuration_file.h"
#include "platform/testing/testing.h"
#include "qncrypto/rsa.h"
#include "qnfile/file_stream.h"
#include "qnxml/reader.h"
#include "qnxml/stream_tokenizer.h"

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

std::string path_of(const char* name) {
    return vdcertificates::create_and_get_default_root_configuration_directory() + "/BENCH_" + name;
}

std::string server_name(std::int64_t number) {
    std::string digits = std::to_string(number);
    return "SRV" + std::string(7 - digits.size(), '0') + digits;
}

/// Replaces the file by one with that many servers.
void fill(ConfigurationFile& file, std::int64_t servers, bool passwords) {
    fs::remove(path_of("ORVA_Certificates.xml"));
    ConfigurationFileNodes nodes;
    for (std::int64_t i = 0; i < servers; ++i) {
        const std::string name = server_name(i);
        nodes.notifiers[name] = {{"SubsystemsServerCertificate", "/keys/" + name + ".pub",
                                  "/keys/" + name + ".key", "/keys/" + name + ".crt",
                                  passwords ? "password of " + name : "", "/keys/authority.crt"}};
    }
    file.set_additional_certificate_information(nodes);
}

bool get(ConfigurationFile& file, const std::string& server) {
    std::array<std::string, 5> o;
    return file.get_subsystems_server_certificate_information(server, o[0], o[1], o[2], o[3],
                                                              o[4]) &&
           !o[0].empty();
}

/// Stores another password with each call.
bool set(ConfigurationFile& file, const std::string& server, bool passwords) {
    static int turn = 0;
    return file.set_subsystems_server_certificate_information(
        server, "/keys/p", "/keys/k", "/keys/c",
        passwords ? "password " + std::to_string(++turn) : "", "/keys/t");
}

template <class Call>
void run(benchmark::State& state, const Call& call) {
    ConfigurationFile file;
    fill(file, state.range(0), state.range(1) != 0);
    const std::string name = server_name(state.range(0) / 2);
    for ([[maybe_unused]] auto turn : state) {
        if (!call(file, name)) {
            state.SkipWithError("the file could not be read or written");
            break;
        }
    }
    state.SetComplexityN(state.range(0));
}

void get(benchmark::State& state) {
    run(state, [](ConfigurationFile& file, const std::string& name) { return get(file, name); });
}

void set(benchmark::State& state) {
    run(state, [&](ConfigurationFile& file, const std::string& name) {
        return set(file, name, state.range(1) != 0);
    });
}

void sizes(benchmark::internal::Benchmark* bench) {
    bench->ArgNames({"servers", "passwords"})->Unit(benchmark::kMillisecond)->UseRealTime();
    for (const std::int64_t passwords : {0, 1}) {
        for (const std::int64_t servers : {1, 100, 1000, 10000}) {
            bench->Args({servers, passwords});
        }
    }
}

BENCHMARK(get)->Apply(sizes);
BENCHMARK(set)->Apply(sizes);

/// The work that a call cannot save, done with nothing around it.
class Floor {
  public:
    explicit Floor(std::size_t servers)
        : servers_(servers) {
        std::ifstream file(path_of("PrivateKey.bin"), std::ios::binary);
        const std::string key(std::istreambuf_iterator<char>(file), {});
        const auto* position = reinterpret_cast<const unsigned char*>(key.data());
        rsa_ = d2i_RSAPrivateKey(nullptr, &position, static_cast<long>(key.size()));
        private_operation();
    }
    Floor(const Floor&) = delete;
    Floor& operator=(const Floor&) = delete;
    ~Floor() { RSA_free(rsa_); }

    void parse() const {
        qnxml::XmlStreamTokenizer tokenizer(
            {}, 1, 4096,
            qnfile::FileReadStream::create(path_of("ORVA_Certificates.xml"), qnfile::share_none,
                                           qnfile::flag_sequential_scan));
        qnxml::XmlReader reader(&tokenizer);
        std::size_t bytes = 0;
        while (reader.read_next()) {
            bytes += reader.node_type() == qnxml::XmlNodeType::Text ? reader.value().size() : 0;
        }
        benchmark::DoNotOptimize(bytes);
    }

    void private_operation() {
        RSA_private_encrypt(sizeof plain_, plain_, block_, rsa_, RSA_PKCS1_PADDING);
    }

    void public_operations() {
        unsigned char out[sizeof block_];
        for (std::size_t i = 0; i < servers_; ++i) {
            RSA_public_decrypt(sizeof block_, block_, out, rsa_, RSA_PKCS1_PADDING);
        }
    }

  private:
    std::size_t servers_;
    RSA* rsa_;
    unsigned char plain_[20] = {1, 2, 3};
    unsigned char block_[256] = {};
};

template <class Work>
double milliseconds_of(const Work& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    const std::chrono::duration<double, std::milli> time = std::chrono::steady_clock::now() - start;
    return time.count();
}

/// Runs the two in turn and prints the median of the rounds' ratios.
template <class Ours, class Least>
void compare(const char* what, int rounds, const Ours& ours, const Least& least) {
    std::vector<std::array<double, 3>> times; // ratio, ours, least
    for (int round = 0; round < rounds; ++round) {
        const double first = milliseconds_of(ours);
        const double second = milliseconds_of(least);
        times.push_back({first / second, first, second});
    }
    std::sort(times.begin(), times.end());
    const auto& [ratio, mine, floor] = times[times.size() / 2];
    std::printf("%-72s %8.1f %8.1f %8.2f\n", what, mine, floor, ratio);
}

void compare_with_floor() {
    constexpr std::size_t servers = 1000;
    constexpr int rounds = 21;
    ConfigurationFile file;
    fill(file, servers, true);
    Floor floor(servers);
    const std::string name = server_name(servers / 2);
    std::printf("\n1,000 servers with passwords, medians of %d rounds %18s %8s %8s\n", rounds, "ms",
                "least", "ratio");
    compare(
        "get : one parse, 1,000 public operations", rounds, [&] { get(file, name); },
        [&] {
            floor.parse();
            floor.public_operations();
        });
    compare(
        "set : three parses, 1,000 public operations, one private", rounds,
        [&] { set(file, name, true); },
        [&] {
            floor.parse();
            floor.parse();
            floor.parse();
            floor.public_operations();
            floor.private_operation();
        });
}

long most_resident_kilobytes() {
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

/// What a `get` of one server in a file of 200 MB adds to the most memory of this process so far.
void measure_memory() {
    constexpr std::streamoff size = 200'000'000;
    ConfigurationFile file;
    std::ofstream stream(path_of("ORVA_Certificates.xml"), std::ios::binary);
    stream << "<ORVACertificates><Notifiers>";
    std::int64_t servers = 0;
    for (; stream.tellp() < size; ++servers) {
        stream << "<Notifier Name=\"" << server_name(servers)
               << "\"><SubsystemsServerCertificate><PublicKeyPath>/keys/of/the/server.pub"
                  "</PublicKeyPath></SubsystemsServerCertificate></Notifier>";
    }
    stream << "</Notifiers><SIPDevices></SIPDevices><MediaRetrieval></MediaRetrieval>"
              "</ORVACertificates>";
    stream.close();
    const long before = most_resident_kilobytes();
    const bool found = get(file, server_name(servers / 2));
    std::printf("get of one of %lld servers in 200 MB: %ld kB more memory%s\n",
                static_cast<long long>(servers), most_resident_kilobytes() - before,
                found ? "" : " (not found)");
}

} // namespace

int main(int argc, char** argv) {
    const Machine machine;
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    measure_memory(); // first: the most memory never falls
    benchmark::RunSpecifiedBenchmarks();
    compare_with_floor();
    return 0;
}
