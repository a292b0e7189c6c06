#pragma once

#include <array>
#include <functional>
#include <string>

#include "ConfigurationFile/configuration_file.h"

namespace vdcertificates {

class PasswordCipher;

/// Access to the private operations of ConfigurationFile, which throw on failure: for the bodies
/// that several functions share, for the suite's own tools and for the tests.
struct ConfigurationFileAccess {
    /// One of the three sections of the file, and the functions that read and change it.
    struct Section {
        const std::string& name;
        void (ConfigurationFile::*read)(ConfigurationFileNodes& nodes);
        void (ConfigurationFile::*write)(const ConfigurationFileNodes& newNodes);
    };

    static inline const Section notifiers{
        ConfigurationFile::sm_notifiersNode,
        &ConfigurationFile::get_subsystems_certificate_information,
        &ConfigurationFile::set_subsystems_certificate_information};
    static inline const Section devices{ConfigurationFile::sm_devicesNode,
                                        &ConfigurationFile::get_devices_certificate_information,
                                        &ConfigurationFile::set_devices_certificate_information};
    static inline const Section media_retrieval{
        ConfigurationFile::sm_mediaRetrievalNode,
        &ConfigurationFile::get_media_retrieval_certificate_information,
        &ConfigurationFile::set_media_retrieval_certificate_information};

    /// In the order of the file.
    static inline const std::array<const Section*, 3> sections{&notifiers, &devices,
                                                               &media_retrieval};
    using Document = std::array<const ConfigurationFileNodes*, 3>;

    static ConfigurationFileNodes read(ConfigurationFile& file, const Section& section) {
        ConfigurationFileNodes nodes;
        (file.*section.read)(nodes);
        return nodes;
    }
    static void read(ConfigurationFile& file, const std::string& section,
                     ConfigurationFileNodes& nodes) {
        file.get_certificate_information(nodes, section);
    }
    static std::string merge(ConfigurationFile& file, const ConfigurationFileNodes& newNodes,
                             ConfigurationFileNodes& existingNodes, const std::string& section) {
        std::string text;
        file.set_certificate_information(newNodes, existingNodes, section, text);
        return text;
    }
    static std::string path(ConfigurationFile& file) { return file.get_configuration_file_path(); }

    /// Returns whether a read keeps the entries of a server or, for null, those directly in the
    /// section. Entries that are not kept are read and deciphered, too.
    using Filter = std::function<bool(const std::string* server)>;
    static bool keeps_all(const std::string*) { return true; }

    /// The body of all reads, in reading.cpp. The second form uses a new cipher.
    static void read_section(ConfigurationFile& file, const std::string& nodeName,
                             ConfigurationFileNodes& nodes, const Filter& keeps,
                             PasswordCipher& cipher);
    static void read_section(ConfigurationFile& file, const std::string& nodeName,
                             ConfigurationFileNodes& nodes, const Filter& keeps);

    /// The write half of a change: replaces the content of the file by exactly these sections, in
    /// one write. Throws on failure. The file is then unchanged, or truncated if the write failed.
    static void write(ConfigurationFile& file, const Document& nodes, PasswordCipher& cipher);
    /// The same in pieces of that many bytes or some more, so that the whole text of a larger file
    /// is never in memory. The file is emptied before the first piece is written: after that any
    /// failure truncates it. Holds the lock throughout.
    static void write_in_pieces(ConfigurationFile& file, const Document& nodes,
                                PasswordCipher& cipher, std::size_t piece);

    /// The body of the private setters, in write_cycle.cpp. `function` is the setter's qualified
    /// name; a sharing violation ends the change if `stopsAtSharingViolation`.
    static void change(ConfigurationFile& file, const Section& section,
                       const ConfigurationFileNodes& newNodes, const char* function,
                       bool stopsAtSharingViolation);
};

} // namespace vdcertificates
