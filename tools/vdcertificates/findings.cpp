#include "tools/vdcertificates/findings.h"

#include <array>

#include "tools/vdcertificates/store.h"

namespace tool {
namespace {

constexpr std::array<std::string_view, 4> severity_names{"ok", "note", "warning", "problem"};
constexpr std::size_t name_width = 9; ///< of the longest one, and two blanks

std::string_view name_of(Severity severity) {
    return severity_names[static_cast<std::size_t>(severity)];
}

} // namespace

void Findings::add(Severity severity, const char* code, std::string message, std::string path) {
    findings_.push_back({severity, code, std::move(message), std::move(path), {}, {}});
    has_problem_ |= severity == Severity::problem;
}

void Findings::add(Severity severity, const char* code, const Entry& entry,
                   const std::string& message, std::string path) {
    add(severity, code, "the entry " + entry.title() + " " + message, std::move(path));
    findings_.back().role = entry.role_name();
    findings_.back().server = entry.server;
}

void Findings::add_remarks(const Store& store) {
    for (const std::string& made : store.made()) {
        add(Severity::note, "made", made);
    }
    for (const std::string& warning : store.warnings()) {
        add(Severity::warning, "used_elsewhere", warning);
    }
}

bool Findings::holds(const platform::Result<bool>& answer, const std::string& path) {
    if (!answer && !answer.error().is_not_found()) {
        add(refused_look(path, answer.error()));
    }
    return answer && *answer;
}

void Findings::append(Output& output) const {
    for (const Finding& finding : findings_) {
        append_line(output, name_of(finding.severity), finding.message, name_width);
    }
}

void Findings::append(JsonWriter& json) const {
    for (const Finding& finding : findings_) {
        const std::array<std::pair<const char*, std::string_view>, 6> members{{
            {"code", finding.code},
            {"severity", name_of(finding.severity)},
            {"role", finding.role},
            {"server", finding.server},
            {"path", finding.path},
            {"message", finding.message},
        }};
        json.begin('{');
        for (const auto& [key, value] : members) {
            json.key(key);
            value.empty() ? json.null() : json.value(value);
        }
        json.end();
    }
}

FindingsPrinter::FindingsPrinter(Format format) {
    if (format == Format::json) {
        json_.emplace(output_.text());
        json_->begin('[');
    }
}

void FindingsPrinter::print(Findings& findings) {
    json_ ? findings.append(*json_) : findings.append(output_);
    findings.clear();
    output_.flush_when_full();
}

void FindingsPrinter::finish() {
    if (json_) {
        json_->end();
        output_ << "\n";
    }
    output_.flush();
}

} // namespace tool
