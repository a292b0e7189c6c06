#pragma once

#include <cstdint>
#include <string>

#include "qnfile/directory_sequence_impl.h"

namespace qnfile::impl {

class DirectoryEntryImpl : public qncore::RefCounted<qncore::AtomicRefCount> {
  public:
    explicit DirectoryEntryImpl(std::string name)
        : name_(std::move(name)) {}

    const std::string& name() const noexcept { return name_; }

  protected:
    ~DirectoryEntryImpl() override = default;

    std::string name_;
};

class DirectoryEntryImplWin32;
using DirectoryEntryPtr = qncore::RefCountPtr<DirectoryEntryImplWin32>;

/// An entry and, as long as no copy has taken it along, the iterator that stands on it.
class DirectoryEntryImplWin32 final : public DirectoryEntryImpl {
  public:
    DirectoryEntryImplWin32(std::string name, DirectorySequencePtr sequence,
                            DirectoryIteratorPtr iterator);

    /// The first entry of a walk, or null.
    static DirectoryEntryPtr begin(const DirectorySequenceImplWin32& walk,
                                   qncore::ErrorInfoPtr* error);

    /// The entry of one path, in a sequence without a walk.
    static DirectoryEntryPtr create_from_full_path(const std::string& path,
                                                   qncore::ErrorInfoPtr* error);

    /// The next entry, or null at the end: this object when nobody else holds it, else a new one
    /// that takes the iterator along.
    DirectoryEntryPtr increment(qncore::ErrorInfoPtr* error);

    const DirectorySequenceImplWin32& sequence() const noexcept { return *sequence_; }
    std::uint32_t access() const noexcept { return access_; }
    std::uint32_t type() const noexcept { return type_; }
    std::uint64_t size() const noexcept { return size_; }
    std::int64_t accessed() const noexcept { return accessed_; }
    std::int64_t modified() const noexcept { return modified_; }
    std::int64_t created() const noexcept { return created_; }
    std::uint32_t hash_value() const noexcept;

  private:
    ~DirectoryEntryImplWin32() override = default;

    bool advance(qncore::ErrorInfoPtr* error);
    bool restore(qncore::ErrorInfoPtr* error);
    bool ascend();
    void take(const DirectoryIteratorImplWin32& iterator);
    void set_status(const platform::FileStatus& status) noexcept;

    DirectorySequencePtr sequence_;
    DirectoryIteratorPtr iterator_;
    bool has_entered_ = false; ///< once the place is found again, it is behind the way down
    mutable std::uint32_t name_hash_ = 0; ///< 0 until computed
    std::uint32_t access_ = 0;
    std::uint32_t type_ = 0;
    std::uint64_t size_ = 0;
    std::int64_t accessed_ = 0;
    std::int64_t modified_ = 0;
    std::int64_t created_ = 0;
};

bool operator==(const DirectoryEntryImplWin32& left, const DirectoryEntryImplWin32& right) noexcept;

} // namespace qnfile::impl
