#include "qncertificates/key_file.h"

#include <cstdint>

#include "platform/key_file.h"
#include "qncertificates/errors.h"
#include "qncore/error_composer.h"
#include "qncore/safe_cast.h"
#include "qnfile/file_stream.h"

namespace qncertificates {

using qncore::ErrorComposer;
using qncore::SourceLocation;

namespace {

constexpr std::uint64_t largest_key_file = 65536;

[[noreturn]] void throw_write_error(const std::string& filename, const SourceLocation& location,
                                    platform::SystemError error) {
    ErrorComposer("Writing to key file \"{@filename}\" failed")
        .param("filename", filename)
        .throw_with_nested_system_error(error::qncertificates_parameter_invalid, location, error);
}

platform::FileHandle open_for_writing(const std::string& filename) {
    const auto opened = platform::open_key_file(filename);
    if (!opened) {
        ErrorComposer("Unable to open key file \"{@filename}\" for reading and writing")
            .param("filename", filename)
            .throw_with_nested_system_error(
                error::qncertificates_parameter_invalid,
                QN_LOCATION("qncertificates::KeyFileWriter::KeyFileWriter()"), opened.error());
    }
    return *opened;
}

} // namespace

qncrypto::Key read_key_file(const std::string& filename) {
    const auto stream =
        qnfile::FileReadStream::create(filename, qnfile::share_read, qnfile::FileOpenFlags{});
    const std::uint64_t size = stream->available();
    if (size > largest_key_file) {
        ErrorComposer("Key file \"{@filename}\" is too large: {@size} bytes")
            .param("filename", filename)
            .param("size", size)
            .throw_error(error::qncertificates_parameter_invalid,
                         QN_LOCATION("qncertificates::read_key_file()"));
    }
    qncrypto::Key content(static_cast<std::size_t>(size));
    std::uint64_t done = 0;
    while (done < size) {
        const std::uint64_t count = stream->read(content.data() + done, size - done);
        if (count == 0) {
            break;
        }
        done += count;
    }
    content.resize(static_cast<std::size_t>(done));
    return content;
}

KeyFileWriter::KeyFileWriter(const std::string& filename)
    : filename_(filename)
    , file_(open_for_writing(filename)) {}

void KeyFileWriter::replace_content(const qncrypto::Key& content) const {
    const auto location = QN_LOCATION("qncertificates::KeyFileWriter::replace_content()");
    const auto at_start = platform::seek_file(file_, 0, platform::SeekMethod::begin);
    if (!at_start) {
        throw_write_error(filename_, location, at_start.error());
    }
    std::size_t done = 0;
    while (done < content.size()) {
        const auto written = platform::write_file(
            file_, content.data() + done, qncore::safe_cast<std::uint32_t>(content.size() - done));
        if (!written) {
            throw_write_error(filename_, location, written.error());
        }
        done += *written;
    }
    for (const auto finish : {platform::set_end_of_file, platform::flush_file}) {
        if (const platform::SystemError error = finish(file_)) {
            throw_write_error(filename_, location, error);
        }
    }
}

} // namespace qncertificates
