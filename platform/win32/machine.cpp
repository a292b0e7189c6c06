#include "platform/machine.h"

#include <array>

#include "platform/seams.h"
#include "platform/win32/wide.h"
#include "platform/win32/windows.h"

namespace platform {
namespace {

constexpr const char* machine_key = "SOFTWARE\\Orvane Systems\\Certificates";
constexpr const wchar_t* path_value = L"Path";

/// A key of the registry, open for reading in a scope.
class RegistryKey {
  public:
    RegistryKey(HKEY root, const std::string& name)
        : error_(::RegOpenKeyExW(root, wide(name).c_str(), 0, KEY_READ, &key_)) {}
    RegistryKey(const RegistryKey&) = delete;
    RegistryKey& operator=(const RegistryKey&) = delete;
    ~RegistryKey() {
        if (error_ == ERROR_SUCCESS) {
            ::RegCloseKey(key_);
        }
    }

    /// The bytes of a value of any type as UTF-16. `size` receives their number.
    Result<std::wstring> value(const wchar_t* name, DWORD& size) const {
        LSTATUS error = error_ == ERROR_SUCCESS ? query(name, nullptr, size) : error_;
        std::wstring text;
        if (error == ERROR_SUCCESS) {
            text.resize((size + 1) / sizeof(wchar_t));
            error = query(name, text.data(), size);
        }
        return error == ERROR_SUCCESS ? Result<std::wstring>(std::move(text))
                                      : SystemError::windows(static_cast<unsigned long>(error));
    }

  private:
    LSTATUS query(const wchar_t* name, wchar_t* data, DWORD& size) const {
        return ::RegQueryValueExW(key_, name, nullptr, nullptr, reinterpret_cast<BYTE*>(data),
                                  &size);
    }

    HKEY key_ = nullptr;
    LSTATUS error_;
};

} // namespace

Result<std::string> computer_name() {
    PLATFORM_SEAM(computer_name);
    if (!seams().computer_name.empty()) {
        return seams().computer_name;
    }
    std::array<wchar_t, MAX_COMPUTERNAME_LENGTH + 1> name{};
    DWORD count = name.size();
    ::GetComputerNameW(name.data(), &count); // required: its result is not tested
    return narrow({name.data(), count < name.size() ? count : name.size()});
}

std::string machine_setting_source() {
    return seams().machine_setting.empty() ? machine_key : seams().machine_setting;
}

Result<std::optional<std::string>> machine_root_directory() {
    PLATFORM_SEAM(machine_setting);
    // The machine of a test is below the current user, where every account may write.
    const RegistryKey key(seams().machine_setting.empty() ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER,
                          machine_setting_source());
    DWORD size = 0;
    auto value = key.value(path_value, size);
    if (value.error().is_not_found()) {
        return std::optional<std::string>();
    }
    if (!value) {
        return value.error();
    }
    // Required: the last unit is removed as the terminator, also if it is none.
    const std::size_t units = size / sizeof(wchar_t);
    value->resize(units == 0 ? 0 : units - 1);
    return std::optional<std::string>(narrow(value->c_str()));
}

} // namespace platform
