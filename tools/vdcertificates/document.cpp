#include "tools/vdcertificates/document.h"

#include "ConfigurationFile/configuration_file.h"
#include "ConfigurationFile/reading.h"
#include "platform/file_operations.h"
#include "platform/file_system.h"
#include "qnfile/file_stream.h"
#include "qnxml/stream_tokenizer.h"
#include "tools/vdcertificates/exit_status.h"
#include "tools/vdcertificates/progress.h"

namespace tool {
namespace {

using vdcertificates::ConfigurationFile;
using vdcertificates::for_each_child;
using Element = qnxml::XmlReader::ElementPtr;

constexpr unsigned int first_line = 1;
constexpr std::size_t buffer_size = 65536;

Failure refused_opening(const std::string& path, const std::string& cause) {
    return Failure(path + " cannot be opened: " + cause, "file_unreadable", path);
}

class DocumentReader {
  public:
    DocumentReader(const std::string& path, vdcertificates::PasswordCipher* cipher,
                   const EntryVisitor& visit, Reading& reading)
        : tokenizer_(qnuri::UriReference(), first_line, buffer_size, open(path))
        , reader_(&tokenizer_)
        , cipher_(cipher)
        , visit_(visit)
        , reading_(reading) {}

    void read() {
        reader_.next_element();
        if (reader_.node_type() != qnxml::XmlNodeType::Element) {
            reading_.root_is_right = reading_.file_is_empty;
            return;
        }
        const Element root = reader_.current_element();
        reading_.root = root->qualified_name();
        reading_.root_is_right = reading_.root == ConfigurationFile::sm_configurationFile;
        if (reading_.root_is_right) {
            for_each_child(reader_, root, [this](const Element& child) { read_section(child); });
        }
    }

  private:
    static qncore::RefCountPtr<qnfile::FileReadStream> open(const std::string& path) {
        try {
            return qnfile::FileReadStream::create(path, qnfile::share_none,
                                                  qnfile::flag_sequential_scan);
        } catch (const std::exception& exception) {
            throw refused_opening(path, cause_of(exception));
        }
    }

    void read_section(const Element& element) {
        const std::string* section = find_section(element->qualified_name());
        if (section == nullptr) {
            reading_.ignored.push_back("the element '" + element->qualified_name() +
                                       "' in the root element");
            return;
        }
        vdcertificates::for_each_entry(reader_, element,
                                       [&](const Element& entry, const std::string* server) {
                                           read_entry(entry, *section, server);
                                       });
    }

    void read_entry(const Element& element, const std::string& section, const std::string* server) {
        Entry entry;
        entry.section = &section;
        entry.by_server = server != nullptr;
        entry.server = server != nullptr ? *server : std::string();
        entry.node.name = element->qualified_name();
        for_each_child(reader_, element, [&](const Element& child) { read_field(child, entry); });
        if (!entry.password_is_readable) {
            reading_.unreadable_passwords.push_back(entry.title());
        }
        if (++entries_ % entries_between_looks == 0) {
            progress_.show(std::to_string(entries_) + " entries read");
        }
        last_.node.name = entry.node.name;
        last_.by_server = entry.by_server;
        last_.server = entry.server;
        visit_(std::move(entry));
    }

    void read_field(const Element& element, Entry& entry) {
        const std::string& name = element->qualified_name();
        if (const auto field = vdcertificates::path_field(name)) {
            entry.node.*field = std::string(std::string_view(reader_.read_element_text()));
        } else if (name == "Password") {
            read_password(entry);
        } else {
            reading_.ignored.push_back("the element '" + name + "' of the entry " + entry.title());
        }
    }

    void read_password(Entry& entry) {
        std::string stored = reader_.read_element_text();
        wipe(entry.node.password);
        entry.password_is_readable = true;
        if (stored.empty() || cipher_ == nullptr) {
            return;
        }
        entry.node.password.reserve(smallest_allocation);
        try {
            const Secret password(cipher_->decipher(stored));
            entry.node.password.append(password.text());
        } catch (const std::bad_alloc&) {
            throw;
        } catch (const std::exception& exception) {
            entry.password_is_readable = false;
            if (reading_.password_fault.empty()) {
                reading_.password_fault = cause_of(exception);
            }
        }
    }

  public:
    std::string last_entry() const { return entries_ == 0 ? std::string() : last_.title(); }

  private:
    static constexpr std::size_t entries_between_looks = 256;
    /// Longer than a string stores inline, so that moving it moves the buffer and leaves no copy.
    static constexpr std::size_t smallest_allocation = 32;

    qnxml::XmlStreamTokenizer tokenizer_;
    qnxml::XmlReader reader_;
    vdcertificates::PasswordCipher* cipher_;
    const EntryVisitor& visit_;
    Reading& reading_;
    std::size_t entries_ = 0;
    Entry last_; ///< without its fields
    Progress progress_;
};

} // namespace

Reading read_document(const std::string& path, vdcertificates::PasswordCipher* cipher,
                      const EntryVisitor& visit) {
    Reading reading;
    if (platform::check_existence(path).is_not_found()) {
        return reading;
    }
    reading.file_exists = true;
    const auto size = platform::file_size_by_name(path);
    if (!size) {
        throw refused_opening(path, platform::describe(size.error()));
    }
    reading.file_is_empty = *size == 0;
    DocumentReader reader(path, cipher, visit, reading);
    try {
        reader.read();
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& exception) {
        reading.fault = cause_of(exception);
        reading.last_entry = reader.last_entry();
    }
    return reading;
}

} // namespace tool
