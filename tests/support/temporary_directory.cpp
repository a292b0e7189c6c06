#include "tests/support/temporary_directory.h"

#include <fstream>
#include <random>
#include <sstream>

#include <gtest/gtest.h>

namespace support {
namespace {

/// In memory if possible: on a disk the tests mostly wait for it.
std::filesystem::path common_place() {
    const std::filesystem::path memory = "/dev/shm"; // relative on Windows, which has drives
    return memory.is_absolute() && std::filesystem::is_directory(memory)
               ? memory
               : std::filesystem::temp_directory_path();
}

} // namespace

TemporaryDirectory::TemporaryDirectory() {
    std::random_device random;
    do {
        std::ostringstream name;
        name << "orva-test-" << std::hex << random() << random();
        path_ = common_place() / name.str();
    } while (!std::filesystem::create_directory(path_));
}

TemporaryDirectory::~TemporaryDirectory() {
    support::remove_all(path_);
}

std::string TemporaryDirectory::file(std::string_view name) const {
    std::filesystem::path path = path_ / native(std::string(name));
    path.make_preferred();
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

void remove_all(const std::filesystem::path& path) {
    namespace fs = std::filesystem;
    const auto make_writable = [](const fs::path& one) {
        std::error_code ignored;
        const auto links =
            fs::is_symlink(one, ignored) ? fs::perm_options::nofollow : fs::perm_options::add;
        fs::permissions(one, fs::perms::owner_all, fs::perm_options::add | links, ignored);
    };
    std::error_code ignored;
    make_writable(path);
    for (const auto& entry : fs::recursive_directory_iterator(path, ignored)) {
        make_writable(entry.path());
    }
    fs::remove_all(path, ignored);
}

std::filesystem::path native(const std::string& name) {
    return std::u8string(name.begin(), name.end());
}

std::string read_file(const std::string& name) {
    std::ifstream stream(native(name), std::ios::binary);
    EXPECT_TRUE(stream.is_open()) << name;
    std::ostringstream content;
    content << stream.rdbuf();
    return std::move(content).str();
}

void write_file(const std::string& name, std::string_view content) {
    std::ofstream stream(native(name), std::ios::binary | std::ios::trunc);
    stream << content;
    stream.close();
    EXPECT_TRUE(stream) << name;
}

} // namespace support
