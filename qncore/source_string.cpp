#include "qncore/source_string.h"

#include <algorithm>
#include <cstring>
#include <ostream>

namespace qncore {

constinit const char SourceString::sm_emptyStrData[1] = "";

SourceString::SourceString(const char* text, bool borrow)
    : SourceString(text) {
    if (!borrow) {
        alloc_dynamic(data_, std::strlen(data_));
    }
}

SourceString SourceString::copy_of(std::string_view text) {
    SourceString copy;
    copy.alloc_dynamic(text.data(), text.size());
    return copy;
}

int SourceString::compare(const SourceString& other) const noexcept {
    return view().compare(other.view());
}

std::string_view SourceString::view() const noexcept {
    if (size_ == unmeasured) {
        return data_;
    }
    return {data_, static_cast<std::size_t>(size_ >= 0 ? size_ : -1 - size_)};
}

void SourceString::alloc_dynamic(const char* text, std::size_t length) {
    char* copy = new char[length + 1];
    std::copy_n(text, length, copy);
    copy[length] = '\0';
    data_ = copy;
    size_ = -1 - static_cast<std::int64_t>(length);
}

void SourceString::dealloc_dynamic() noexcept {
    delete[] data_;
    data_ = sm_emptyStrData;
    size_ = 0;
}

void SourceString::clone_dynamic() {
    const std::string_view text = view();
    alloc_dynamic(text.data(), text.size());
}

std::ostream& operator<<(std::ostream& stream, const SourceString& text) {
    return stream << text.view();
}

} // namespace qncore
