#include "ConfigurationFile/configuration_file.h"

#include "ConfigurationFile/trace_topic.h"
#include "VDCertificatesFileUtilities/file_utilities.h"
#include "platform/key_file.h"
#include "platform/path.h"
#include "qncertificates/certificate_keys.h"
#include "qncertificates/errors.h"
#include "qncore/error_composer.h"

namespace vdcertificates {

const std::string ConfigurationFile::sm_configurationFile = "ORVACertificates";
const std::string ConfigurationFile::sm_configurationFileName = "ORVA_Certificates.xml";
const std::string ConfigurationFile::sm_configurationFilePathEnvironmentVariable =
    "ORVA_Certificates";
const std::string ConfigurationFile::sm_machinePublicKeyFilePath = "PublicKey.bin";
const std::string ConfigurationFile::sm_machinePrivateKeyFilePath = "PrivateKey.bin";
const std::string ConfigurationFile::sm_notifiersNode = "Notifiers";
const std::string ConfigurationFile::sm_devicesNode = "SIPDevices";
const std::string ConfigurationFile::sm_mediaRetrievalNode = "MediaRetrieval";
const std::string ConfigurationFile::sm_clusterCertificate = "ServerGroupCertificate";
const std::string ConfigurationFile::sm_subsystemsCertificate = "VDCertificateAuthority";
const std::string ConfigurationFile::sm_subsystemsServerCertificate = "SubsystemsServerCertificate";
const std::string ConfigurationFile::sm_subsystemsRemoteClientCertificate =
    "SubsystemsRemoteClientCertificate";
const std::string ConfigurationFile::sm_remoteClientCertificate = "RemoteClientCertificate";
const std::string ConfigurationFile::sm_webConfigCertificate = "WebConfigCertificate";
const std::string ConfigurationFile::sm_deviceCertificate = "SIPDevice";
const std::string ConfigurationFile::sm_mediaRetrievalServerCertificate = "Server";
const std::string ConfigurationFile::sm_mediaRetrievalClientCertificate = "Client";

namespace {

using qncertificates::CertificateKeys;
using Keys = qncore::RefCountPtr<CertificateKeys>;

constexpr const char* constructor_name = "vdcertificates::ConfigurationFile::ConfigurationFile()";

struct KeyFiles {
    std::string publicKey;
    std::string privateKey;

    bool both_exist() const {
        return FileUtilities::located_file(publicKey) && FileUtilities::located_file(privateKey);
    }

    /// A key file at rest is read-only. A failure is ignored: writing the files reports it.
    void set_writable(bool writable) const {
        platform::set_key_file_writable(publicKey, writable);
        platform::set_key_file_writable(privateKey, writable);
    }

    Keys load(bool regenerate) const {
        return Keys(new CertificateKeys(publicKey, privateKey, qncertificates::eFormatPkcs1Der,
                                        regenerate));
    }

    void store_new_keys(const Keys& keys) const {
        keys->set_keys(qncertificates::eFormatPkcs1Der);
        set_writable(false);
    }
};

Keys load_or_create(const KeyFiles& files) {
    const bool missing = !files.both_exist();
    if (missing) {
        files.set_writable(true);
    }
    Keys keys = files.load(false);
    if (missing) {
        files.store_new_keys(keys);
    } else if (keys->get_public_key().empty()) { // the look-up above was wrong, or no longer holds
        qncore::throw_error(qncertificates::error::qncertificates_parameter_invalid,
                            "A key file is missing", QN_LOCATION(constructor_name));
    }
    return keys;
}

Keys regenerate(const KeyFiles& files) {
    try {
        files.set_writable(true);
        Keys keys = files.load(true);
        files.store_new_keys(keys);
        return keys;
    } catch (const std::exception& exception) {
        files.set_writable(false); // a pair that was not replaced is at rest again
        QN_TRACE_ERROR(g_traceTopic, constructor_name,
                       "Caught exception when creating keys for configuration file usage. "
                       "machinePublicKey: {}, machinePrivateKey: {}, caughtInnerException: {}.",
                       files.publicKey, files.privateKey, exception.what());
        qncore::ErrorComposer("Caught exception when loading keys for configuration file usage. "
                              "machinePublicKey: {@publicKeyFilePath}, machinePrivateKey: "
                              "{@privateKeyFilePath}.")
            .param("publicKeyFilePath", files.publicKey)
            .param("privateKeyFilePath", files.privateKey)
            .throw_with_nested_exception(qncertificates::error::qncertificates_parameter_invalid,
                                         QN_LOCATION(constructor_name), exception);
    }
}

Keys load_create_or_regenerate(const KeyFiles& files) {
    try {
        return load_or_create(files);
    } catch (const std::exception& exception) {
        QN_TRACE_ERROR(g_traceTopic, constructor_name,
                       "Caught exception when loading EXISTING keys for configuration file usage. "
                       "machinePublicKey: {}, machinePrivateKey: {}, caughtException: {}. "
                       "Regenerating NEW keys.",
                       files.publicKey, files.privateKey, exception.what());
    }
    return regenerate(files);
}

} // namespace

ConfigurationFile::ConfigurationFile()
    : m_configurationFileMutex(ConfigurationFileMutex::create()) {
    const std::string root = create_and_get_default_root_configuration_directory();
    const ConfigurationFileExclusiveAccessLock lock(m_configurationFileMutex);
    const std::string prefix =
        root + platform::preferred_separator + get_local_machine_name() + "_";
    m_certificateKeys = load_create_or_regenerate(
        {prefix + sm_machinePublicKeyFilePath, prefix + sm_machinePrivateKeyFilePath});
}

ConfigurationFile::ConfigurationFile(const ConfigurationFile& other) = default;
ConfigurationFile& ConfigurationFile::operator=(const ConfigurationFile& other) = default;
ConfigurationFile::~ConfigurationFile() = default;

} // namespace vdcertificates
