#include "tools/vdcertificates/transaction.h"

#include <algorithm>

#include "ConfigurationFile/configuration_file_access.h"
#include "platform/file_backup.h"
#include "platform/file_system.h"
#include "platform/program.h"
#include "tools/vdcertificates/exit_status.h"
#include "tools/vdcertificates/native_path.h"

namespace tool {
namespace {

using vdcertificates::ConfigurationFileAccess;

constexpr std::size_t most_names = 20;
constexpr std::size_t written_at_once = std::size_t{8} << 20;

/// The names, as many as fit on a line.
std::string joined(const std::vector<std::string>& names) {
    std::string text;
    for (std::size_t i = 0; i < std::min(names.size(), most_names); ++i) {
        text += (i == 0 ? "" : ", ") + names[i];
    }
    if (names.size() > most_names) {
        text += " and " + std::to_string(names.size() - most_names) + " more";
    }
    return text;
}

/// " vdcertificates restore ..." if the former content exists.
std::string restore_advice(const std::string& path) {
    if (platform::check_existence(previous_of(path))) {
        return "";
    }
    return " vdcertificates restore brings " + previous_of(path) + " back.";
}

/// Describes what a change would drop from the file; empty if nothing.
std::string loss(const std::string& path, const Reading& reading) {
    if (!reading.fault.empty()) {
        return (reading.last_entry.empty()
                    ? "all that " + path + " holds"
                    : "all that follows the entry " + reading.last_entry + " in " + path) +
               ", which cannot be read to its end (" + reading.fault + ")";
    }
    if (!reading.root_is_right) {
        return "the document in " + path + ", whose root element is '" + reading.root + "'";
    }
    if (!reading.unreadable_passwords.empty()) {
        return "passwords in " + path + " that cannot be deciphered (" + reading.password_fault +
               "): those of " + joined(reading.unreadable_passwords);
    }
    return joined(reading.ignored) + " of " + path;
}

/// One entry that the file must hold. Sorted as in the file.
struct Expected {
    const std::string* section;
    const std::string* server; ///< null when the entry belongs to none
    const Contents::Node* node;

    bool is(const Entry& entry) const {
        return *section == *entry.section && (server != nullptr) == entry.by_server &&
               (server == nullptr || *server == entry.server) && node->name == entry.node.name &&
               fields_of(*node) == fields_of(entry.node);
    }

    std::string title() const {
        Entry entry;
        entry.node.name = node->name;
        entry.by_server = server != nullptr;
        entry.server = server != nullptr ? *server : std::string();
        return entry.title();
    }
};

/// Ticks off the expected entries when the file is read again.
class Roll {
  public:
    explicit Roll(const Contents& contents) {
        contents.for_each([this](const std::string& section, const std::string* server,
                                 const Contents::Node& node) {
            expected_.push_back({&section, server, &node});
        });
    }

    void tick(const Entry& entry) {
        const auto found = std::find_if(expected_.begin() + next_, expected_.end(),
                                        [&](const Expected& one) { return one.is(entry); });
        if (found != expected_.end()) {
            miss_up_to(found);
            ++next_;
        }
    }

    const std::vector<std::string>& missing() {
        miss_up_to(expected_.end());
        return missing_;
    }

  private:
    using Place = std::vector<Expected>::const_iterator;

    void miss_up_to(Place place) {
        for (; expected_.begin() + next_ != place; ++next_) {
            missing_.push_back((expected_.begin() + next_)->title());
        }
    }

