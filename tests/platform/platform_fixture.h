#pragma once

#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "platform/file.h"
#include "platform/named_mutex.h"
#include "platform/testing/testing.h"
#include "tests/support/child_process.h"
#include "tests/support/temporary_directory.h"

namespace platform {

/// An open file that closes itself.
class OpenFile {
  public:
    explicit OpenFile(const Result<FileHandle>& result)
        : result_(result) {}
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;
    ~OpenFile() { close_file(result_ ? *result_ : invalid_file); }

    explicit operator bool() const { return static_cast<bool>(result_); }
    FileHandle get() const { return *result_; }
    SystemError error() const { return result_.error(); }

  private:
    Result<FileHandle> result_;
};

/// A way to open a file, as a row of the table of share modes.
struct Opener {
    FileAccess access;
    FileSharing sharing;

    bool admits(const Opener& other) const {
        constexpr int shared[] = {3, 1, 2, 0}; // reading is 1, writing 2
        return ((static_cast<int>(other.access) + 1) & ~shared[static_cast<int>(sharing)]) == 0;
    }
    OpenFile open(const std::string& name,
                  FileDisposition disposition = FileDisposition::open_existing) const {
        return OpenFile(open_file(name, access, disposition, sharing, {}));
    }
    /// For messages and arguments, such as "13".
    std::string text() const {
        return std::to_string(static_cast<int>(access)) + std::to_string(static_cast<int>(sharing));
    }
};

/// All twelve.
inline std::vector<Opener> all_openers() {
    std::vector<Opener> openers(12);
    for (std::size_t i = 0; i < openers.size(); ++i) {
        openers[i] = {static_cast<FileAccess>(i / 4), static_cast<FileSharing>(i % 4)};
    }
    return openers;
}

class FileTest : public ::testing::Test {
  protected:
    FileTest() { support::write_file(name_, "content"); }

    std::string content() const { return support::read_file(name_); }

    support::TemporaryDirectory directory_;
    std::string missing_ = directory_.file("missing");
    std::string name_ = directory_.file("f \xC3\xA4\xE2\x82\xAC\xF0\x9F\x94\x91.bin");
};

inline constexpr const char* mutex_name = "Global\\{orva-test}";

/// Gives the mutex of each test a name of its own, and removes it.
class MutexTest : public ::testing::Test {
  protected:
    MutexTest() {
        testing::set_mutex_name_suffix(suffix_);
        EXPECT_FALSE(mutex_.create(mutex_name));
    }
    ~MutexTest() override {
        EXPECT_FALSE(mutex_.close());
        testing::remove_named_mutex(mutex_name);
        testing::set_mutex_name_suffix("");
    }

    /// A process that holds the mutex until it is told to release it.
    support::ChildProcess holder() const { return {"hold_mutex", {suffix_}}; }

    support::TemporaryDirectory directory_;
    std::string suffix_ = directory_.path().filename().string();
    NamedMutex mutex_;
};

} // namespace platform
