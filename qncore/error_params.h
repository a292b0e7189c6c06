#pragma once

#include <concepts>
#include <locale>
#include <map>
#include <sstream>
#include <string>
#include <string_view>

#include "qncore/source_string.h"
#include "qncore/string_conversion.h"
#include "qncore/transfer_source.h"

namespace qncore {

/// The named values of an error's message, all of them text.
class ErrorParams {
  public:
    ErrorParams() = default;
    ErrorParams(const ErrorParams&) = default;
    ErrorParams(ErrorParams&&) noexcept = default;
    ErrorParams& operator=(const ErrorParams&) = default;
    ErrorParams& operator=(ErrorParams&&) noexcept = default;
    explicit ErrorParams(const TransferSource<ErrorParams>& source)
        : values_(std::move(source.get().values_)) {}
    ~ErrorParams() = default;

    TransferSource<ErrorParams> transfer() noexcept { return TransferSource<ErrorParams>(*this); }

    /// Adds or replaces a value: text as it stands, numbers and enumerations in decimal, anything
    /// else as its inserter writes it.
    template <class Value>
    void insert(const SourceString& name, const Value& value) {
        if constexpr (std::convertible_to<Value, std::string_view>) {
            insert_ref(name) = std::string_view(value);
        } else if constexpr (requires { to_string(value); }) {
            insert_ref(name) = to_string(value);
        } else {
            std::ostringstream stream;
            stream.imbue(std::locale::classic());
            stream << value;
            insert_ref(name) = std::move(stream).str();
        }
    }

    /// The value of that name, or null.
    const std::string* find(const SourceString& name) const;

    auto begin() const noexcept { return values_.begin(); }
    auto end() const noexcept { return values_.end(); }

  private:
    std::string& insert_ref(const SourceString& name) { return values_[name]; }

    std::map<SourceString, std::string> values_;
};

} // namespace qncore
