#pragma once

#include "qnfile/file_impl.h"

namespace qnfile::impl {

/// A stream object that contains its file; `Bases` are the public class and further interfaces.
template <class... Bases>
class FileBacked : public Bases... {
  public:
    template <class... Arguments>
    explicit FileBacked(const Arguments&... arguments)
        : file_(arguments...) {}

    platform::FileHandle handle() const override { return file_.handle(); }
    const std::string& filename() const override { return file_.filename(); }
    std::uint64_t seek(std::int64_t offset, qncore::SeekOrigin origin) override {
        return file_.seek(offset, origin);
    }

  protected:
    FileImpl file_;
};

template <class Base>
class Reading : public Base {
  public:
    using Base::Base;

    std::uint64_t read(void* buffer, std::uint64_t count) override {
        return this->file_.read(buffer, count);
    }
    std::uint64_t skip(std::uint64_t count) override { return this->file_.skip(count); }
    std::uint64_t available() override { return this->file_.available(); }
};

template <class Base>
class Writing : public Base {
  public:
    using Base::Base;

    std::uint64_t write(const void* buffer, std::uint64_t count) override {
        return this->file_.write_all(buffer, count);
    }
    std::uint64_t size() override { return this->file_.size(); }
    void resize(std::uint64_t bytes) override { this->file_.resize(bytes); }
};

class FileReadStreamImpl final : public Reading<FileBacked<FileReadStream>> {
  public:
    using Reading::Reading;
};

class FileWriteStreamImpl final : public Writing<FileBacked<FileWriteStream>> {
  public:
    using Writing::Writing;
};

/// The extra interfaces make the object usable as a seekable stream of either direction.
class FileReadWriteStreamImpl final
    : public Writing<Reading<FileBacked<FileReadWriteStream, qncore::ISeekableReadStream,
                                        qncore::ISeekableWriteStream>>> {
  public:
    using Writing::Writing;
};

} // namespace qnfile::impl
