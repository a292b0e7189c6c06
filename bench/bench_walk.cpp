// Recursive walks with statistics over 100,000 files: ours, fts(3), and the standard library's
// iterator with lstat(2). Each walk adds up the sizes; `heap` is the most that it held at a time.

#include <algorithm>
#include <array>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>

#include <fts.h>
#include <malloc.h>
#include <sys/stat.h>
#include <unistd.h>

#include <benchmark/benchmark.h>

#include "qnfile/directory_sequence.h"

namespace {

namespace fs = std::filesystem;

constexpr int file_count = 100'000;

/// A tree of the benchmark's own that goes at the end: `directories` with 100,000 files in all.
class Tree {
  public:
    explicit Tree(int directories)
        : root_(fs::temp_directory_path() / ("orva-bench-walk-" + std::to_string(::getpid()) + "-" +
                                             std::to_string(directories))) {
        for (int i = 0; i < directories; ++i) {
            const fs::path directory = root_ / std::to_string(i % 10) /
                                       std::to_string(i / 10 % 10) /
                                       ("directory " + std::to_string(i));
            fs::create_directories(directory);
            for (int file = 0; file < file_count / directories; ++file) {
                std::ofstream(directory / ("certificate " + std::to_string(file))) << file;
            }
        }
    }
    Tree(const Tree&) = delete;
    Tree& operator=(const Tree&) = delete;
    ~Tree() {
        std::error_code ignored;
        fs::remove_all(root_, ignored);
    }
    const fs::path& root() const noexcept { return root_; }

  private:
    fs::path root_;
};

/// The tree of that many directories, made on first use: making it takes longer than walks do.
const Tree& tree_of(std::int64_t directories) {
    if (directories == 1) {
        static const Tree flat(1);
        return flat;
    }
    static const Tree nested(1000);
    return nested;
}

struct Sum {
    std::uint64_t files = 0;
    std::uint64_t bytes = 0;
    std::int64_t newest = 0;

    void add(std::uint64_t size, std::int64_t seconds) {
        ++files;
        bytes += size;
        newest = std::max(newest, seconds);
    }
};

template <class Look>
Sum walk_ours(const std::string& root, const Look& look) {
    constexpr std::int64_t second = 1'000'000'000;
    Sum sum;
    const qnfile::DirectorySequence entries(root.data(), root.size(), "**", 2, true);
    for (const qnfile::DirectoryEntry& entry : entries) {
        if (entry.is_file()) {
            sum.add(entry.size(), entry.modified() / second);
            look();
        }
    }
    return sum;
}

template <class Look>
Sum walk_fts(const std::string& root, const Look& look) {
    Sum sum;
    std::string path = root;
    const std::array<char*, 2> paths{path.data(), nullptr};
    FTS* const walk = ::fts_open(paths.data(), FTS_PHYSICAL, nullptr);
    while (const FTSENT* entry = ::fts_read(walk)) {
        if (entry->fts_info == FTS_F) {
            sum.add(static_cast<std::uint64_t>(entry->fts_statp->st_size),
                    entry->fts_statp->st_mtim.tv_sec);
            look();
        }
    }
    ::fts_close(walk);
    return sum;
}

template <class Look>
Sum walk_standard(const std::string& root, const Look& look) {
    Sum sum;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(root)) {
        struct stat status = {};
        if (::lstat(entry.path().c_str(), &status) == 0 && S_ISREG(status.st_mode)) {
            sum.add(static_cast<std::uint64_t>(status.st_size), status.st_mtim.tv_sec);
            look();
        }
    }
    return sum;
}

template <class Walk>
void run(benchmark::State& state, const Walk& walk) {
    const std::string root = tree_of(state.range(0)).root().string();
    const std::size_t before = ::mallinfo2().uordblks;
    std::size_t most = before;
    std::uint64_t seen = 0;
    const Sum first = walk(root, [&] {
        if (seen++ % 16 == 0) {
            most = std::max<std::size_t>(most, ::mallinfo2().uordblks);
        }
    });
    if (first.files != file_count) {
        state.SkipWithError("not all files were seen");
    }
    for ([[maybe_unused]] auto turn : state) {
        benchmark::DoNotOptimize(walk(root, [] {}));
    }
    state.counters["heap"] = static_cast<double>(most - before);
}

void ours(benchmark::State& state) {
    run(state, [](const std::string& root, const auto& look) { return walk_ours(root, look); });
}

void fts(benchmark::State& state) {
    run(state, [](const std::string& root, const auto& look) { return walk_fts(root, look); });
}

void standard(benchmark::State& state) {
    run(state, [](const std::string& root, const auto& look) { return walk_standard(root, look); });
}

void trees(benchmark::internal::Benchmark* bench) {
    bench->ArgName("directories")->Arg(1000)->Arg(1)->Unit(benchmark::kMillisecond)->UseRealTime();
}

BENCHMARK(ours)->Apply(trees);
BENCHMARK(fts)->Apply(trees);
BENCHMARK(standard)->Apply(trees);

} // namespace

BENCHMARK_MAIN();
