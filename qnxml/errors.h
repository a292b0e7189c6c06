#pragma once

#include "qncore/error_code.h"

// The codes of the XML layer, each with all that lies below it.
namespace qnxml::error {

extern const qncore::ErrorCode qnxml;
extern const qncore::ErrorCode qnxml_reader;
extern const qncore::ErrorCode qnxml_reader_unexpected;
extern const qncore::ErrorCode qnxml_reader_unexpected_element;
extern const qncore::ErrorCode qnxml_reader_unexpected_size;
extern const qncore::ErrorCode qnxml_reader_unexpected_token;
extern const qncore::ErrorCode qnxml_tokenizer;
extern const qncore::ErrorCode qnxml_tokenizer_stream;
extern const qncore::ErrorCode qnxml_tokenizer_syntaxError;

} // namespace qnxml::error
