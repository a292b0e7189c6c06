#pragma once

#include "qncore/source_location.h"

/// The location of this line, in the named function of the tokenizer's base class.
#define QN_TOKENIZER_LOCATION(function)                                                            \
    QN_LOCATION("qnxml::XmlCharStreamTokenizerBase::" function "()")