    std::vector<Expected> expected_;
    std::ptrdiff_t next_ = 0;
    std::vector<std::string> missing_;
};

} // namespace

Transaction::Transaction(bool discardUnreadable)
    : discard_(discardUnreadable)
    , store_(discardUnreadable) {
    store_.refuse_change_elsewhere();
    real_path_ = store_.path();
    if (const auto real = platform::real_path(store_.path())) {
        real_path_ = *real;
    }
    native_path_ = native_path(real_path_);
    previous_ = previous_of(real_path_);
    std::error_code error;
    const auto status = std::filesystem::status(native_path_, error);
    was_missing_ = status.type() == std::filesystem::file_type::not_found;
    if (!was_missing_ && !std::filesystem::is_regular_file(status)) {
        throw Failure(store_.path() + " is not a regular file");
    }
    store_.print_warnings();
    read();
}

void Transaction::read() {
    try {
        refuse_losses(store_.read([this](Entry&& entry) { contents_.add(std::move(entry)); }));
    } catch (const Failure& failure) {
        if (!discard_) {
            throw;
        }
    }
}

void Transaction::refuse_losses(const Reading& reading) const {
    if (reading.is_whole() || discard_) {
        return;
    }
    store_.print_made(); // a new pair of keys is why old passwords cannot be read
    throw Failure("nothing is changed, because " + loss(store_.path(), reading) +
                  " would be lost. --discard-unreadable drops it." + restore_advice(real_path_));
}

void Transaction::commit() {
    const platform::SignalsHeld held;
    keep_previous();
    try {
        write();
        check_outcome();
    } catch (const std::exception& exception) {
        const std::string outcome = put_back() ? ", and the former content is back: "
                                    : is_kept_
                                        ? ", and the former content is in " + previous_ + ": "
                                        : " and is empty or cut: ";
        throw Failure(store_.path() + " could not be changed" + outcome + cause_of(exception));
    }
}

void Transaction::keep_previous() {
    std::error_code error;
    if (was_missing_ || std::filesystem::file_size(native_path_, error) == 0) {
        return;
    }
    platform::SystemError failure = platform::copy_whole(real_path_, previous_);
    if (failure.is_access_denied() && discard_) { // what may not be read can still be kept
        failure = platform::rename_over(real_path_, previous_);
    }
    if (failure) {
        throw Failure("nothing is changed, because the former content cannot be kept as " +
                      previous_ + ": " + platform::describe(failure));
    }
    is_kept_ = true;
}

/// Returns false if the former content could not be put back. Allocates no memory on Linux: a lack
/// of memory may be why the change failed.
bool Transaction::put_back() const {
    if (is_kept_) {
        return !platform::rename_over(previous_, real_path_);
    }
    std::error_code error;
    if (was_missing_) {
        std::filesystem::remove(native_path_, error);
    } else { // it was empty
        std::filesystem::resize_file(native_path_, 0, error);
    }
    return !error;
}

void Transaction::write() {
    const auto& sections = contents_.sections();
    ConfigurationFileAccess::write_in_pieces(store_.file(),
                                             {&sections[0], &sections[1], &sections[2]},
                                             store_.cipher(), written_at_once);
}

void Transaction::check_outcome() {
    Roll roll(contents_);
    const Reading reading = store_.read([&](Entry&& entry) { roll.tick(entry); });
    if (const auto& missing = roll.missing(); !missing.empty()) {
        throw Failure("the file does not keep these entries as they are: " + joined(missing) +
                      (reading.fault.empty() ? "" : " (" + reading.fault + ")"));
    }
}

void restore_previous(bool discardUnreadable) {
    Store store;
    store.refuse_change_elsewhere();
    const auto real = platform::real_path(store.path());
    const std::string path = real ? *real : store.path();
    const std::string previous = previous_of(path);
    if (const platform::SystemError error = platform::check_existence(previous)) {
        throw Failure("there is no former content to bring back: " + previous + ": " +
                      platform::describe(error));
    }
    const Reading reading = read_document(previous, &store.cipher(), [](Entry&&) {});
    if (!reading.is_whole() && !discardUnreadable) {
        throw Failure("nothing is changed, because " + loss(previous, reading) +
                      " would not come back. --discard-unreadable brings the rest back.");
    }
    const platform::SignalsHeld held;
    const std::string replaced = path + ".replaced";
    platform::SystemError error =
        real ? platform::copy_whole(path, replaced) : platform::SystemError();
    error = error ? error : platform::rename_over(previous, path);
    if (error) {
        platform::remove_file(replaced.c_str());
        throw Failure("cannot bring " + previous + " back: " + platform::describe(error));
    }
    if (real) {
        platform::rename_over(replaced, previous);
    }
}

} // namespace tool
