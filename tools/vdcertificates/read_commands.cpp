#include <deque>

#include "ConfigurationFile/machine_name.h"
#include "platform/terminal.h"
#include "qncore/string_conversion.h"
#include "tools/vdcertificates/commands.h"
#include "tools/vdcertificates/json_writer.h"
#include "tools/vdcertificates/requests.h"
#include "tools/vdcertificates/store.h"
#include "tools/vdcertificates/text_checks.h"

namespace tool {
namespace {

using qncore::equal_nocase_ascii;

constexpr std::size_t key_width = 13; ///< of the longest key of an entry, and two blanks

/// Throws Failure unless the whole file was read.
void check_reading(const Store& store, const Reading& reading) {
    if (!reading.fault.empty()) {
        throw Failure(store.path() + " cannot be read to its end: " + reading.fault +
                      " (vdcertificates check tells more)");
    }
    if (!reading.root_is_right) {
        throw Failure(store.path() + " is no configuration file: its root element is '" +
                      reading.root + "'");
    }
}

void warn_of_passwords(const Store& store, std::size_t count, const std::string& fault) {
    if (count > 0) {
        print_error("warning: " + std::to_string(count) + " password" + (count > 1 ? "s" : "") +
                    " in " + store.path() + " cannot be deciphered: " + fault);
    }
}

/// Searches as the library does: the first spelling of the server in byte order, and there the
/// first entry of the role.
class Search {
  public:
    Search(const Role& role, const std::string& server)
        : role_(role)
        , server_(server) {}

    void look_at(Entry&& entry) {
        if (*entry.section != role_.section || entry.by_server != role_.by_server ||
            !equal_nocase_ascii(entry.server, server_)) {
            return;
        }
        if (!spelling_ || entry.server < *spelling_) {
            spelling_ = entry.server;
            found_.reset();
        }
        if (!found_ && entry.server == *spelling_ &&
            equal_nocase_ascii(entry.node.name, role_.element)) {
            found_ = std::move(entry);
        }
    }

    std::optional<Entry>& found() noexcept { return found_; }

