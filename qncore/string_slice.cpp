#include "qncore/string_slice.h"

namespace qncore {

const std::string g_emptyString;

} // namespace qncore
