#include "qncore/trace_sink.h"

#include <memory>
#include <mutex>

#include <spdlog/logger.h>
#include <spdlog/pattern_formatter.h>
#include <spdlog/sinks/base_sink.h>
#include <spdlog/sinks/stdout_sinks.h>

#include "qncore/trace_file.h"

namespace qntrace {
namespace {

class FileSink final : public spdlog::sinks::base_sink<std::mutex> {
  public:
    explicit FileSink(TraceFile file)
        : file_(std::move(file)) {}

  private:
    void sink_it_(const spdlog::details::log_msg& message) override {
        spdlog::memory_buf_t line;
        formatter_->format(message, line);
        file_.write({line.data(), line.size()});
    }
    void flush_() override {}

    TraceFile file_;
};

std::shared_ptr<spdlog::logger> make_logger(spdlog::sink_ptr sink) {
    auto logger = std::make_shared<spdlog::logger>("qntrace", std::move(sink));
    logger->set_level(spdlog::level::trace);
    // Lines end with "\n" on every system.
    logger->set_formatter(std::make_unique<spdlog::pattern_formatter>(
        "%Y-%m-%dT%H:%M:%S.%fZ %P:%t %v", spdlog::pattern_time_type::utc, "\n"));
    logger->set_error_handler([](const std::string&) {});
    return logger;
}

std::shared_ptr<spdlog::logger> make_logger_for(const std::string& name) {
    if (name.empty()) {
        return make_logger(std::make_shared<spdlog::sinks::stderr_sink_mt>());
    }
    auto file = platform::AppendFile::open(name);
    if (file) {
        return make_logger(std::make_shared<FileSink>(TraceFile(std::move(*file), name)));
    }
    auto logger = make_logger(std::make_shared<spdlog::sinks::stderr_sink_mt>());
    logger->info("qntrace: cannot open the file of QNTRACE_FILE, writing here: {} ({})", name,
                 platform::describe(file.error()));
    return logger;
}

/// The destination of messages. The first message makes the logger.
struct Output {
    std::mutex mutex;
    std::string file;
    std::shared_ptr<spdlog::logger> logger;
};

Output& output() {
    static auto* instance = new Output(); // outlives static destructors
    return *instance;
}

std::shared_ptr<spdlog::logger> current_logger() {
    const std::lock_guard lock(output().mutex);
    if (!output().logger) {
        output().logger = make_logger_for(output().file);
    }
    return output().logger;
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

void write_line(char level, std::string_view topic, std::string_view function,
                std::string_view text) noexcept {
    try {
        current_logger()->info("{} {} {} {}", static_cast<int>(level), topic, function,
                               one_line(text));
    } catch (...) {
        return; // tracing reports nothing to its caller
    }
}

void set_output(std::string file) noexcept {
    try {
        const std::lock_guard lock(output().mutex);
        output().file = std::move(file);
        output().logger.reset();
    } catch (...) {
        return; // tracing reports nothing to its caller
    }
}

} // namespace qntrace
