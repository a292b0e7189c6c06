#include "qncore/error_params.h"

namespace qncore {

const std::string* ErrorParams::find(const SourceString& name) const {
    const auto found = values_.find(name);
    return found != values_.end() ? &found->second : nullptr;
}

} // namespace qncore
