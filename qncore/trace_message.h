#pragma once

#include <optional>
#include <ostream>
#include <sstream>
#include <string_view>

#include "qncore/trace_topic.h"

namespace qntrace {

enum EMsgType { eMsgTypeUser = 2 };

enum EUserMsgSubtype {
    eUserMsgNote = 2,
    eUserMsgWarning = 3,
    eUserMsgError = 4,
    eUserMsgFunctionEntry = 6,
    eUserMsgFunctionExit = 7,
};

/// One message. Inserted values replace the `{}` of the format in order, and the destructor writes
/// the message as one line. Nothing here throws: if memory runs out or an inserter throws, the line
/// lacks what could not be written. Numbers are formatted in the classic locale. Not thread-safe.
class TraceMessage : public virtual std::ostream {
  public:
    /// `file` and `line` are the place of the statement. They are not written.
    TraceMessage(intTopicHdl* topic, char level, const char* function, const char* file,
                 unsigned line, const char* format) noexcept;
    TraceMessage(const TraceMessage&) = delete;
    TraceMessage& operator=(const TraceMessage&) = delete;
    ~TraceMessage() override;

    /// A no-op: there is only one type.
    TraceMessage& msg_type(EMsgType /*type*/) noexcept { return *this; }
    /// The subtype is written only for function entry and exit, as the text of an empty message.
    TraceMessage& user_msg_type(EUserMsgSubtype subtype) noexcept;

    /// Inserts a value as the standard inserters write it.
    template <class Value>
    TraceMessage& operator<<(const Value& value) noexcept {
        try {
            static_cast<std::ostream&>(*this) << value;
            copy_format_to_placeholder();
        } catch (...) {
            return *this;
        }
        return *this;
    }

  private:
    void copy_format_to_placeholder();

    std::stringbuf text_;
    const intTopicHdl* topic_;
    char level_;
    const char* function_;
    std::string_view format_; ///< the part not yet written
    EUserMsgSubtype subtype_ = eUserMsgNote;
};

/// Writes one message. The caller has checked is_enabled().
template <class... Values>
void write_message(intTopicHdl* topic, char level, EUserMsgSubtype subtype, const char* function,
                   const char* file, unsigned line, const char* format,
                   const Values&... values) noexcept {
    TraceMessage message(topic, level, function, file, line, format);
    message.msg_type(eMsgTypeUser).user_msg_type(subtype);
    static_cast<void>((message << ... << values));
}

/// Traces the entry of a function at once and its exit at the end of the scope, also if an
/// exception ends it.
class FunctionTrace {
  public:
    FunctionTrace(intTopicHdl* topic, const char* function, const char* file,
                  unsigned line) noexcept;

  private:
    std::optional<TraceMessage> exit_;
};

} // namespace qntrace

#define QN_TRACE(topic, level, subtype, function, ...)                                             \
    do {                                                                                           \
        if (::qntrace::is_enabled(topic, level)) {                                                 \
            ::qntrace::write_message(topic, level, subtype, function, __FILE__, __LINE__,          \
                                     __VA_ARGS__);                                                 \
        }                                                                                          \
    } while (false)

/// QN_TRACE_ERROR(topic, "name::of::function()", "format {}", values...). The values are evaluated
/// only if the topic's level admits the message.
#define QN_TRACE_ERROR(topic, function, ...)                                                       \
    QN_TRACE(topic, ::qntrace::level_error, ::qntrace::eUserMsgError, function, __VA_ARGS__)
#define QN_TRACE_WARNING(topic, function, ...)                                                     \
    QN_TRACE(topic, ::qntrace::level_warning, ::qntrace::eUserMsgWarning, function, __VA_ARGS__)
#define QN_TRACE_NOTE(topic, function, ...)                                                        \
    QN_TRACE(topic, ::qntrace::level_note, ::qntrace::eUserMsgNote, function, __VA_ARGS__)

/// First statement of a traced function.
#define QN_TRACE_FUNCTION(topic, function)                                                         \
    const ::qntrace::FunctionTrace functionTrace(topic, function, __FILE__, __LINE__)
