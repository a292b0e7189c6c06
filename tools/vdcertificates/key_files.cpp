#include "tools/vdcertificates/key_files.h"

#include "ConfigurationFile/configuration_file.h"
#include "platform/path.h"

namespace tool {

KeyFiles key_files() {
    using vdcertificates::ConfigurationFile;
    const std::string directory =
        vdcertificates::create_and_get_default_root_configuration_directory();
    const std::string prefix =
        directory + platform::preferred_separator + vdcertificates::get_local_machine_name() + "_";
    return {directory, prefix + ConfigurationFile::sm_machinePublicKeyFilePath,
            prefix + ConfigurationFile::sm_machinePrivateKeyFilePath};
}

} // namespace tool
