#pragma once

namespace platform {

/// The code unit of a native file name: UTF-16 on Windows; on Linux a byte, not necessarily UTF-8.
#ifdef _WIN32
using NameUnit = wchar_t;
#else
using NameUnit = char;
#endif

/// The separator that paths are joined with and cut at: `\` on Windows, `/` on Linux.
extern const char preferred_separator;

/// True where the system's names are Unicode and ours are UTF-8 therefore (Windows); on Linux a
/// name is any bytes.
extern const bool names_are_utf8;

/// Whether paths begin with a drive or a server: true on Windows. Elsewhere all of them hang on one
/// root.
extern const bool paths_have_drives;

/// True for what the system takes as a separator: both on Windows, `/` alone on Linux.
bool is_separator(char character) noexcept;

} // namespace platform
