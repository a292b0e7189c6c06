#pragma once

#include "qncore/trace_message.h"

namespace vdcertificates {

/// The topic of this library's messages, "VDCertificatesConfigurationFile"; the system's topic
/// until that one is open, and null before either.
extern qntrace::intTopicHdl* g_traceTopic;

} // namespace vdcertificates
