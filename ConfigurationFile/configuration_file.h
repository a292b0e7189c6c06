#pragma once

#include <string>

#include "ConfigurationFile/certificate_node.h"
#include "ConfigurationFile/configuration_file_mutex.h"
#include "ConfigurationFile/export.h"
#include "qncore/ref_counted.h"

namespace qncertificates {
class CertificateKeys;
}

// The callers' interface says `const bool`; the qualifier is part of it.
#ifdef __GNUC__
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wignored-qualifiers"
#endif

namespace vdcertificates {

/// The certificate record of this machine: for each role, the paths of its key and certificate
/// files and its password. Every call reads the file anew and every change rewrites it; the object
/// holds only the machine's keys and mutex, which copies share. Thread-safe.
///
/// A getter returns true if the file could be read to its end. If the server or entry is missing,
/// the outputs are unchanged, so pass empty strings. On false they are unchanged, too, unless the
/// look-up of a host name failed (get_subsystems_remote_client_certificate_information).
///
/// A setter returns true after the file has been written. It drops what it cannot read: of a file
/// that is malformed, holds a password that these keys do not decipher, or cannot be opened, only
/// the entries before that point and the new one remain, and the result is true. Only a file that
/// another process holds exclusively ends the change, if `ORVA_Certificates` names it and the
/// section is not "MediaRetrieval". False means that the file does not contain the change: it is
/// unchanged, or truncated if the write failed.
///
/// The trace names the cause of every false (QNTRACE=11). Texts are UTF-8. Server names match
/// regardless of the case of ASCII letters. Setters overwrite all fields, also by empty texts.
/// If a function throws, catch std::exception: the derived type is not part of the package.
class VDCERTIFICATES_API ConfigurationFile {
  public:
    /// Loads the machine's keys. Makes them on first use and replaces files that do not hold a
    /// pair. Throws if they can be neither read nor made, or if the machine-wide mutex fails. Never
    /// replaces files that cannot be read: a later attempt may succeed.
    ConfigurationFile();
    /// @{
    /// Shares the keys and the mutex.
    ConfigurationFile(const ConfigurationFile& other);
    ConfigurationFile& operator=(const ConfigurationFile& other);
    /// @}
    ~ConfigurationFile();

    /// @{
    /// The certificate of the cluster: one per machine.
    const bool
    set_cluster_certificate_information(const std::string& rClusterCertificatePublicKeyFilePath,
                                        const std::string& rClusterCertificatePrivateKeyFilePath,
                                        const std::string& rClusterCertificateFilePath,
                                        const std::string& rPassword);
    const bool
    get_cluster_certificate_information(std::string& rClusterCertificatePublicKeyFilePath,
                                        std::string& rClusterCertificatePrivateKeyFilePath,
                                        std::string& rClusterCertificateFilePath,
                                        std::string& rPassword);
    /// @}

    /// @{
    /// Certificates by server name.
    const bool set_subsystems_certificate_information(
        const std::string& rServerName, const std::string& rSubsystemsCertificatePublicKeyFilePath,
        const std::string& rSubsystemsCertificatePrivateKeyFilePath,
        const std::string& rSubsystemsCertificateFilePath, const std::string& rPassword);
    const bool get_subsystems_certificate_information(
        const std::string& rServerName, std::string& rSubsystemsCertificatePublicKeyFilePath,
        std::string& rSubsystemsCertificatePrivateKeyFilePath,
        std::string& rSubsystemsCertificateFilePath, std::string& rPassword);

    const bool set_subsystems_server_certificate_information(
        const std::string& rServerName,
        const std::string& rSubsystemsServerCertificatePublicKeyFilePath,
        const std::string& rSubsystemsServerCertificatePrivateKeyFilePath,
        const std::string& rSubsystemsServerCertificateFilePath, const std::string& rPassword,
        const std::string& rTrustedCertificateFilePath);
    const bool get_subsystems_server_certificate_information(
        const std::string& rServerName, std::string& rSubsystemsServerCertificatePublicKeyFilePath,
        std::string& rSubsystemsServerCertificatePrivateKeyFilePath,
        std::string& rSubsystemsServerCertificateFilePath, std::string& rPassword,
        std::string& rTrustedCertificateFilePath);

