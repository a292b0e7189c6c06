#include "qncore/trace_file.h"

#include <filesystem>

namespace qntrace {
namespace {

constexpr std::uint64_t largest_file = 5U << 20;
constexpr int older_files = 3;

std::filesystem::path older_name(const std::string& name, int age) {
    const std::string older = age == 0 ? name : name + "." + std::to_string(age);
    return std::u8string(older.begin(), older.end());
}

} // namespace

void TraceFile::write(std::string_view line) {
    if (file_.size() >= largest_file) {
        turn_over();
    }
    // A line that was written only in part is ended before the next one.
    const std::string text = (cut_ ? "\n" : "") + std::string(line);
    const std::size_t written = file_.append(text);
    cut_ = written == 0 ? cut_ : written < text.size();
}

void TraceFile::turn_over() {
    // One process renames. The others find another file under the name, or the lock held.
    if (file_.try_lock() && file_.is_named(name_)) {
        std::error_code ignored; // if nothing can be renamed, the file grows
        for (int age = older_files; age > 0; --age) {
            std::filesystem::rename(older_name(name_, age - 1), older_name(name_, age), ignored);
        }
    }
    auto next = platform::AppendFile::open(name_);
    if (next) {
        file_ = std::move(*next);
    }
}

} // namespace qntrace
