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
    RegistryKey(HKEY root, const std::string& name) {
        if (::RegOpenKeyExW(root, wide(name).c_str(), 0, KEY_READ, &key_) != ERROR_SUCCESS) {
            key_ = nullptr;
        }
    }
    RegistryKey(const RegistryKey&) = delete;
    RegistryKey& operator=(const RegistryKey&) = delete;
    ~RegistryKey() {
        if (key_ != nullptr) {
            ::RegCloseKey(key_);
        }
    }

    /// The value's bytes as UTF-16, whatever type it has; nothing when there is no such value.
    std::optional<std::wstring> value(const wchar_t* name, DWORD& size) const {
        if (key_ == nullptr || !query(name, nullptr, size)) {
            return std::nullopt;
        }
        std::wstring text((size + 1) / sizeof(wchar_t), L'\0');
        return query(name, text.data(), size) ? std::optional(text) : std::nullopt;
    }

  private:
    bool query(const wchar_t* name, wchar_t* data, DWORD& size) const {
        return ::RegQueryValueExW(key_, name, nullptr, nullptr, reinterpret_cast<BYTE*>(data),
                                  &size) == ERROR_SUCCESS;
    }

    HKEY key_ = nullptr;
};

} // namespace

std::string computer_name() {
    if (!seams().computer_name.empty()) {
        return seams().computer_name;
    }
    std::array<wchar_t, MAX_COMPUTERNAME_LENGTH + 1> name{};
    DWORD count = name.size();
    ::GetComputerNameW(name.data(), &count); // required: no look at its result
    return narrow({name.data(), count < name.size() ? count : name.size()});
}

std::string machine_setting_source() {
    return seams().machine_setting.empty() ? machine_key : seams().machine_setting;
}

std::optional<std::string> machine_root_directory() {
    // A test's machine lies among the settings of its account, which anybody may write.
    const RegistryKey key(seams().machine_setting.empty() ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER,
                          machine_setting_source());
    DWORD size = 0;
    auto value = key.value(path_value, size);
    if (!value) {
        return std::nullopt;
    }
    // Required: the last unit goes as the closing zero, also when the value holds none.
    const std::size_t units = size / sizeof(wchar_t);
    value->resize(units == 0 ? 0 : units - 1);
    return narrow(value->c_str());
}

} // namespace platform
