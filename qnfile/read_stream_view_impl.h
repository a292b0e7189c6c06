#pragma once

#include "qnfile/file_impl.h"
#include "qnfile/read_stream_view.h"

namespace qnfile::impl {

/// The state of reading a range of a file that it does not own. The position is absolute and always
/// within the range.
struct FileReadView {
    /// Throws error.qnfile.io.view.badRange if the range exceeds the present size of the file.
    FileReadView(FileImpl& sharedFile, std::uint64_t start, std::uint64_t length);

    std::uint64_t read(void* buffer, std::uint64_t count);
    std::uint64_t skip(std::uint64_t count) noexcept;
    std::uint64_t available() const noexcept { return size + offset - position; }
    std::uint64_t seek(std::int64_t distance, qncore::SeekOrigin origin);

    FileImpl* file;
    std::uint64_t offset;
    std::uint64_t size;
    std::uint64_t position;

  private:
    void move_to(std::uint64_t target) noexcept;
};

/// The common base of roots and children.
class ReadingView : public FileReadStreamView {
  public:
    std::uint64_t read(void* buffer, std::uint64_t count) override {
        return view().read(buffer, count);
    }
    std::uint64_t skip(std::uint64_t count) override { return view().skip(count); }
    std::uint64_t available() override { return view().available(); }
    std::uint64_t seek(std::int64_t offset, qncore::SeekOrigin origin) override {
        return view().seek(offset, origin);
    }
    /// Beyond the end the size wraps around, and the range check reports that size.
    qncore::RefCountPtr<qncore::ISeekableReadStreamView> create_view(std::uint64_t offset) final {
        return create_view(offset, size() - offset);
    }
    using FileReadStreamView::create_view;

  private:
    virtual FileReadView& view() noexcept = 0;
};

class FileReadStreamViewImpl final : public ReadingView {
  public:
    class RootView;

    /// A child of `parent`; `offset` counts from the start of the file.
    FileReadStreamViewImpl(qncore::RefCountPtr<RootView> root,
                           qncore::RefCountPtr<qncore::ISeekableReadStreamView> parent,
                           std::uint64_t offset, std::uint64_t size);
    ~FileReadStreamViewImpl() override;

    platform::FileHandle handle() const override { return view_.file->handle(); }
    const std::string& filename() const override { return view_.file->filename(); }
    std::uint64_t size() override { return view_.size; }
    std::uint64_t offset_in_parent() override { return view_.offset - parent_->offset_in_file(); }
    std::uint64_t offset_in_file() override { return view_.offset; }
    qncore::RefCountPtr<qncore::ISeekableReadStreamView> parent() override { return parent_; }
    qncore::RefCountPtr<qncore::ISeekableReadStreamView> root() override;
    using ReadingView::create_view;
    qncore::RefCountPtr<qncore::ISeekableReadStreamView> create_view(std::uint64_t offset,
                                                                     std::uint64_t size) override;

  private:
    FileReadView& view() noexcept override { return view_; }

    qncore::RefCountPtr<RootView> root_;
    qncore::RefCountPtr<qncore::ISeekableReadStreamView> parent_;
    FileReadView view_;
};

/// The view of the whole file; owns the handle.
class FileReadStreamViewImpl::RootView final : public ReadingView {
  public:
    RootView(const std::string& filename, FileShareMode share, FileOpenFlags flags)
        : file_(filename, access_read, open_existing, share, flags)
        , view_(file_, 0, file_.size()) {}

    platform::FileHandle handle() const override { return file_.handle(); }
    const std::string& filename() const override { return file_.filename(); }
    std::uint64_t size() override { return file_.size(); }
    std::uint64_t offset_in_parent() override { return 0; }
    std::uint64_t offset_in_file() override { return 0; }
    qncore::RefCountPtr<qncore::ISeekableReadStreamView> parent() override { return {}; }
    qncore::RefCountPtr<qncore::ISeekableReadStreamView> root() override {
        return qncore::RefCountPtr<qncore::ISeekableReadStreamView>(this);
    }
    using ReadingView::create_view;
    qncore::RefCountPtr<qncore::ISeekableReadStreamView> create_view(std::uint64_t offset,
                                                                     std::uint64_t size) override;

    FileImpl& file() noexcept { return file_; }

  private:
    FileReadView& view() noexcept override { return view_; }

    FileImpl file_;
    FileReadView view_;
};

} // namespace qnfile::impl
