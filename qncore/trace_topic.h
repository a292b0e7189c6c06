#pragma once

#include <atomic>
#include <string>

namespace qntrace {

/// Levels: a message is written when its level is not above its topic's.
inline constexpr char level_error = 11;
inline constexpr char level_warning = 21;
inline constexpr char level_note = 41;
inline constexpr char level_function = 81;

/// A named subject of messages with the level up to which they are written. The level is 0 (none)
/// unless the environment says otherwise, which is read when the first message is tested. QNTRACE
/// holds a level (`41`) or a list of `topic=level`, where the topic `*` means all others.
/// QNTRACE_FILE names a file to write to instead of standard error; the first line creates it.
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
    /// Opens a topic by its name and keeps it to the end of the process. The other two arguments
    /// are a null pointer and 0x81.
    virtual intTopicHdl* open_topic(const std::string& name, void* reserved, char flags) = 0;

  protected:
    ITraceMgr() = default;
    ~ITraceMgr() = default;
};

/// The suite's general topic, "System"; null, which disables a trace, when memory runs out.
intTopicHdl* get_system_topic_handle() noexcept;

ITraceMgr& get_trace_mgr();

/// Reads the environment again, for all topics and for the place that messages go to. For tests.
void reload_configuration();

/// The gate in front of every message.
inline bool is_enabled(const intTopicHdl* handle, char level) noexcept {
    return handle != nullptr && level <= handle->topic->trace_level();
}

} // namespace qntrace
