#include "platform/directory.h"

#include "platform/seams.h"
#include "platform/win32/last_error.h"
#include "platform/win32/wide.h"
#include "platform/win32/windows.h"

namespace platform {
namespace {

std::uint64_t join(DWORD high, DWORD low) {
    return std::uint64_t{high} << 32 | low;
}

/// Converts ticks of 100 ns since 1601 to nanoseconds since 1970. Times out of range wrap around.
std::int64_t nanoseconds(const FILETIME& time) {
    constexpr std::uint64_t epoch = 11'644'473'600'000'000'000U;
    return static_cast<std::int64_t>(join(time.dwHighDateTime, time.dwLowDateTime) * 100 - epoch);
}

/// The system's two structures for the status of a file have these fields in common.
template <class Data>
FileStatus status_of(const Data& data) {
    const auto has = [&](DWORD bit) { return (data.dwFileAttributes & bit) != 0; };
    return {.is_directory = has(FILE_ATTRIBUTE_DIRECTORY),
            .is_link = has(FILE_ATTRIBUTE_REPARSE_POINT),
            .is_read_only = has(FILE_ATTRIBUTE_READONLY),
            .is_hidden = has(FILE_ATTRIBUTE_HIDDEN),
            .size = join(data.nFileSizeHigh, data.nFileSizeLow),
            .accessed = nanoseconds(data.ftLastAccessTime),
            .modified = nanoseconds(data.ftLastWriteTime),
            .created = nanoseconds(data.ftCreationTime)};
}

} // namespace

Result<FileStatus> file_status(const std::string& path) {
    WIN32_FILE_ATTRIBUTE_DATA data = {};
    if (::GetFileAttributesExW(wide(path).c_str(), GetFileExInfoStandard, &data) == 0) {
        return last_error();
    }
    return status_of(data);
}

struct DirectoryReader::State {
    bool has(DWORD attribute) const noexcept { return (data.dwFileAttributes & attribute) != 0; }

    HANDLE handle = INVALID_HANDLE_VALUE;
    WIN32_FIND_DATAW data = {};
    std::string name;
};

DirectoryReader::DirectoryReader() noexcept = default;

DirectoryReader::~DirectoryReader() {
    if (is_open()) {
        ::FindClose(state_->handle);
    }
}

Result<bool> DirectoryReader::open(const std::string& path, const DirectoryReader* /*parent*/) {
    PLATFORM_SEAM(open_directory);
    auto state = std::make_unique<State>();
    state->handle = ::FindFirstFileW(wide(path + "*").c_str(), &state->data);
    if (state->handle == INVALID_HANDLE_VALUE) {
        return last_error();
    }
    state_ = std::move(state);
    state_->name = narrow(state_->data.cFileName);
    return true;
}

Result<bool> DirectoryReader::next() {
    PLATFORM_SEAM(read_directory);
    if (::FindNextFileW(state_->handle, &state_->data) == 0) {
        const DWORD error = ::GetLastError();
        if (error == ERROR_NO_MORE_FILES || error == ERROR_SUCCESS) {
            return false;
        }
        return SystemError::windows(error);
    }
    state_->name = narrow(state_->data.cFileName);
    return true;
}

SystemError DirectoryReader::close() {
    const bool fails = take_failure(Call::close_directory);
    const SystemError error = error_of(::FindClose(state_->handle));
    state_.reset();
    return fails ? seams().failure : error;
}

const void* DirectoryReader::handle() const noexcept {
    return is_open() ? state_->handle : INVALID_HANDLE_VALUE;
}

std::optional<DirectoryIdentity> DirectoryReader::identity() const noexcept {
    return std::nullopt;
}

std::string_view DirectoryReader::name() const noexcept {
    return state_->name;
}

bool DirectoryReader::is_directory() const noexcept {
    return state_->has(FILE_ATTRIBUTE_DIRECTORY);
}

bool DirectoryReader::is_link() const noexcept {
    return state_->has(FILE_ATTRIBUTE_REPARSE_POINT);
}

std::basic_string_view<NameUnit> DirectoryReader::native_name() const noexcept {
    return static_cast<const wchar_t*>(state_->data.cFileName);
}

FileStatus DirectoryReader::status() const {
    return status_of(state_->data);
}

} // namespace platform
