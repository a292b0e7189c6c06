#include "qnfile/file_impl.h"

#include <algorithm>

#include "qncore/error_composer.h"
#include "qncore/safe_cast.h"
#include "qncore/system_name.h"
#include "qnfile/errors.h"

namespace qnfile::impl {
namespace {

using qncore::ErrorComposer;

constexpr const char* constructor_name = "qnfile::impl::FileImpl::FileImpl()";

/// A value of this layer's enumeration and the system's; a value without a row is unknown.
template <class From, class To>
struct Row {
    From from;
    To to;
};

constexpr Row<FileAccessMode, platform::FileAccess> accesses[] = {
    {access_read, platform::FileAccess::read},
    {access_write, platform::FileAccess::write},
    {access_read_write, platform::FileAccess::read_write},
};

constexpr Row<FileShareMode, platform::FileSharing> sharings[] = {
    {share_read_write, platform::FileSharing::read_write},
    {share_read, platform::FileSharing::read},
    {share_write, platform::FileSharing::write},
    {share_none, platform::FileSharing::none},
};

constexpr Row<FileCreationDisposition, platform::FileDisposition> dispositions[] = {
    {create_new, platform::FileDisposition::create_new},
    {create_always, platform::FileDisposition::create_always},
    {open_always, platform::FileDisposition::open_always},
    {open_existing, platform::FileDisposition::open_existing},
    {truncate_existing, platform::FileDisposition::truncate_existing},
};

constexpr Row<qncore::SeekOrigin, platform::SeekMethod> origins[] = {
    {qncore::seek_begin, platform::SeekMethod::begin},
    {qncore::seek_current, platform::SeekMethod::current},
    {qncore::seek_end, platform::SeekMethod::end},
};

template <class From, class To, std::size_t Rows>
const To* find(const Row<From, To> (&table)[Rows], From from) {
    const auto* row = std::find_if(std::begin(table), std::end(table),
                                   [from](const Row<From, To>& r) { return r.from == from; });
    return row != std::end(table) ? &row->to : nullptr;
}

/// Required: an unknown argument raises error.qnfile.io.open, not its code for parameters.
template <class From, class To, std::size_t Rows>
To map_argument(const Row<From, To> (&table)[Rows], From from, const char* message,
                const char* parameter, const std::string& filename) {
    const To* to = find(table, from);
    if (to == nullptr) {
        ErrorComposer(message)
            .param(parameter, from)
            .param("filename", filename)
            .throw_error(error::qnfile_io_open, QN_LOCATION(constructor_name));
    }
    return *to;
}

platform::FileHints hints_of(FileOpenFlags flags) {
    return {.sequential_scan = (flags & flag_sequential_scan) != 0,
            .random_access = (flags & flag_random_access) != 0,
            .write_through = (flags & flag_write_through) != 0,
            .overlapped = (flags & flag_overlapped) != 0};
}

/// The value of a result; throws its error nested in one about the file.
template <class T>
T value_of(const platform::Result<T>& result, const char* message, const std::string& filename,
           const qncore::ErrorCode& code, const char* function) {
    if (!result) {
        ErrorComposer(message)
            .param("filename", filename)
            .throw_with_nested_system_error(code, QN_LOCATION(function), result.error());
    }
    return *result;
}

constexpr const char* read_message = "Error reading from file \"{@filename}\"";

} // namespace

FileImpl::FileImpl(const std::string& filename, FileAccessMode access,
                   FileCreationDisposition disposition, FileShareMode share, FileOpenFlags flags)
    : filename_(filename) {
    const auto systemAccess =
        map_argument(accesses, access, "Invalid access mode {@mode} to open file \"{@filename}\"",
                     "mode", filename_);
    const auto systemSharing =
        map_argument(sharings, share, "Invalid share mode {@mode} to open file \"{@filename}\"",
                     "mode", filename_);
    const auto systemDisposition = map_argument(
        dispositions, disposition,
        "Invalid creation disposition {@disp} to open file \"{@filename}\"", "disp", filename_);
    qncore::check_system_name(filename_);
    handle_ = value_of(platform::open_file(filename_, systemAccess, systemDisposition,
                                           systemSharing, hints_of(flags)),
                       "Unable to open file \"{@filename}\"", filename_, error::qnfile_io_open,
                       constructor_name);
}

FileImpl::~FileImpl() {
    platform::close_file(handle_);
}

std::uint64_t FileImpl::read(void* buffer, std::uint64_t count) {
    return value_of(platform::read_file(handle_, buffer, qncore::safe_cast<std::uint32_t>(count)),
                    read_message, filename_, error::qnfile_io_read,
                    "qnfile::impl::FileImpl::read()");
}

std::uint64_t FileImpl::read_at(std::uint64_t position, void* buffer, std::uint64_t count) {
    // Required: the location of a read at a position is that of a plain read.
    return value_of(
        platform::read_file_at(handle_, position, buffer, qncore::safe_cast<std::uint32_t>(count)),
        read_message, filename_, error::qnfile_io_read, "qnfile::impl::FileImpl::read()");
}

std::uint64_t FileImpl::write(const void* buffer, std::uint64_t count) {
    return value_of(platform::write_file(handle_, buffer, qncore::safe_cast<std::uint32_t>(count)),
                    "Writing to file \"{@filename}\" failed", filename_, error::qnfile_io_write,
                    "qnfile::impl::FileImpl::write()");
}

std::uint64_t FileImpl::seek(std::int64_t offset, qncore::SeekOrigin origin) {
    const auto location = QN_LOCATION("qnfile::impl::FileImpl::seek()");
    const platform::SeekMethod* method = find(origins, origin);
    if (method == nullptr) {
        ErrorComposer(
            "Invalid origin {@origin} in seek to offset {@offset} in file \"{@filename}\".")
            .param("origin", origin)
            .param("offset", offset)
            .param("filename", filename_)
            .throw_error(error::qnfile_io_seek_badOrigin, location);
    }
    const auto position = platform::seek_file(handle_, offset, *method);
    if (!position) {
        ErrorComposer("Seeking to offset {@offset} from origin {@origin} in file \"{@filename}\" "
                      "failed")
            .param("offset", offset)
            .param("origin", origin)
            .param("filename", filename_)
            .throw_with_nested_system_error(error::qnfile_io_seek, location, position.error());
    }
    return *position;
}

std::uint64_t FileImpl::size() {
    return value_of(platform::file_size(handle_),
                    "Getting file size for file \"{@filename}\" failed", filename_,
                    error::qnfile_io_size, "qnfile::impl::FileImpl::size()");
}

void FileImpl::resize(std::uint64_t bytes) {
    const std::uint64_t saved = seek(0, qncore::seek_current);
    seek(static_cast<std::int64_t>(bytes), qncore::seek_begin);
    if (const platform::SystemError failure = platform::set_end_of_file(handle_)) {
        ErrorComposer("Resizing file \"{@filename}\" to {@bytes} bytes failed")
            .param("filename", filename_)
            .param("bytes", bytes)
            .throw_with_nested_system_error(
                error::qnfile_io_resize, QN_LOCATION("qnfile::impl::FileImpl::resize()"), failure);
    }
    if (saved < bytes) {
        seek(static_cast<std::int64_t>(saved), qncore::seek_begin);
    }
}

std::uint64_t FileImpl::skip(std::uint64_t count) {
    const std::uint64_t position = seek(0, qncore::seek_current);
    const std::uint64_t remaining = size() - position; // wraps beyond the end: required
    const std::uint64_t step = std::min(remaining, count);
    return seek(static_cast<std::int64_t>(step), qncore::seek_current) - position;
}

std::uint64_t FileImpl::available() {
    const std::uint64_t position = seek(0, qncore::seek_current);
    return size() - position; // wraps beyond the end: required
}

std::uint64_t FileImpl::write_all(const void* buffer, std::uint64_t count) {
    const std::uint64_t written = write(buffer, count);
    if (written != count) {
        // Required: the location is the same for the read-write stream.
        ErrorComposer("Writing to file \"{@filename}\" failed, {@attempted} bytes attempted, "
                      "{@written} bytes written")
            .param("filename", filename_)
            .param("attempted", count)
            .param("written", written)
            .throw_error(error::qnfile_io_write,
                         QN_LOCATION("qnfile::impl::FileWriteStreamImpl::write()"));
    }
    return written;
}

} // namespace qnfile::impl
