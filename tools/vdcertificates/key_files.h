#pragma once

#include <string>

namespace tool {

/// Where the machine's key pair lies. The directory may be empty: then it is the file root.
struct KeyFiles {
    std::string directory;
    std::string public_key;
    std::string private_key;
};

KeyFiles key_files();

} // namespace tool
