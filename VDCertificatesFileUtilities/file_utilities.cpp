#include "VDCertificatesFileUtilities/file_utilities.h"

#include "platform/file_system.h"

bool FileUtilities::create_directory(const std::string& directory) {
    return !platform::create_directory(directory) || platform::is_directory(directory);
}

bool FileUtilities::located_file(const std::string& file) {
    return !platform::check_existence(file).is_not_found();
}
