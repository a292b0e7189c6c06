#pragma once

namespace platform {

/// The code unit of a native file name: UTF-16 on Windows; on Linux a byte, not necessarily UTF-8.
#ifdef _WIN32
using NameUnit = wchar_t;
#else
using NameUnit = char;
#endif

/// The separator by which paths are joined and split: `\` on Windows, `/` on Linux.
extern const char preferred_separator;

/// True if file names are UTF-8 (Windows, whose own names are Unicode). On Linux they are any
/// bytes.
extern const bool names_are_utf8;

/// True if paths begin with a drive or a server (Windows).
extern const bool paths_have_drives;

/// True for the system's separators: `\` and `/` on Windows, only `/` on Linux.
bool is_separator(char character) noexcept;

} // namespace platform
