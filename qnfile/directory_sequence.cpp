#include "qnfile/directory_sequence.h"

#include <type_traits>

#include "qncore/string_conversion.h"
#include "qncore/system_name.h"
#include "qnfile/directory_entry_impl.h"
#include "qnfile/errors.h"
#include "qnfile/path_forms.h"
#include "qnfile/report.h"

namespace qnfile {
namespace {

using impl::DirectoryEntryImplWin32;
using impl::DirectorySequenceImplWin32;
using impl::system_side;
using qncore::ErrorInfoPtr;

impl::DirectorySequencePtr
walk_of(const qncore::RefCountPtr<impl::DirectorySequenceImpl>& impl) noexcept {
    return impl::DirectorySequencePtr(static_cast<DirectorySequenceImplWin32*>(impl.get()));
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
        impl_ = open(impl_->base_path(), walk_of(impl_)->options(), error);
    }
}

DirectorySequence::DirectoryIterator DirectorySequence::begin(ErrorInfoPtr* error) const {
    if (!impl_) {
        return {};
    }
    return DirectoryIterator(DirectoryEntry(DirectoryEntryImplWin32::begin(walk_of(impl_), error)));
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
    if (entry_.impl_->is_shared()) { // the other holders keep the entry unchanged
        entry_ = DirectoryEntry(system_side(entry_.impl_).take_over());
    }
    ErrorInfoPtr loss;
    if (!system_side(entry_.impl_).advance(error, loss)) {
        entry_ = DirectoryEntry();
    }
    if (loss) {
        qncore::deliver_error(error, std::move(loss));
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

} // namespace qnfile
