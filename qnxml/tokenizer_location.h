#pragma once

namespace qnxml::impl {

/// A place in the sources. It is a constant, so a function costs no more for the failures that it
/// may report.
struct TokenizerPlace {
    const char* function;
    const char* file;
    unsigned int line;
};

} // namespace qnxml::impl

/// The location of this line, in the named function of the tokenizer's base class.
#define QN_TOKENIZER_LOCATION(function)                                                            \
    ([]() noexcept -> const ::qnxml::impl::TokenizerPlace& {                                       \
        static constexpr ::qnxml::impl::TokenizerPlace place{                                      \
            "qnxml::XmlCharStreamTokenizerBase::" function "()", __FILE__, __LINE__};              \
        return place;                                                                              \
    }())
