#include "VDCertificatesFileUtilities/file_utilities.h"

#include "platform/file_system.h"

bool FileUtilities::create_directory(const std::string& directory) {
    const platform::SystemError error = platform::create_directory(directory);
    return !error || (error.is_already_exists() && platform::is_directory(directory));
}

bool FileUtilities::located_file(const std::string& file) {
    return platform::exists(file);
}
