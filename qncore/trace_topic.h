#pragma once

#include <atomic>
#include <string>

namespace qntrace {

/// Levels. A message is written if its level is not above that of its topic.
inline constexpr char level_error = 11;
inline constexpr char level_warning = 21;
inline constexpr char level_note = 41;
inline constexpr char level_function = 81;

/// A named group of messages and the level up to which they are written, by default 0 (none).
/// The environment is read when the first message is tested: QNTRACE is a level (`41`) or a list
/// of `topic=level`, where the topic `*` means all others; QNTRACE_FILE names a file to write to
/// instead of standard error. The first line creates it.
class TraceTopic {
  public:
    explicit TraceTopic(std::string name)
        : name_(std::move(name)) {}

    char trace_level() const noexcept {
        const char level = level_.load(std::memory_order_relaxed);
        return level != unconfigured ? level : configure();
    }
    const std::string& name() const noexcept { return name_; }
    void set_trace_level(char level) noexcept { level_.store(level, std::memory_order_relaxed); }

  private:
    static constexpr auto unconfigured = static_cast<char>(-1);

    char configure() const noexcept;

    std::string name_;
    std::atomic<char> level_{unconfigured};
};

/// Handle of a topic.
struct intTopicHdl {
    TraceTopic* topic;
};

class ITraceMgr {
  public:
    /// Opens a topic by name. The handle is valid until the process ends. Callers pass a null
    /// pointer and 0x81 for the other two arguments.
    virtual intTopicHdl* open_topic(const std::string& name, void* reserved, char flags) = 0;

  protected:
    ITraceMgr() = default;
    ~ITraceMgr() = default;
};

/// The general topic, "System". Returns null, which disables a trace, if memory runs out.
intTopicHdl* get_system_topic_handle() noexcept;

ITraceMgr& get_trace_mgr();

/// Reads the environment again, for all topics and the destination. For tests.
void reload_configuration();

/// True if a message of that level is to be written.
inline bool is_enabled(const intTopicHdl* handle, char level) noexcept {
    return handle != nullptr && level <= handle->topic->trace_level();
}

} // namespace qntrace
