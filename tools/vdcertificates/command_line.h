#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tools/vdcertificates/exit_status.h"

namespace tool {

/// All options, each of which means the same in every command that has it.
enum class Option : std::uint8_t {
    server,
    public_key,
    private_key,
    certificate,
    trusted,
    password_stdin,
    password_file,
    prompt,
    no_password,
    discard_unreadable,
    field,
    show_password,
    show_passwords,
    format,
    all_roles,
    files,
    days,
    output,
    plain,
    dry_run,
};
inline constexpr std::size_t option_count = static_cast<std::size_t>(Option::dry_run) + 1;

struct OptionDefinition {
    std::string_view name; ///< with its two dashes
    std::string_view type; ///< of its value; empty for a flag
    std::string_view help;
};
const OptionDefinition& definition(Option option);

/// An option of one command.
struct OptionUse {
    Option option;
    bool is_required = false;
};

class Arguments;

struct Command {
    std::string_view name;
    std::string_view summary;
    std::string_view word; ///< what stands after the name; empty when nothing
    bool word_is_required;
    std::span<const OptionUse> options;
    std::string_view notes; ///< for --help
    ExitStatus (*run)(const Arguments& arguments);
};

/// All commands in the order of the documentation (commands.cpp).
std::span<const Command> commands();

/// The words of one call, in the terms of the command's definition.
class Arguments {
  public:
    /// Throws UsageError when the words do not fit the definition.
    Arguments(const Command& command, std::span<const std::string> words);

    const Command& command() const noexcept { return command_; }
    const std::optional<std::string>& word() const noexcept { return word_; }
    bool has(Option option) const noexcept { return value(option).has_value(); }
    const std::optional<std::string>& value(Option option) const noexcept {
        return values_[static_cast<std::size_t>(option)];
    }
    /// The value of an option, or the empty text.
    const std::string& text(Option option) const noexcept;

  private:
    const Command& command_;
    std::optional<std::string> word_;
    std::array<std::optional<std::string>, option_count> values_;
};

/// Runs what the words after the program's name ask for. Throws UsageError and Failure.
ExitStatus run_command_line(const std::vector<std::string>& words);

} // namespace tool
