#pragma once

#include "qncore/source_location.h"

/// The location of this line, in the named function of the reader.
#define QN_READER_LOCATION(function) QN_LOCATION("qnxml::XmlReader::" function "()")
