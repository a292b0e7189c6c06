#include <functional>
#include <string>

#include "ConfigurationFile/configuration_file_access.h"
#include "ConfigurationFile/errors.h"
#include "ConfigurationFile/merge.h"
#include "ConfigurationFile/password_cipher.h"
#include "ConfigurationFile/trace_topic.h"
#include "platform/file_system.h"
#include "qncertificates/patient_open.h"
#include "qncore/error_exception.h"
#include "qnfile/file_stream.h"

namespace vdcertificates {

using Access = ConfigurationFileAccess;

namespace {

qncore::RefCountPtr<qnfile::FileWriteStream> open_emptied(const std::string& path) {
    platform::create_for_group(path); // a failure shows when the file is opened
    return qncertificates::open_patiently([&] {
        return qnfile::FileWriteStream::create(path, qnfile::create_always, qnfile::share_none,
                                               qnfile::flag_write_through);
    });
}

/// Appends the text of the whole file. `afterServer` may take away what `text` holds.
void append_document(std::string& text, const Access::Document& nodes, PasswordCipher& cipher,
                     const std::function<void()>& afterServer = nullptr) {
    text += "<" + ConfigurationFile::sm_configurationFile + ">";
    for (std::size_t i = 0; i < Access::sections.size(); ++i) {
        append_section(text, Access::sections[i]->name, *nodes[i], cipher, afterServer);
    }
    text += "</" + ConfigurationFile::sm_configurationFile + ">";
}

} // namespace

void ConfigurationFileAccess::change(ConfigurationFile& file, const Section& section,
                                     const ConfigurationFileNodes& newNodes, const char* function,
                                     bool stopsAtSharingViolation) {
    PasswordCipher cipher(*file.m_certificateKeys, PasswordCipher::Memory::texts);
    std::array<ConfigurationFileNodes, sections.size()> nodes;
    try {
        for (std::size_t i = 0; i < sections.size(); ++i) {
            read_section(file, sections[i]->name, nodes[i], keeps_all, cipher);
        }
    } catch (const qncore::ErrorException& exception) {
        if (stopsAtSharingViolation && exception.matches(error::sharing_violation)) {
            QN_TRACE_ERROR(g_traceTopic, function,
                           "NOT performing operation due to SHARING VIOLATION: {}",
                           exception.what());
            exception.rethrow();
        }
        // Required: after any other failure the change continues with what could be read.
    } catch (const std::exception& exception) {
        QN_TRACE_ERROR(g_traceTopic, function, "Reading ended early: {}", exception.what());
    } catch (...) {
        QN_TRACE_ERROR(g_traceTopic, function, "Reading ended early");
    }
    for (std::size_t i = 0; i < sections.size(); ++i) {
        if (sections[i] == &section) {
            vdcertificates::merge(newNodes, nodes[i]);
        }
    }
    write(file, {&nodes[0], &nodes[1], &nodes[2]}, cipher);
}

void ConfigurationFileAccess::write(ConfigurationFile& file, const Document& nodes,
                                    PasswordCipher& cipher) {
    std::string text;
    append_document(text, nodes, cipher);
    const std::string path = file.get_configuration_file_path();
    const ConfigurationFileExclusiveAccessLock lock(file.m_configurationFileMutex);
    open_emptied(path)->write(text.c_str(), text.size());
}

void ConfigurationFileAccess::write_in_pieces(ConfigurationFile& file, const Document& nodes,
                                              PasswordCipher& cipher, std::size_t piece) {
    const std::string path = file.get_configuration_file_path();
    const ConfigurationFileExclusiveAccessLock lock(file.m_configurationFileMutex);
    qncore::RefCountPtr<qnfile::FileWriteStream> stream;
    std::string text;
    const auto write_text = [&] {
        if (!stream) {
            stream = open_emptied(path);
        }
        stream->write(text.c_str(), text.size());
        text.clear();
    };
    append_document(text, nodes, cipher, [&] {
        if (text.size() >= piece) {
            write_text();
        }
    });
    write_text();
}

void ConfigurationFile::set_subsystems_certificate_information(
    const ConfigurationFileNodes& newNodes) {
    Access::change(*this, Access::notifiers, newNodes,
                   "vdcertificates::ConfigurationFile::set_subsystems_certificate_information()",
                   true);
}

void ConfigurationFile::set_devices_certificate_information(
    const ConfigurationFileNodes& newNodes) {
    Access::change(*this, Access::devices, newNodes,
                   "vdcertificates::ConfigurationFile::set_devices_certificate_information()",
                   true);
}

// Required: only this one continues after a sharing violation of its reads.
void ConfigurationFile::set_media_retrieval_certificate_information(
    const ConfigurationFileNodes& newNodes) {
    Access::change(
        *this, Access::media_retrieval, newNodes,
        "vdcertificates::ConfigurationFile::set_media_retrieval_certificate_information()", false);
}

} // namespace vdcertificates
