#include "tools/vdcertificates/output.h"

#include <cstdio>

#include "platform/terminal.h"
#include "tools/vdcertificates/exit_status.h"
#include "tools/vdcertificates/text_checks.h"

namespace tool {
namespace {

constexpr std::size_t full = 65536;

std::optional<std::string_view> when(bool condition, const std::string& value) {
    return condition ? std::optional<std::string_view>(value) : std::nullopt;
}

bool has_trusted_path(const Entry& entry) {
    const Role* role = entry.role();
    return role == nullptr || role->has_trusted_path;
}

} // namespace

const std::array<Field, 7>& fields() {
    using Value = std::optional<std::string_view>;
    static constexpr std::array<Field, 7> all{{
        {"role", "ROLE", [](const Entry& entry) { return Value(entry.role_name()); }},
        {"server", "SERVER",
         [](const Entry& entry) { return when(entry.by_server, entry.server); }},
        {"public_key", "PUBLIC KEY",
         [](const Entry& entry) { return Value(entry.node.publicKeyPath); }},
        {"private_key", "PRIVATE KEY",
         [](const Entry& entry) { return Value(entry.node.privateKeyPath); }},
        {"certificate", "CERTIFICATE",
         [](const Entry& entry) { return Value(entry.node.certificatePath); }},
        {"trusted", "TRUSTED",
         [](const Entry& entry) {
             return when(has_trusted_path(entry), entry.node.trustedCertificatePath);
         }},
        {"password", "PASSWORD",
         [](const Entry& entry) { return when(entry.password_is_readable, entry.node.password); }},
    }};
    return all;
}

void Output::append_printable(std::string_view text) {
    for_each_printable(text, [this](std::string_view piece) { text_.append(piece); });
}

void Output::append_column(std::string_view text, std::size_t width) {
    append_printable(text);
    for (std::size_t filled = printable_width(text); filled < width; ++filled) {
        text_.append(" ");
    }
}

void Output::flush_when_full() {
    if (text_.text().size() >= full) {
        flush();
    }
}

void Output::flush() {
    print(text_.text());
    text_.clear();
}

void append_line(Output& output, std::string_view name, std::string_view value, std::size_t width) {
    if (platform::output_is_terminal()) {
        output.append_column(name, width);
    } else {
        output << name << ": ";
    }
    output.append_printable(value);
    output << "\n";
}

void print(std::string_view text) {
    std::setvbuf(stdout, nullptr, _IONBF, 0); // so that no other buffer gets a password
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size()) {
        throw Failure("cannot write to standard output");
    }
}

void print_error(std::string_view message) noexcept {
    const auto write = [](std::string_view piece) {
        std::fwrite(piece.data(), 1, piece.size(), stderr);
    };
    write("vdcertificates: ");
    for_each_printable(message, write);
    write("\n");
}

} // namespace tool
