#pragma once

#include <string>

#include "qncore/string_slice.h"

namespace qnxml {

/// Knows entities beyond the five of XML 1.0, section 4.6.
class IEntityResolver {
  public:
    /// True when it knows the name; then `result`, unless it is null, becomes the finished text,
    /// which is not parsed.
    virtual bool resolve(qncore::StringSlice<const char*> name, std::string* result) = 0;

  protected:
    ~IEntityResolver() = default;
};

} // namespace qnxml
