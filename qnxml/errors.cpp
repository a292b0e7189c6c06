#include "qnxml/errors.h"

namespace qnxml::error {

using qncore::ErrorCode;

constinit const ErrorCode qnxml{"error.qnxml"};
constinit const ErrorCode qnxml_reader{"error.qnxml.reader"};
constinit const ErrorCode qnxml_reader_unexpected{"error.qnxml.reader.unexpected"};
constinit const ErrorCode qnxml_reader_unexpected_element{"error.qnxml.reader.unexpected.element"};
constinit const ErrorCode qnxml_reader_unexpected_size{"error.qnxml.reader.unexpected.size"};
constinit const ErrorCode qnxml_reader_unexpected_token{"error.qnxml.reader.unexpected.token"};
constinit const ErrorCode qnxml_tokenizer{"error.qnxml.tokenizer"};
constinit const ErrorCode qnxml_tokenizer_stream{"error.qnxml.tokenizer.stream"};
constinit const ErrorCode qnxml_tokenizer_syntaxError{"error.qnxml.tokenizer.syntaxError"};

} // namespace qnxml::error
