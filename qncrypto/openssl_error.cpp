#include "qncrypto/openssl_error.h"

#include <array>
#include <string_view>

#include <openssl/err.h>

#include "qncore/error_composer.h"
#include "qncore/streamers.h"
#include "qncrypto/errors.h"

namespace qncrypto {
namespace {

/// OpenSSL's text, or `unknown` if that is null or empty.
qncore::SourceString known_text(const char* text, const char* unknown) {
    const std::string_view view = text != nullptr ? text : "";
    return view.empty() ? qncore::SourceString(unknown) : qncore::SourceString::copy_of(view);
}

qncore::SourceLocation openssl_location(const char* function, const char* file, int line) {
    qncore::SourceLocation location;
    location.function = known_text(function, "#Unknown#"); // required: with a capital
    location.file = known_text(file, "#unknown#");
    location.line = static_cast<unsigned int>(line);
    return location;
}

} // namespace

qncore::ErrorInfoPtr openssl_error_info(int maxDepth) {
    if (maxDepth <= 0) {
        return {};
    }
    const char* file = nullptr;
    const char* function = nullptr;
    int line = 0;
    const unsigned long code = ERR_get_error_all(&file, &line, &function, nullptr, nullptr);
    if (code == 0) {
        return {};
    }
    // Copied before the next entry is removed, since the texts belong to the queue.
    const qncore::SourceLocation location = openssl_location(function, file, line);

    std::array<char, 256> words{};
    const char* reason = ERR_reason_error_string(code);
    if (reason == nullptr) {
        ERR_error_string_n(code, words.data(), words.size());
        reason = words.data();
    }
    const char* library = ERR_lib_error_string(code);

    qncore::ErrorComposer composer(
        "OpenSSL error!  Reason: \"{@reason}\", Library: {@library}, Code: {@code}");
    composer.param("code", qncore::streamers::Hex(code, 0))
        .param("reason", reason)
        .param("library", library != nullptr ? library : "#unknown#");
    return composer.create(error::qncrypto_openssl, location, openssl_error_info(maxDepth - 1));
}

bool is_openssl_fault(const qncore::ErrorInfoPtr& info) {
    if (!info) {
        return false;
    }
    const std::string* code = info->params().find("code");
    return (code != nullptr && ERR_FATAL_ERROR(std::stoul(*code, nullptr, 16)) != 0) ||
           is_openssl_fault(info->nested());
}

void throw_openssl_error(const qncore::ErrorCode& code, const char* text,
                         const qncore::SourceLocation& location) {
    qncore::throw_error(code, text, location, openssl_error_info(openssl_error_depth));
}

void deliver_openssl_error(qncore::ErrorInfoPtr* error, const qncore::ErrorCode& code,
                           const char* text, const qncore::SourceLocation& location) {
    qncore::ErrorInfoPtr nested = openssl_error_info(openssl_error_depth);
    qncore::ErrorComposer(text).create_transfer(error, code, location, std::move(nested));
}

} // namespace qncrypto
