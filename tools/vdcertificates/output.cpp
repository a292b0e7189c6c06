#include "tools/vdcertificates/output.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <optional>

#include <nlohmann/json.hpp>

#include "platform/terminal.h"
#include "tools/vdcertificates/exit_status.h"
#include "tools/vdcertificates/roles.h"
#include "tools/vdcertificates/text_checks.h"

namespace tool {
namespace {

using Json = nlohmann::ordered_json;

/// The fields of an entry in the order of the output; an absent one does not belong to the role
/// or was not asked for.
struct Field {
    const char* key;
    std::optional<std::string> value;
};
using Fields = std::array<Field, 7>;

Fields fields_of(const Entry& entry, const OutputStyle& style) {
    const Role* role = find_role_by_element(entry.node.name);
    const bool trusted = role == nullptr || role->has_trusted_path();
    const auto when = [](bool condition, const std::string& value) {
        return condition ? std::optional(value) : std::nullopt;
    };
    return {{{"role", role_name(entry)},
             {"server", when(entry.by_server, entry.server)},
             {"public_key", entry.node.publicKeyPath},
             {"private_key", entry.node.privateKeyPath},
             {"certificate", entry.node.certificatePath},
             {"trusted", when(trusted, entry.node.trustedCertificatePath)},
             {"password", when(style.passwords, entry.node.password)}}};
}

Json json_of(const Entry& entry, const OutputStyle& style) {
    Json object;
    for (auto& [key, value] : fields_of(entry, style)) {
        object[key] = value ? Json(*value) : Json();
    }
    return object;
}

void print_json(const Json& document) {
    // Texts that are not UTF-8 get U+FFFD in place of what is not.
    std::string text = document.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
    print_and_wipe(text);
}

using Row = std::vector<std::string>;

/// Columns that are as wide as their widest text, in characters; the last one is not filled up.
std::string table(const std::vector<Row>& rows) {
    const auto width = [](const std::string& text) {
        return static_cast<std::size_t>(std::ranges::count_if(
            text, [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0) != 0x80; }));
    };
    std::vector<std::size_t> widths(rows.front().size());
    for (const Row& row : rows) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            widths[i] = std::max(widths[i], width(row[i]));
        }
    }
    std::string text;
    for (const Row& row : rows) {
        for (std::size_t i = 0; i + 1 < row.size(); ++i) {
            text += row[i] + std::string(widths[i] + 2 - width(row[i]), ' ');
        }
        text += row.back() + "\n";
    }
    return text;
}

std::string joined(const Row& row) {
    std::string line;
    for (const std::string& text : row) {
        line += line.empty() ? text : "\t" + text;
    }
    return line + "\n";
}

/// The fields of one line of a list: all of them, so that the columns keep their places.
Row row_of(const Entry& entry, const OutputStyle& style) {
    Row row;
    for (const auto& [key, value] : fields_of(entry, style)) {
        row.push_back(printable(value.value_or("")));
    }
    if (!style.passwords) {
        row.pop_back();
    }
    return row;
}

Row header(const OutputStyle& style) {
    Row row{"ROLE", "SERVER", "PUBLIC KEY", "PRIVATE KEY", "CERTIFICATE", "TRUSTED"};
    if (style.passwords) {
        row.emplace_back("PASSWORD");
    }
    return row;
}

} // namespace

std::string role_name(const Entry& entry) {
    const Role* role = find_role_by_element(entry.node.name);
    return role != nullptr ? std::string(role->name) : entry.node.name;
}

void print_lines(const std::vector<Line>& lines) {
    std::string text;
    if (platform::output_is_terminal()) {
        std::vector<Row> rows;
        for (const auto& [name, value] : lines) {
            rows.push_back({name, printable(value)});
        }
        text = table(rows);
    } else {
        for (const auto& [name, value] : lines) {
            text += name + ": " + printable(value) + "\n";
        }
    }
    print_and_wipe(text);
}

void print_entry(const Entry& entry, const OutputStyle& style) {
    if (style.format == Format::json) {
        print_json(json_of(entry, style));
        return;
    }
    std::vector<Line> lines;
    for (const auto& [key, value] : fields_of(entry, style)) {
        if (value) {
            lines.emplace_back(key, *value);
        }
    }
    print_lines(lines);
}

void print_entries(const std::vector<Entry>& entries, const OutputStyle& style) {
    if (style.format == Format::json) {
        Json array = Json::array();
        for (const Entry& entry : entries) {
            array.push_back(json_of(entry, style));
        }
        print_json(array);
        return;
    }
    std::vector<Row> rows;
    for (const Entry& entry : entries) {
        rows.push_back(row_of(entry, style));
    }
    std::string text;
    if (platform::output_is_terminal()) {
        rows.insert(rows.begin(), header(style));
        text = table(rows);
    } else {
        for (const Row& row : rows) {
            text += joined(row);
        }
    }
    print_and_wipe(text);
}

void print_and_wipe(std::string& text) {
    std::setvbuf(stdout, nullptr, _IONBF, 0); // so that no other buffer gets a password
    const bool written = std::fwrite(text.data(), 1, text.size(), stdout) == text.size();
    wipe(text);
    if (!written) {
        throw Failure("cannot write to standard output");
    }
}

void print_error(const std::string& message) {
    const std::string line = "vdcertificates: " + printable(message) + "\n";
    std::fwrite(line.data(), 1, line.size(), stderr);
}

} // namespace tool
