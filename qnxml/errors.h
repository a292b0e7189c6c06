#pragma once

#include "qncore/error_code.h"

// The codes of the XML layer. Each covers the codes below it.
namespace qnxml::error {

using qncore::ErrorCode;

inline constinit const ErrorCode qnxml{"error.qnxml"};
inline constinit const ErrorCode qnxml_reader{"error.qnxml.reader"};
inline constinit const ErrorCode qnxml_reader_unexpected{"error.qnxml.reader.unexpected"};
inline constinit const ErrorCode qnxml_reader_unexpected_element{
    "error.qnxml.reader.unexpected.element"};
inline constinit const ErrorCode qnxml_reader_unexpected_size{"error.qnxml.reader.unexpected.size"};
inline constinit const ErrorCode qnxml_reader_unexpected_token{
    "error.qnxml.reader.unexpected.token"};
inline constinit const ErrorCode qnxml_tokenizer{"error.qnxml.tokenizer"};
inline constinit const ErrorCode qnxml_tokenizer_stream{"error.qnxml.tokenizer.stream"};
inline constinit const ErrorCode qnxml_tokenizer_syntaxError{"error.qnxml.tokenizer.syntaxError"};

} // namespace qnxml::error
