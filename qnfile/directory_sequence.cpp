#include "qnfile/directory_sequence.h"

#include <type_traits>

#include "qncore/string_conversion.h"
#include "qncore/system_name.h"
#include "qnfile/directory_entry_impl.h"
#include "qnfile/errors.h"
#include "qnfile/report.h"

namespace qnfile {
namespace {

using impl::DirectoryEntryImplWin32;
using impl::DirectorySequenceImplWin32;
using qncore::ErrorInfoPtr;

impl::DirectorySequencePtr
system_side(const qncore::RefCountPtr<impl::DirectorySequenceImpl>& impl) noexcept {
    return impl::DirectorySequencePtr(static_cast<DirectorySequenceImplWin32*>(impl.get()));
}

DirectoryEntryImplWin32&
system_side(const qncore::RefCountPtr<impl::DirectoryEntryImpl>& impl) noexcept {
    return static_cast<DirectoryEntryImplWin32&>(*impl);
}

/// The pattern's text in the units of the system's names.
template <class Unit>
std::basic_string<Unit> to_units(std::string text) {
    if constexpr (std::is_same_v<Unit, wchar_t>) {
        return qncore::to_wstring(text);
    } else {
        return text;
    }
}

std::string base_path_of(std::string path) {
    if (path.empty()) {
        return "./";
    }
    qncore::check_system_name(path);
    path = impl::with_slashes(std::move(path));
    if (path.back() != '/') {
        path += '/';
    }
    return path;
}

impl::DirectorySequencePtr open(const std::string& basePath, const PathPattern& options,
                                ErrorInfoPtr* error) {
    return DirectorySequenceImplWin32::create_sequence(basePath, options, {}, {}, 0, error);
}

} // namespace

DirectorySequence::DirectorySequence(const char* path, std::size_t pathLength, const char* pattern,
                                     std::size_t patternLength, bool caseSensitive,
                                     ErrorInfoPtr* error) {
    assign(path, pathLength, pattern, patternLength, caseSensitive, error);
}

DirectorySequence::DirectorySequence(const char* path, std::size_t pathLength,
                                     ErrorInfoPtr* error) {
    assign(path, pathLength, error);
}

void DirectorySequence::assign(const char* path, std::size_t pathLength, const char* pattern,
                               std::size_t patternLength, bool caseSensitive, ErrorInfoPtr* error) {
    const PathPattern options(
        to_units<platform::NameUnit>(impl::with_slashes(std::string(pattern, patternLength))),
        caseSensitive);
    impl_ = open(base_path_of(std::string(path, pathLength)), options, error);
}

void DirectorySequence::assign(const char* path, std::size_t pathLength, ErrorInfoPtr* error) {
    assign(path, pathLength, "", 0, false, error);
}

void DirectorySequence::rewind(ErrorInfoPtr* error) {
    if (impl_) {
        impl_ = open(impl_->base_path(), system_side(impl_)->options(), error);
    }
}

DirectorySequence::DirectoryIterator DirectorySequence::begin(ErrorInfoPtr* error) const {
    if (!impl_) {
        return {};
    }
    return DirectoryIterator(
        DirectoryEntry(DirectoryEntryImplWin32::begin(system_side(impl_), error)));
}

DirectorySequence::DirectoryIterator DirectorySequence::end() const noexcept {
    return {};
}

using Iterator = DirectorySequence::DirectoryIterator;

void Iterator::increment(ErrorInfoPtr* error) {
    if (!entry_) {
        impl::report(error, error::qnfile_directory_iterator,
                     "DirectoryIterator overrun. this={@this}", "this",
                     static_cast<const void*>(this),
                     QN_LOCATION("qnfile::DirectorySequence::DirectoryIterator::increment()"));
        return;
    }
    if (entry_->is_shared()) { // whoever else holds the entry must find it as it is
        entry_ = system_side(entry_).take_over();
    }
    if (!system_side(entry_).advance(error)) {
        entry_.reset();
    }
}

Iterator& Iterator::operator++() {
    increment(nullptr);
    return *this;
}

Iterator Iterator::operator++(int) {
    Iterator before = *this;
    increment(nullptr);
    return before;
}

bool operator==(const Iterator& left, const Iterator& right) noexcept {
    if (!left.entry_ || !right.entry_) {
        return left.entry_ == right.entry_;
    }
    return system_side(left.entry_) == system_side(right.entry_);
}

} // namespace qnfile
