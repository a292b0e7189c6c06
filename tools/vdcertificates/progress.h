#pragma once

#include <chrono>
#include <string_view>

namespace tool {

/// One line on standard error that says how far long work is, when that is a terminal and the work
/// takes more than half a second. The line is gone afterwards.
class Progress {
  public:
    Progress() = default;
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress();

    void show(std::string_view text);

  private:
    using Clock = std::chrono::steady_clock;
    Clock::time_point next_ = Clock::now() + std::chrono::milliseconds(500);
    bool shown_ = false;
};

} // namespace tool
