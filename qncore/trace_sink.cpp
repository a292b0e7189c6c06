#include "qncore/trace_sink.h"

#include <atomic>
#include <filesystem>
#include <memory>
#include <mutex>

#include <spdlog/logger.h>
#include <spdlog/pattern_formatter.h>
#include <spdlog/sinks/rotating_file_sink.h>
#include <spdlog/sinks/stdout_sinks.h>

#include "platform/file_system.h"

namespace qntrace {
namespace {

constexpr std::size_t largest_file = 5U << 20;
constexpr std::size_t older_files = 3;

std::shared_ptr<spdlog::logger> make_logger(spdlog::sink_ptr sink) {
    auto logger = std::make_shared<spdlog::logger>("qntrace", std::move(sink));
    logger->set_level(spdlog::level::trace);
    logger->flush_on(spdlog::level::trace);
    // One byte ends a line on every system.
    logger->set_formatter(std::make_unique<spdlog::pattern_formatter>(
        "%Y-%m-%dT%H:%M:%S.%fZ %P:%t %v", spdlog::pattern_time_type::utc, "\n"));
    logger->set_error_handler([](const std::string&) {}); // a full disk must not stop the caller
    return logger;
}

/// As the system takes it: UTF-16 on Windows.
spdlog::filename_t native_name(const std::string& file) {
    return std::filesystem::path(std::u8string(file.begin(), file.end())).native();
}

std::shared_ptr<spdlog::logger> make_logger_for(const std::string& file) {
    if (!file.empty()) {
        try {
            spdlog::file_event_handlers handlers;
            handlers.after_open = [](const spdlog::filename_t&, std::FILE* stream) {
                platform::allow_removal(stream);
            };
            return make_logger(std::make_shared<spdlog::sinks::rotating_file_sink_mt>(
                native_name(file), largest_file, older_files, false, handlers));
        } catch (const spdlog::spdlog_ex&) {
            auto logger = make_logger(std::make_shared<spdlog::sinks::stderr_sink_mt>());
            logger->info("qntrace: cannot open the file of QNTRACE_FILE, writing here: {}", file);
            return logger;
        }
    }
    return make_logger(std::make_shared<spdlog::sinks::stderr_sink_mt>());
}

std::mutex g_mutex;

std::shared_ptr<spdlog::logger>& current_logger() {
    static auto* logger = new std::shared_ptr<spdlog::logger>(); // outlives static destructors
    return *logger;
}

std::string one_line(std::string_view text) {
    std::string line;
    line.reserve(text.size());
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (byte == '\n') {
            line += "\\n";
        } else if (byte < 0x20 || byte == 0x7F) {
            line += fmt::format("\\x{:02x}", byte);
        } else {
            line += character;
        }
    }
    return line;
}

} // namespace

void write_line(const TraceLine& line) noexcept {
    try {
        std::shared_ptr<spdlog::logger> logger;
        {
            const std::lock_guard lock(g_mutex);
            logger = current_logger();
        }
        if (logger) {
            logger->info("{} {} {} {}", static_cast<int>(line.level), line.topic, line.function,
                         one_line(line.text));
        }
    } catch (const std::exception&) {
        return; // tracing reports nothing to its caller
    }
}

void open_sink(const std::string& file) noexcept {
    try {
        auto logger = make_logger_for(file);
        const std::lock_guard lock(g_mutex);
        current_logger().swap(logger);
    } catch (const std::exception&) {
        return; // tracing reports nothing to its caller
    }
}

} // namespace qntrace
