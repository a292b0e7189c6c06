#include "qncertificates/key_file.h"

#include <cstdint>

#include "platform/file_system.h"
#include "platform/key_file.h"
#include "qncertificates/errors.h"
#include "qncertificates/patient_open.h"
#include "qncore/error_composer.h"
#include "qncore/safe_cast.h"

namespace qncertificates {
namespace {

[[noreturn]] void throw_file_error(const char* message, const std::string& filename,
                                   const char* function, platform::SystemError error) {
    qncore::ErrorComposer(message)
        .param("filename", filename)
        .throw_with_nested_system_error(error::qncertificates_parameter_invalid,
                                        QN_LOCATION(function), error);
}

/// The value of a result; throws its error.
template <class T>
T value_of(const platform::Result<T>& result, const char* message, const std::string& filename,
           const char* function) {
    if (!result) {
        throw_file_error(message, filename, function, result.error());
    }
    return *result;
}

/// Reads an open file from its position to its end.
qncrypto::Key read_content(platform::FileHandle file, const std::string& filename) {
    qncrypto::Key content(largest_key_file + 1);
    std::size_t done = 0;
    std::uint32_t count = 1;
    while (count != 0 && done < content.size()) {
        count = value_of(
            platform::read_file(file, content.data() + done,
                                qncore::safe_cast<std::uint32_t>(content.size() - done)),
            "Reading key file \"{@filename}\" failed", filename, "qncertificates::read_key_file()");
        done += count;
    }
    return {content.data(), done};
}

platform::FileHandle open_for_reading(const std::string& filename) {
    return open_patiently([&] {
        return value_of(platform::open_file(filename, platform::FileAccess::read,
                                            platform::FileDisposition::open_existing,
                                            platform::FileSharing::read, {}),
                        "Unable to open key file \"{@filename}\"", filename,
                        "qncertificates::read_key_file()");
    });
}

constexpr const char* writer_name = "qncertificates::KeyFileWriter::KeyFileWriter()";
constexpr const char* open_message =
    "Unable to open key file \"{@filename}\" for reading and writing";

platform::FileHandle open_for_writing(const std::string& filename) {
    return open_patiently([&] {
        return value_of(platform::open_key_file(filename), open_message, filename, writer_name);
    });
}

} // namespace

bool is_missing(const std::string& filename) {
    const platform::SystemError error = platform::check_existence(filename);
    if (error && !error.is_not_found()) {
        throw_file_error("Unable to look for key file \"{@filename}\"", filename,
                         "qncertificates::is_missing()", error);
    }
    return error.is_not_found();
}

qncrypto::Key read_key_file(const std::string& filename) {
    struct Closer {
        platform::FileHandle file;
        ~Closer() { platform::close_file(file); }
    };
    const Closer opened{open_for_reading(filename)};
    return read_content(opened.file, filename);
}

KeyFileWriter::KeyFileWriter(const std::string& filename)
    : filename_(filename)
    , created_(is_missing(filename))
    , file_(open_for_writing(filename)) {}

KeyFileWriter::~KeyFileWriter() {
    platform::close_file(file_);
    if (created_) {
        platform::remove_file(filename_.c_str());
    }
}

qncrypto::Key KeyFileWriter::content() const {
    return read_content(file_, filename_);
}

void KeyFileWriter::replace_content(const qncrypto::Key& content) const {
    constexpr const char* function = "qncertificates::KeyFileWriter::replace_content()";
    constexpr const char* message = "Writing to key file \"{@filename}\" failed";
    value_of(platform::seek_file(file_, 0, platform::SeekMethod::begin), message, filename_,
             function);
    platform::SystemError error =
        platform::write_all(file_, {reinterpret_cast<const char*>(content.data()), content.size()});
    error = error ? error : platform::set_end_of_file(file_);
    error = error ? error : platform::flush_file(file_);
    if (error) {
        throw_file_error(message, filename_, function, error);
    }
}

} // namespace qncertificates