    const bool set_subsystems_remote_client_certificate_information(
        const std::string& rServerName,
        const std::string& rSubsystemsRemoteClientCertificatePublicKeyFilePath,
        const std::string& rSubsystemsRemoteClientCertificatePrivateKeyFilePath,
        const std::string& rSubsystemsRemoteClientCertificateFilePath, const std::string& rPassword,
        const std::string& rTrustedCertificateFilePath);
    /// If the certificate and the trusted path are empty after the search, and the name contains a
    /// dot or a colon, searches again: for the short host name of an address, which may wait for
    /// the network, or for the part of the name before its first dot.
    const bool get_subsystems_remote_client_certificate_information(
        const std::string& rServerName,
        std::string& rSubsystemsRemoteClientCertificatePublicKeyFilePath,
        std::string& rSubsystemsRemoteClientCertificatePrivateKeyFilePath,
        std::string& rSubsystemsRemoteClientCertificateFilePath, std::string& rPassword,
        std::string& rTrustedCertificateFilePath);

    const bool set_remote_client_certificate_information(
        const std::string& rServerName,
        const std::string& rRemoteClientCertificatePublicKeyFilePath,
        const std::string& rRemoteClientCertificatePrivateKeyFilePath,
        const std::string& rRemoteClientCertificateFilePath, const std::string& rPassword,
        const std::string& rTrustedCertificateFilePath);
    const bool get_remote_client_certificate_information(
        const std::string& rServerName, std::string& rRemoteClientCertificatePublicKeyFilePath,
        std::string& rRemoteClientCertificatePrivateKeyFilePath,
        std::string& rRemoteClientCertificateFilePath, std::string& rPassword,
        std::string& rTrustedCertificateFilePath);

    const bool set_webconfig_certificate_information(
        const std::string& rServerName, const std::string& rWebConfigCertificatePublicKeyFilePath,
        const std::string& rWebConfigCertificatePrivateKeyFilePath,
        const std::string& rWebConfigCertificateFilePath, const std::string& rPassword);
    const bool get_webconfig_certificate_information(
        const std::string& rServerName, std::string& rWebConfigCertificatePublicKeyFilePath,
        std::string& rWebConfigCertificatePrivateKeyFilePath,
        std::string& rWebConfigCertificateFilePath, std::string& rPassword);

    const bool set_devices_certificate_information(
        const std::string& rServerName, const std::string& rDevicesCertificatePublicKeyFilePath,
        const std::string& rDevicesCertificatePrivateKeyFilePath,
        const std::string& rDevicesCertificateFilePath, const std::string& rPassword,
        const std::string& rTrustedCertificateFilePath);
    const bool get_devices_certificate_information(
        const std::string& rServerName, std::string& rDevicesCertificatePublicKeyFilePath,
        std::string& rDevicesCertificatePrivateKeyFilePath,
        std::string& rDevicesCertificateFilePath, std::string& rPassword,
        std::string& rTrustedCertificateFilePath);

    const bool set_media_retrieval_server_certificate_information(
        const std::string& rServerName,
        const std::string& rMediaRetrievalServerCertificatePublicKeyFilePath,
        const std::string& rMediaRetrievalServerCertificatePrivateKeyFilePath,
        const std::string& rMediaRetrievalServerCertificateFilePath, const std::string& rPassword,
        const std::string& rTrustedCertificateFilePath);
    const bool get_media_retrieval_server_certificate_information(
        const std::string& rServerName,
        std::string& rMediaRetrievalServerCertificatePublicKeyFilePath,
        std::string& rMediaRetrievalServerCertificatePrivateKeyFilePath,
        std::string& rMediaRetrievalServerCertificateFilePath, std::string& rPassword,
        std::string& rTrustedCertificateFilePath);

