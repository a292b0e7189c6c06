#pragma once

#include <string>

#include "qncore/string_slice.h"

namespace qnxml {

/// Resolves entities other than the five of XML 1.0, section 4.6.
class IEntityResolver {
  public:
    /// Returns whether it knows the name. If so, stores the replacement text, which is not parsed,
    /// in `result` unless that is null. What it throws passes through the reader, which can
    /// continue after it but has lost the reference.
    virtual bool resolve(qncore::StringSlice<const char*> name, std::string* result) = 0;

  protected:
    ~IEntityResolver() = default;
};

} // namespace qnxml