  private:
    const Role& role_;
    std::string server_;
    std::optional<std::string> spelling_;
    std::optional<Entry> found_;
};

std::optional<Entry> search(Store& store, const Role& role, const std::string& server) {
    Search search(role, server);
    const Reading reading = store.read([&](Entry&& entry) { search.look_at(std::move(entry)); });
    check_reading(store, reading);
    if (search.found() && !search.found()->password_is_readable) {
        warn_of_passwords(store, 1, reading.password_fault);
    }
    return std::move(search.found());
}

/// True if the server may be stored under another name than the given one.
bool tries_short_name(const Target& target, const std::optional<Entry>& found) {
    return target.role.tries_short_name && target.server.find_first_of(".:") != std::string::npos &&
           (!found ||
            (found->node.certificatePath.empty() && found->node.trustedCertificatePath.empty()));
}

std::optional<Entry> find_entry(Store& store, const Target& target) {
    std::optional<Entry> found = search(store, target.role, target.server);
    store.unlock(); // what follows may wait for the network or a pipe
    if (!tries_short_name(target, found)) {
        return found;
    }
    const std::string host = vdcertificates::auto_search_string().to_host_name(target.server);
    store.lock();
    std::optional<Entry> second = search(store, target.role, host);
    store.unlock();
    return second ? std::move(second) : std::move(found);
}

const Field* field_of(const Arguments& arguments) {
    if (!arguments.has(Option::field)) {
        return nullptr;
    }
    const std::string& name = arguments.text(Option::field);
    for (const Field& field : fields()) {
        if (field.key != name) {
            continue;
        }
        if (&field == &fields().back() && !arguments.has(Option::show_password)) {
            throw UsageError("--field password needs --show-password");
        }
        return &field;
    }
    throw UsageError("unknown field '" + name + "'");
}

/// Prints the value unchanged; on a terminal, unprintable characters are replaced.
ExitStatus print_field(const Field& field, const Entry& entry) {
    const auto value = field.value(entry);
    if (!value) {
        throw Failure("the entry " + entry.title() + " has no readable " + std::string(field.key));
    }
    Output output;
    if (platform::output_is_terminal()) {
        output.append_printable(*value);
    } else {
        output << *value;
    }
    output << "\n";
    output.flush();
    return status_done;
}

/// Calls `visit` with the index of each field to print, the field, and whether it is the last one.
template <class Visit>
void for_each_column(bool passwords, const Visit& visit) {
    const std::size_t count = fields().size() - (passwords ? 0 : 1);
    for (std::size_t i = 0; i < count; ++i) {
        visit(i, fields()[i], i + 1 == count);
    }
}

ExitStatus print_entry(const Entry& entry, Format format, bool passwords) {
    Output output;
    if (format == Format::json) {
        JsonWriter(output.text()).entry(entry, passwords);
        output << "\n";
    } else {
        for_each_column(passwords, [&](std::size_t, const Field& field, bool) {
            if (const auto value = field.value(entry)) { // a field of its role
                append_line(output, field.key, *value, key_width);
            }
        });
    }
    output.flush();
    return status_done;
}

using Entries = std::deque<Entry>;

void print_table(const Entries& entries, bool passwords) {
    std::array<std::size_t, std::tuple_size_v<std::decay_t<decltype(fields())>>> widths{};
    for_each_column(passwords, [&](std::size_t i, const Field& field, bool) {
        widths[i] = field.heading.size();
        for (const Entry& entry : entries) {
            widths[i] = std::max(widths[i], printable_width(field.value(entry).value_or("")));
        }
    });
    Output output;
    const auto append = [&](std::size_t i, std::string_view text, bool is_last) {
        output.append_column(text, is_last ? 0 : widths[i] + 2);
        output << (is_last ? "\n" : "");
    };
    for_each_column(passwords, [&](std::size_t i, const Field& field, bool is_last) {
        append(i, field.heading, is_last);
    });
    for (const Entry& entry : entries) {
        for_each_column(passwords, [&](std::size_t i, const Field& field, bool is_last) {
            append(i, field.value(entry).value_or(""), is_last);
        });
        output.flush_when_full();
    }
    output.flush();
}

void print_lines(const Entries& entries, bool passwords) {
    Output output;
    for (const Entry& entry : entries) {
        for_each_column(passwords, [&](std::size_t, const Field& field, bool is_last) {
            output.append_printable(field.value(entry).value_or(""));
            output << (is_last ? "\n" : "\t");
        });
        output.flush_when_full();
    }
    output.flush();
}

void print_json(const Entries& entries, bool passwords) {
    Output output;
    JsonWriter json(output.text());
    json.begin('[');
    for (const Entry& entry : entries) {
        json.entry(entry, passwords);
        output.flush_when_full();
    }
    json.end();
    output << "\n";
    output.flush();
}

} // namespace

ExitStatus run_get(const Arguments& arguments) {
    const Target target = target_of(arguments, false);
    const Field* field = field_of(arguments);
    const Format format = format_of(arguments);
    Store store;
    store.print_made();
    store.print_warnings();
    const std::optional<Entry> entry = find_entry(store, target);
    if (!entry) {
        return no_entry(target);
    }
    return field != nullptr ? print_field(*field, *entry)
                            : print_entry(*entry, format, arguments.has(Option::show_password));
}

ExitStatus run_list(const Arguments& arguments) {
    const Format format = format_of(arguments);
    const bool passwords = arguments.has(Option::show_passwords);
    Store store;
    Entries entries;
    const Reading reading = store.read([&](Entry&& entry) { entries.push_back(std::move(entry)); });
    store.unlock();
    store.print_made();
    store.print_warnings();
    check_reading(store, reading);
    warn_of_passwords(store, reading.unreadable_passwords.size(), reading.password_fault);
    const auto print_all = format == Format::json           ? print_json
                           : platform::output_is_terminal() ? print_table
                                                            : print_lines;
    print_all(entries, passwords);
    return status_done;
}

} // namespace tool
