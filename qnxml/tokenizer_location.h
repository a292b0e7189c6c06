#pragma once

namespace qnxml::impl {

/// A place in the sources. A constant, so that possible failures cost a function nothing.
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
