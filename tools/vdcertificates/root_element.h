#pragma once

#include <string>

namespace tool {

struct RootElement {
    bool file_is_empty = false;
    std::string name; ///< empty when there is none
};

/// The name of a document's first element, which the library does not tell: looked for behind
/// the XML declaration, comments and instructions (XML 1.0, production 22), within the first
/// 4096 bytes.
RootElement root_element(const std::string& path);

} // namespace tool
