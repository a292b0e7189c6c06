#include "qncore/trace_message.h"

#include <algorithm>
#include <locale>

#include "qncore/trace_sink.h"

namespace qntrace {
namespace {

constexpr std::string_view placeholder = "{}";

std::string_view direction(EUserMsgSubtype subtype) noexcept {
    switch (subtype) {
    case eUserMsgFunctionEntry:
        return "entry";
    case eUserMsgFunctionExit:
        return "exit";
    default:
        return {};
    }
}

} // namespace

TraceMessage::TraceMessage(intTopicHdl* topic, char level, const char* function,
                           const char* /*file*/, unsigned /*line*/, const char* format) noexcept
    : std::ostream(nullptr)
    , topic_(topic)
    , level_(level)
    , function_(function)
    , format_(format) {
    try {
        rdbuf(&text_);
        imbue(std::locale::classic());
        copy_format_to_placeholder();
    } catch (...) {
        return;
    }
}

TraceMessage::~TraceMessage() {
    try {
        text_.sputn(format_.data(), static_cast<std::streamsize>(format_.size()));
    } catch (...) {
        format_ = {}; // the line lacks the rest of the format
    }
    const std::string_view text = text_.view();
    write_line(level_, topic_->topic->name(), function_, text.empty() ? direction(subtype_) : text);
}

TraceMessage& TraceMessage::user_msg_type(EUserMsgSubtype subtype) noexcept {
    subtype_ = subtype;
    return *this;
}

void TraceMessage::copy_format_to_placeholder() {
    const std::size_t length = std::min(format_.find(placeholder), format_.size());
    text_.sputn(format_.data(), static_cast<std::streamsize>(length));
    format_.remove_prefix(std::min(length + placeholder.size(), format_.size()));
}

FunctionTrace::FunctionTrace(intTopicHdl* topic, const char* function, const char* file,
                             unsigned line) noexcept {
    if (is_enabled(topic, level_function)) {
        exit_.emplace(topic, level_function, function, file, line, "");
        exit_->msg_type(eMsgTypeUser).user_msg_type(eUserMsgFunctionExit);
        TraceMessage(topic, level_function, function, file, line, "")
            .msg_type(eMsgTypeUser)
            .user_msg_type(eUserMsgFunctionEntry);
    }
}

} // namespace qntrace
