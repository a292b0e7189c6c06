// Recursive walks with statistics over 100,000 files: ours, fts(3), and the standard library's
// iterator with lstat(2), in turn. Ours delivers "." and ".." of each directory, fts(3) on request.
// Each walk adds up the sizes. The counters are medians of milliseconds of processor time, and the
// largest heap of a walk.

#include <algorithm>
#include <array>
#include <cstdint>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <span>
#include <string>
#include <vector>

#include <fts.h>
#include <malloc.h>
#include <sys/stat.h>
#include <unistd.h>

#include <benchmark/benchmark.h>

#include "qnfile/directory_sequence.h"

namespace {

namespace fs = std::filesystem;

constexpr int file_count = 100'000;

/// A tree of 100,000 files in `directories`, removed at the end.
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

/// The tree of that many directories, created on first use, since that takes longer than walks.
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

/// The largest heap, sampled at every 16th file.
class HeapMeter {
  public:
    void look() {
        if (seen_++ % 16 == 0) {
            most_ = std::max<std::size_t>(most_, ::mallinfo2().uordblks);
        }
    }
    double bytes() const noexcept { return static_cast<double>(most_ - before_); }

  private:
    std::size_t before_ = ::mallinfo2().uordblks;
    std::size_t most_ = before_;
    std::uint64_t seen_ = 0;
};

void look(HeapMeter* meter) {
    if (meter != nullptr) {
        meter->look();
    }
}

Sum walk_ours(const std::string& root, HeapMeter* meter) {
    constexpr std::int64_t second = 1'000'000'000;
    Sum sum;
    const qnfile::DirectorySequence entries(root.data(), root.size(), "**", 2, true);
    for (const qnfile::DirectoryEntry& entry : entries) {
        if (entry.is_file()) {
            sum.add(entry.size(), entry.modified() / second);
            look(meter);
        }
    }
    return sum;
}

template <int options>
Sum walk_fts(const std::string& root, HeapMeter* meter) {
    Sum sum;
    std::string path = root;
    const std::array<char*, 2> paths{path.data(), nullptr};
    FTS* const walk = ::fts_open(paths.data(), FTS_PHYSICAL | options, nullptr);
    while (const FTSENT* entry = ::fts_read(walk)) {
        if (entry->fts_info == FTS_F) {
            sum.add(static_cast<std::uint64_t>(entry->fts_statp->st_size),
                    entry->fts_statp->st_mtim.tv_sec);
            look(meter);
        }
    }
    ::fts_close(walk);
    return sum;
}

Sum walk_standard(const std::string& root, HeapMeter* meter) {
    Sum sum;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(root)) {
        struct stat status = {};
        if (::lstat(entry.path().c_str(), &status) == 0 && S_ISREG(status.st_mode)) {
            sum.add(static_cast<std::uint64_t>(status.st_size), status.st_mtim.tv_sec);
            look(meter);
        }
    }
    return sum;
}

double processor_time() {
    timespec time = {};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

double median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/// One way to walk, and its milliseconds of each turn.
struct Walk {
    std::string name;
    Sum (*walk)(const std::string& root, HeapMeter* meter);
    std::vector<double> times = {};
};

/// A turn is one walk of each kind, starting with another kind each time. `x/y` is the median of the
/// turns' quotients.
void walks(benchmark::State& state) {
    const std::string root = tree_of(state.range(0)).root().string();
    std::array<Walk, 4> kinds{{{"ours", walk_ours},
                               {"fts", walk_fts<0>},
                               {"fts with dots", walk_fts<FTS_SEEDOT>},
                               {"std", walk_standard}}};
    for (const Walk& kind : kinds) {
        HeapMeter meter;
        if (kind.walk(root, &meter).files != file_count) {
            state.SkipWithError("not all files were seen");
        }
        state.counters[kind.name + " heap"] = meter.bytes();
    }
    std::size_t first = 0;
    for ([[maybe_unused]] auto turn : state) {
        ++first;
        for (std::size_t i = 0; i < kinds.size(); ++i) {
            Walk& kind = kinds[(first + i) % kinds.size()];
            const double start = processor_time();
            benchmark::DoNotOptimize(kind.walk(root, nullptr));
            kind.times.push_back(processor_time() - start);
        }
    }
    for (const Walk& kind : kinds) {
        state.counters[kind.name] = median(kind.times);
    }
    for (const Walk& kind : std::span(kinds).subspan(1)) {
        std::vector<double> quotients;
        std::ranges::transform(kinds[0].times, kind.times, std::back_inserter(quotients),
                               std::divides());
        state.counters["ours/" + kind.name] = median(quotients);
    }
}

BENCHMARK(walks)
    ->ArgName("directories")
    ->Arg(1000)
    ->Arg(1)
    ->Iterations(60)
    ->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
