#include "ConfigurationFile/flat_functions.h"

#include <algorithm>
#include <cwchar>
#include <span>
#include <string>

#include "ConfigurationFile/roles.h"
#include "qncore/string_conversion.h"
#include "qncore/strong_weak_ptr.h"

namespace {

using vdcertificates::Role;

constexpr int answer_read = 1;
constexpr int answer_not_read = 0;
constexpr int answer_bad_argument = -2;
constexpr int flag_lengths = 2;

struct Output {
    wchar_t* buffer;
    unsigned int* length; ///< in wide characters
};

// The outputs by their place: public key, private key, certificate, password, trusted path.
constexpr std::size_t most_outputs = 5;
constexpr std::size_t tested_without_trusted[] = {0, 1, 2, 3};
// Required: the password's length is tested twice and the certificate's not at all.
constexpr std::size_t tested_with_trusted[] = {0, 1, 3, 3, 4};

int copy_texts(std::span<const Output> outputs, const std::wstring* texts) {
    for (const Output& output : outputs) {
        const std::wstring& text = *texts++;
        if (output.buffer == nullptr) {
            continue;
        }
        if (*output.length < text.size()) {
            return answer_bad_argument;
        }
        std::wcsncpy(output.buffer, text.c_str(), *output.length);
    }
    return answer_read;
}

void store_lengths(std::span<const Output> outputs, const std::wstring* texts) {
    for (const Output& output : outputs) {
        *output.length = static_cast<unsigned int>((texts++)->size() + 1);
    }
}

/// The one body of all flat functions.
int answer(const Role& role, const wchar_t* server, std::span<const Output> outputs, int flags) {
    const qncore::StrongPtr<vdcertificates::ConfigurationFile> file(
        new vdcertificates::ConfigurationFile());
    const std::string serverName = server != nullptr ? qncore::to_string(server) : std::string();
    std::string texts[most_outputs];
    const bool read = get_role(
        *file, role, serverName,
        {texts[0], texts[1], texts[2], texts[3], role.has_trusted_path ? &texts[4] : nullptr});
    std::wstring wideTexts[most_outputs];
    std::transform(std::begin(texts), std::end(texts), std::begin(wideTexts),
                   [](const std::string& text) {
                       return qncore::to_wstring(text.c_str(), std::string::npos);
                   });

    const std::span<const std::size_t> tested =
        role.has_trusted_path ? std::span<const std::size_t>(tested_with_trusted)
                              : std::span<const std::size_t>(tested_without_trusted);
    if (std::any_of(tested.begin(), tested.end(),
                    [&](std::size_t place) { return outputs[place].length == nullptr; })) {
        return answer_bad_argument;
    }
    if (flags == 0 && copy_texts(outputs, wideTexts) != answer_read) {
        return answer_bad_argument;
    }
    if ((flags & flag_lengths) != 0) {
        store_lengths(outputs, wideTexts);
    }
    return read ? answer_read : answer_not_read;
}

} // namespace

namespace roles = vdcertificates::roles;

int get_cluster_certificate_information(wchar_t* public_key, unsigned int* public_key_length,
                                        wchar_t* private_key, unsigned int* private_key_length,
                                        wchar_t* certificate, unsigned int* certificate_length,
                                        wchar_t* password, unsigned int* password_length,
                                        int flags) {
    const Output outputs[] = {{public_key, public_key_length},
                              {private_key, private_key_length},
                              {certificate, certificate_length},
                              {password, password_length}};
    return answer(roles::cluster, nullptr, outputs, flags);
}

int get_subsystems_certificate_information(const wchar_t* server, wchar_t* public_key,
                                           unsigned int* public_key_length, wchar_t* private_key,
                                           unsigned int* private_key_length, wchar_t* certificate,
                                           unsigned int* certificate_length, wchar_t* password,
                                           unsigned int* password_length, int flags) {
    const Output outputs[] = {{public_key, public_key_length},
                              {private_key, private_key_length},
                              {certificate, certificate_length},
                              {password, password_length}};
    return answer(roles::subsystems, server, outputs, flags);
}

// The four functions with a trusted path differ only in the role.
#define FLAT_GETTER_WITH_TRUSTED_PATH(function, role)                                              \
    int function(const wchar_t* server, wchar_t* public_key, unsigned int* public_key_length,      \
                 wchar_t* private_key, unsigned int* private_key_length, wchar_t* certificate,     \
                 unsigned int* certificate_length, wchar_t* password,                              \
                 unsigned int* password_length, wchar_t* trusted, unsigned int* trusted_length,    \
                 int flags) {                                                                      \
        const Output outputs[] = {{public_key, public_key_length},                                 \
                                  {private_key, private_key_length},                               \
                                  {certificate, certificate_length},                               \
                                  {password, password_length},                                     \
                                  {trusted, trusted_length}};                                      \
        return answer(role, server, outputs, flags);                                               \
    }

FLAT_GETTER_WITH_TRUSTED_PATH(get_subsystems_server_certificate_information,
                              roles::subsystems_server)
// Required: this one also returns the subsystems server's entry.
FLAT_GETTER_WITH_TRUSTED_PATH(get_subsystems_remote_client_certificate_information,
                              roles::subsystems_server)
FLAT_GETTER_WITH_TRUSTED_PATH(get_remote_client_certificate_information, roles::remote_client)
FLAT_GETTER_WITH_TRUSTED_PATH(get_devices_certificate_information, roles::device)
