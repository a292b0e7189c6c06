// A service that loads a server's new certificate without a restart: it waits with inotify until
// the file changes, and reads its entry again. Linux. Usage: reload_service SERVER
#include <cstdlib>
#include <cstring>
#include <exception>
#include <filesystem>
#include <iostream>
#include <stdexcept>
#include <string>
#include <tuple>

#include <poll.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <ConfigurationFile/configuration_file.h>

namespace {

using vdcertificates::ConfigurationFile;

struct Entry {
    std::string publicKey, privateKey, certificate, password, trusted;
    bool operator==(const Entry&) const = default;
};

/// The file that the library uses, found by the same rules.
std::filesystem::path configuration_file() {
    const auto& variable = ConfigurationFile::sm_configurationFilePathEnvironmentVariable;
    if (const char* path = std::getenv(variable.c_str()); path != nullptr && *path != '\0') {
        return path;
    }
    return std::filesystem::path(
               vdcertificates::create_and_get_default_root_configuration_directory()) /
           (vdcertificates::get_local_machine_name() + "_" +
            ConfigurationFile::sm_configurationFileName);
}

/// Watches the file's directory, and so also notices a file that is created later or replaced.
class Watch {
  public:
    explicit Watch(const std::filesystem::path& file)
        : name_(file.filename())
        , descriptor_(inotify_init1(IN_CLOEXEC)) {
        // Not IN_CLOSE_WRITE: every reader opens the file for writing once, to test its permission.
        if (inotify_add_watch(descriptor_, file.parent_path().c_str(),
                              IN_MODIFY | IN_MOVED_TO | IN_CREATE) < 0) {
            throw std::runtime_error("cannot watch " + file.parent_path().string() + ": " +
                                     std::strerror(errno));
        }
    }
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;
    ~Watch() { close(descriptor_); }

    /// Returns after the file has changed and then stayed the same for a moment: a change truncates
    /// the file and writes it, which are two events.
    void wait() const {
        constexpr int forever = -1;
        constexpr int moment = 100; // milliseconds
        while (!events_name_file(forever)) {
        }
        while (events_name_file(moment)) {
        }
    }

  private:
    /// Reads the events that arrive within the time. Returns true if one of them names the file.
    bool events_name_file(int milliseconds) const {
        pollfd waiting{descriptor_, POLLIN, 0};
        if (poll(&waiting, 1, milliseconds) <= 0) {
            return false;
        }
        alignas(inotify_event) char buffer[4096];
        const ssize_t size = read(descriptor_, buffer, sizeof buffer);
        bool named = false;
        for (ssize_t place = 0; place < size;) {
            const auto* event = reinterpret_cast<const inotify_event*>(buffer + place);
            named |= event->len > 0 && name_ == event->name;
            place += static_cast<ssize_t>(sizeof *event + event->len);
        }
        return named;
    }

    std::string name_;
    int descriptor_;
};

/// Returns false if the file cannot be read now; the service then keeps its entry.
bool read_entry(ConfigurationFile& file, const std::string& server, Entry& entry) {
    Entry read;
    if (!file.get_subsystems_server_certificate_information(server, read.publicKey, read.privateKey,
                                                            read.certificate, read.password,
                                                            read.trusted)) {
        return false;
    }
    entry = read;
    return true;
}

void serve(const std::string& server) {
    const Watch watch(configuration_file()); // before the first read, so that no change is missed
    ConfigurationFile file;
    Entry used;
    for (;; watch.wait()) {
        Entry entry;
        if (!read_entry(file, server, entry)) {
            std::cerr << "the file cannot be read; the former entry stays in use\n";
        } else if (entry != used) {
            used = entry;
            std::cout << "using " << used.certificate << std::endl; // load the certificate here
        }
    }
}

} // namespace

int main(int count, char** words) {
    if (count != 2) {
        std::cerr << "Usage: reload_service SERVER\n";
        return 2;
    }
    try {
        serve(words[1]);
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return 1;
    }
}
