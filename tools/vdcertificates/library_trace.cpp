#include "tools/vdcertificates/library_trace.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <random>

#include "platform/environment.h"
#include "platform/file_system.h"
#include "platform/key_file.h"

namespace tool {
namespace {

constexpr std::string_view error_level = "11";
constexpr std::string_view warning_level = "21";
constexpr int columns_before_level = 2;
constexpr int columns_before_text = 5; ///< time, process and thread, level, topic, function
constexpr std::array ending_signals{
    SIGINT,
    SIGTERM,
#ifdef SIGHUP
    SIGHUP,
#endif
};

/// What the signal handler removes; empty when there is nothing.
std::array<char, 4096> g_file_of_signal{};

/// Nothing but one system call and the signal's own effect, so that it may happen at any time.
extern "C" void remove_file_and_end(int number) {
    platform::remove_file(g_file_of_signal.data());
    std::signal(number, SIG_DFL);
    std::raise(number);
}

/// Makes an empty file that only this account may open; empty when that fails.
std::string make_private_file() {
    std::error_code error;
    const std::filesystem::path directory = std::filesystem::temp_directory_path(error);
    if (error) {
        return {};
    }
    std::random_device random;
    std::string name = "vdcertificates-trace-";
    for (int i = 0; i < 4; ++i) {
        name += std::to_string(random());
    }
    std::string path = (directory / name).string();
    // As a key file is made: for the owner alone from the first moment, whatever the umask.
    const auto file = platform::open_key_file(path);
    if (!file || path.size() >= g_file_of_signal.size()) {
        return {};
    }
    platform::close_file(*file);
    return path;
}

/// What stands behind that many columns, which one blank each divides.
std::string_view behind_columns(std::string_view line, int columns) {
    for (; columns > 0; --columns) {
        line.remove_prefix(std::min(line.find(' '), line.size() - 1) + 1);
    }
    return line;
}

std::string without_prefix(const std::string& text) {
    constexpr std::string_view prefix = "Error Message: ";
    return text.starts_with(prefix) ? text.substr(prefix.size()) : text;
}

} // namespace

LibraryTrace::LibraryTrace() {
    if (!platform::environment_text("QNTRACE").value_or("").empty()) {
        return;
    }
    file_ = make_private_file();
    if (file_.empty()) {
        return;
    }
    std::ranges::copy(file_, g_file_of_signal.begin());
    for (const int number : ending_signals) {
        if (std::signal(number, remove_file_and_end) == SIG_IGN) {
            std::signal(number, SIG_IGN);
        }
    }
    platform::set_environment_variable("QNTRACE", "21");
    platform::set_environment_variable("QNTRACE_FILE", file_);
}

LibraryTrace::~LibraryTrace() {
    if (!file_.empty()) {
        platform::remove_file(file_.c_str());
    }
}

std::string LibraryTrace::cause(const std::string& known) const {
    const std::vector<std::string> errors = messages(error_level);
    if (!errors.empty()) {
        return without_prefix(errors.back());
    }
    return !known.empty() ? known : "the cause stands in the library's trace (QNTRACE)";
}

std::vector<std::string> LibraryTrace::warnings() const {
    std::vector<std::string> distinct;
    for (std::string& warning : messages(warning_level)) {
        if (std::ranges::find(distinct, warning) == distinct.end()) {
            distinct.push_back(std::move(warning));
        }
    }
    return distinct;
}

std::string LibraryTrace::key_replacement() const {
    for (const std::string& error : messages(error_level)) {
        if (error.ends_with("Regenerating NEW keys.")) {
            return error;
        }
    }
    return {};
}

std::vector<std::string> LibraryTrace::messages(std::string_view level) const {
    std::vector<std::string> texts;
    if (file_.empty()) {
        return texts;
    }
    std::ifstream file(std::filesystem::path(std::u8string(file_.begin(), file_.end())),
                       std::ios::binary);
    for (std::string line; std::getline(file, line);) {
        const std::string_view at_level = behind_columns(line, columns_before_level);
        if (at_level.substr(0, at_level.find(' ')) == level) {
            texts.emplace_back(behind_columns(line, columns_before_text));
        }
    }
    return texts;
}

} // namespace tool
