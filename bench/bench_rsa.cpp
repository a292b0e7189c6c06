#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <openssl/objects.h>
#include <openssl/rsa.h>

#include "qncrypto/rsa.h"

// Each RSA operation against the bare call of OpenSSL with the same key and padding. The two run
// in turn, many short rounds each; the table at the end gives the median of the rounds' ratios.
namespace {

using qncrypto::HashAlgorithm;
using qncrypto::Key;
using qncrypto::RsaPadding;

constexpr std::size_t modulus_size = 256;
constexpr unsigned int digest_size = 32;

/// One key pair, in the room's contexts and in OpenSSL's hands.
struct Fixture {
    Fixture() {
        const unsigned char* position = private_key.data();
        bare = d2i_RSAPrivateKey(nullptr, &position, static_cast<long>(private_key.size()));
        private_context.encrypt(plain.data(), plain.size(), from_private.data(), modulus_size,
                                RsaPadding::pkcs1);
        public_context.encrypt(plain.data(), plain.size(), from_public.data(), modulus_size,
                               RsaPadding::pkcs1);
        private_context.sign(plain.data(), signature.data(), modulus_size, HashAlgorithm::sha256,
                             RsaPadding::pkcs1, nullptr);
    }
    Fixture(const Fixture&) = delete;
    Fixture& operator=(const Fixture&) = delete;
    ~Fixture() { RSA_free(bare); }

    static Key new_private_key() {
        Key made;
        Key unused;
        qncrypto::RsaContext::create_key_pair(modulus_size * 8, made, unused);
        return made;
    }

    const Key private_key = new_private_key();
    const Key public_key = qncrypto::RsaContext::public_key_from_private_key(private_key);
    const qncrypto::RsaPrivateContext private_context{private_key.data(), private_key.size()};
    const qncrypto::RsaPublicContext public_context{public_key.data(), public_key.size()};
    RSA* bare = nullptr;
    std::array<unsigned char, digest_size> plain{1, 2, 3};
    std::array<unsigned char, modulus_size> from_private{};
    std::array<unsigned char, modulus_size> from_public{};
    std::array<unsigned char, modulus_size> signature{};
    std::array<unsigned char, modulus_size> out{};
};

/// One round gives true when the operation did its work.
using Round = bool (*)(Fixture&);

struct Operation {
    const char* name;
    int repetitions; ///< in one round
    Round ours;
    Round bare;
};

const Operation operations[] = {
    {"private encrypt", 1,
     [](Fixture& f) {
         return f.private_context.encrypt(f.plain.data(), digest_size, f.out.data(), modulus_size,
                                          RsaPadding::pkcs1) > 0;
     },
     [](Fixture& f) {
         return RSA_private_encrypt(digest_size, f.plain.data(), f.out.data(), f.bare,
                                    RSA_PKCS1_PADDING) > 0;
     }},
    {"public decrypt", 10,
     [](Fixture& f) {
         return f.public_context.decrypt(f.from_private.data(), modulus_size, f.out.data(),
                                         modulus_size, RsaPadding::pkcs1, nullptr) > 0;
     },
     [](Fixture& f) {
         return RSA_public_decrypt(modulus_size, f.from_private.data(), f.out.data(), f.bare,
                                   RSA_PKCS1_PADDING) > 0;
     }},
    {"public encrypt", 10,
     [](Fixture& f) {
         return f.public_context.encrypt(f.plain.data(), digest_size, f.out.data(), modulus_size,
                                         RsaPadding::pkcs1) > 0;
     },
     [](Fixture& f) {
         return RSA_public_encrypt(digest_size, f.plain.data(), f.out.data(), f.bare,
                                   RSA_PKCS1_PADDING) > 0;
     }},
    {"private decrypt", 1,
     [](Fixture& f) {
         return f.private_context.decrypt(f.from_public.data(), modulus_size, f.out.data(),
                                          modulus_size, RsaPadding::pkcs1, nullptr) > 0;
     },
     [](Fixture& f) {
         return RSA_private_decrypt(modulus_size, f.from_public.data(), f.out.data(), f.bare,
                                    RSA_PKCS1_PADDING) > 0;
     }},
    {"sign", 1,
     [](Fixture& f) {
         return f.private_context.sign(f.plain.data(), f.out.data(), modulus_size,
                                       HashAlgorithm::sha256, RsaPadding::pkcs1, nullptr) > 0;
     },
     [](Fixture& f) {
         unsigned int size = 0;
         return RSA_sign(NID_sha256, f.plain.data(), digest_size, f.out.data(), &size, f.bare) == 1;
     }},
    {"verify", 10,
     [](Fixture& f) {
         return f.public_context.verify(f.signature.data(), modulus_size, f.plain.data(),
                                        HashAlgorithm::sha256, RsaPadding::pkcs1, nullptr);
     },
     [](Fixture& f) {
         return RSA_verify(NID_sha256, f.plain.data(), digest_size, f.signature.data(),
                           modulus_size, f.bare) == 1;
     }},
};

std::map<std::string, std::vector<double>> ratios;

double seconds_of(Round round, int repetitions, Fixture& fixture, bool& worked) {
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < repetitions; ++i) {
        worked = round(fixture) && worked;
    }
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void measure(benchmark::State& state, const Operation& operation, Fixture& fixture) {
    bool worked = true;
    bool ours_first = false;
    for ([[maybe_unused]] auto each : state) {
        ours_first = !ours_first;
        const auto time = [&](Round round) {
            return seconds_of(round, operation.repetitions, fixture, worked);
        };
        const double first = time(ours_first ? operation.ours : operation.bare);
        const double second = time(ours_first ? operation.bare : operation.ours);
        const double ours = ours_first ? first : second;
        state.SetIterationTime(ours);
        ratios[operation.name].push_back(ours / (first + second - ours));
    }
    state.SetItemsProcessed(state.iterations() * operation.repetitions);
    if (!worked) {
        state.SkipWithError("an operation failed");
    }
}

double median(std::vector<double>& values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

} // namespace

int main(int argc, char** argv) {
    Fixture fixture;
    for (const Operation& operation : operations) {
        benchmark::RegisterBenchmark(
            operation.name, [&](benchmark::State& state) { measure(state, operation, fixture); })
            ->UseManualTime()
            ->MinTime(2.0)
            ->Unit(benchmark::kMicrosecond);
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    std::puts("\nTime of ours / time of OpenSSL's call, RSA-2048, median of the rounds");
    for (const Operation& operation : operations) {
        if (!ratios[operation.name].empty()) {
            std::printf("%-16s %.3f\n", operation.name, median(ratios[operation.name]));
        }
    }
    return 0;
}
