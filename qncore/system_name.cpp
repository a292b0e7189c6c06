#include "qncore/system_name.h"

#include "platform/path.h"
#include "qncore/embedded_nul.h"
#include "qncore/utf8.h"

namespace qncore {

void check_system_name(const std::string& name) {
    if (platform::names_are_utf8) {
        check_valid_utf8(name.data(), name.size());
    }
    check_no_embedded_nul(name);
}

} // namespace qncore