    const bool set_media_retrieval_client_certificate_information(
        const std::string& rServerName,
        const std::string& rMediaRetrievalClientCertificatePublicKeyFilePath,
        const std::string& rMediaRetrievalClientCertificatePrivateKeyFilePath,
        const std::string& rMediaRetrievalClientCertificateFilePath, const std::string& rPassword,
        const std::string& rTrustedCertificateFilePath);
    const bool get_media_retrieval_client_certificate_information(
        const std::string& rServerName,
        std::string& rMediaRetrievalClientCertificatePublicKeyFilePath,
        std::string& rMediaRetrievalClientCertificatePrivateKeyFilePath,
        std::string& rMediaRetrievalClientCertificateFilePath, std::string& rPassword,
        std::string& rTrustedCertificateFilePath);
    /// @}

    /// Merges entries of any name into the section "Notifiers".
    const bool set_additional_certificate_information(const ConfigurationFileNodes& rNodes);
    /// Reads the whole section "Notifiers"; on false `rNodes` holds the part that could be read.
    const bool get_additional_certificate_information(ConfigurationFileNodes& rNodes);

    /// @{
    /// A name of the file, of one of its elements or of a key file.
    static const std::string sm_configurationFile;
    static const std::string sm_configurationFileName;
    static const std::string sm_configurationFilePathEnvironmentVariable;
    static const std::string sm_machinePublicKeyFilePath;
    static const std::string sm_machinePrivateKeyFilePath;
    static const std::string sm_notifiersNode;
    static const std::string sm_devicesNode;
    static const std::string sm_mediaRetrievalNode;
    static const std::string sm_clusterCertificate;
    static const std::string sm_subsystemsCertificate;
    static const std::string sm_subsystemsServerCertificate;
    static const std::string sm_subsystemsRemoteClientCertificate;
    static const std::string sm_remoteClientCertificate;
    static const std::string sm_webConfigCertificate;
    static const std::string sm_deviceCertificate;
    static const std::string sm_mediaRetrievalServerCertificate;
    static const std::string sm_mediaRetrievalClientCertificate;
    /// @}

  private:
    friend struct ConfigurationFileAccess;

    // All of these throw on failure.

    /// Replaces `nodes` by the section `nodeName` of the file.
    void get_certificate_information(ConfigurationFileNodes& nodes, const std::string& nodeName);
    void get_subsystems_certificate_information(ConfigurationFileNodes& nodes);
    void get_devices_certificate_information(ConfigurationFileNodes& nodes);
    void get_media_retrieval_certificate_information(ConfigurationFileNodes& nodes);

    /// Reads all sections, merges the new nodes into one of them and rewrites the file.
    void set_subsystems_certificate_information(const ConfigurationFileNodes& newNodes);
    void set_devices_certificate_information(const ConfigurationFileNodes& newNodes);
    void set_media_retrieval_certificate_information(const ConfigurationFileNodes& newNodes);

    /// Merges the new nodes into the existing ones and assigns the section's text.
    void set_certificate_information(const ConfigurationFileNodes& newNodes,
                                     ConfigurationFileNodes& existingNodes,
                                     const std::string& nodeName, std::string& text);

    std::string encipher_password(const std::string& password);
    /// Wipes `cipherText`.
    std::string decipher_password(std::string& cipherText);

    /// The path of the file. Creates its directory and probes the access to it.
    std::string get_configuration_file_path();

    qncore::RefCountPtr<qncertificates::CertificateKeys> m_certificateKeys;
    qncore::RefCountPtr<ConfigurationFileMutex> m_configurationFileMutex;
};

/// The computer's name, the prefix of the names of the file and the key files: UTF-8, neither
/// folded nor cut. Throws if the system cannot provide it.
VDCERTIFICATES_API std::string get_local_machine_name();

/// The directory of the key files and, by default, of the configuration file, without a trailing
/// separator; creates it. The machine's setting if this account may write there, else a directory
/// in the user's profile, else empty. Throws if it cannot be created, or if the setting cannot be
/// read.
VDCERTIFICATES_API std::string create_and_get_default_root_configuration_directory();

} // namespace vdcertificates

#ifdef __GNUC__
#pragma GCC diagnostic pop
#endif
