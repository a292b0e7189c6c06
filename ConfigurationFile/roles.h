#pragma once

#include <string>

#include "ConfigurationFile/configuration_file_access.h"

namespace vdcertificates {

/// One certificate role: where its entry is in the file, and how its accessors trace.
struct Role {
    const std::string& element; ///< name of its entry
    const ConfigurationFileAccess::Section& section;
    const char* setter; ///< qualified names
    const char* getter;
    const char* trace_format; ///< of the arguments: server name, three paths, trusted path
    bool by_server = true;    ///< grouped under a server name, else directly in the section
    bool has_trusted_path = true;  ///< its accessors carry the trusted path
    bool tries_short_name = false; ///< its getter makes a second attempt with the short host name
};

namespace roles {

extern const Role cluster;
extern const Role subsystems;
extern const Role subsystems_server;
extern const Role subsystems_remote_client;
extern const Role remote_client;
extern const Role web_config;
extern const Role device;
extern const Role media_retrieval_server;
extern const Role media_retrieval_client;

} // namespace roles

/// The outputs of a getter; `trusted_path` is null for roles without one.
struct RoleOutputs {
    std::string& public_key;
    std::string& private_key;
    std::string& certificate;
    std::string& password;
    std::string* trusted_path;
};

/// Runs the private operation of an accessor; returns false if anything was thrown.
template <class Operation>
bool succeeds(const Operation& operation) {
    try {
        operation();
        return true;
    } catch (...) {
        return false;
    }
}

/// The bodies of all setters and of all getters. `serverName` is ignored for the cluster.
bool set_role(ConfigurationFile& file, const Role& role, const std::string& serverName,
              CertificateNode entry);
bool get_role(ConfigurationFile& file, const Role& role, const std::string& serverName,
              const RoleOutputs& outputs);

} // namespace vdcertificates
