#include "qncore/trace_topic.h"

#include <algorithm>
#include <charconv>
#include <list>
#include <mutex>
#include <optional>
#include <string_view>

#include "platform/environment.h"
#include "qncore/trace_sink.h"

namespace qntrace {
namespace {

constexpr std::string_view all_others = "*";

std::optional<char> parse_level(std::string_view text) {
    int level = 0;
    const auto [end, fault] = std::from_chars(text.data(), text.data() + text.size(), level);
    if (fault != std::errc() || end != text.data() + text.size() || level < 0 || level > 127) {
        return std::nullopt;
    }
    return static_cast<char>(level);
}

/// The level that a list such as `Topic=81,*=11`, or a bare `41`, gives to a topic. Items that
/// cannot be parsed are ignored.
char level_for(std::string_view topic, std::string_view list) {
    char others = 0;
    while (!list.empty()) {
        const std::size_t comma = std::min(list.find(','), list.size());
        const std::string_view item = list.substr(0, comma);
        list.remove_prefix(std::min(comma + 1, list.size()));
        const std::size_t equals = item.find('=');
        const bool bare = equals == std::string_view::npos;
        const std::string_view name = bare ? all_others : item.substr(0, equals);
        const auto level = parse_level(bare ? item : item.substr(equals + 1));
        if (level && name == topic) {
            return *level;
        }
        if (level && name == all_others) {
            others = *level;
        }
    }
    return others;
}

/// All topics of the process. They are never freed, since static destructors may still trace.
class TraceManager final : public ITraceMgr {
  public:
    intTopicHdl* open_topic(const std::string& name, void* /*reserved*/, char /*flags*/) override {
        const std::lock_guard lock(mutex_);
        for (Entry& entry : entries_) {
            if (entry.topic.name() == name) {
                return &entry.handle;
            }
        }
        Entry& entry = entries_.emplace_back(name);
        if (configured_) {
            entry.topic.set_trace_level(level_for(name, levels_));
        }
        return &entry.handle;
    }

    void configure() {
        const std::lock_guard lock(mutex_);
        if (!configured_) {
            read_environment();
        }
    }

    void reload() {
        const std::lock_guard lock(mutex_);
        read_environment();
    }

  private:
    struct Entry {
        explicit Entry(const std::string& name)
            : topic(name)
            , handle{&topic} {}
        TraceTopic topic;
        intTopicHdl handle;
    };

    void read_environment() {
        levels_ = platform::environment_text("QNTRACE").value_or("");
        set_output(platform::environment_text("QNTRACE_FILE").value_or(""));
        for (Entry& entry : entries_) {
            entry.topic.set_trace_level(level_for(entry.topic.name(), levels_));
        }
        configured_ = true;
    }

    std::mutex mutex_;
    std::list<Entry> entries_;
    std::string levels_;
    bool configured_ = false;
};

TraceManager& manager() {
    static auto* instance = new TraceManager();
    return *instance;
}

} // namespace

char TraceTopic::configure() const noexcept {
    try {
        manager().configure();
        return level_.load(std::memory_order_relaxed);
    } catch (...) {
        return 0; // the next message asks again
    }
}

intTopicHdl* get_system_topic_handle() noexcept {
    try {
        static intTopicHdl* const handle =
            manager().open_topic("System", nullptr, static_cast<char>(0x81));
        return handle;
    } catch (...) {
        return nullptr;
    }
}

ITraceMgr& get_trace_mgr() {
    return manager();
}

void reload_configuration() {
    manager().reload();
}

} // namespace qntrace
