#include "qnfile/file_stream.h"

#include "qnfile/file_stream_impl.h"
#include "qnfile/file_utilities.h"

namespace qnfile {

using qncore::make_ref_counted;
using qncore::RefCountPtr;
using qnuri::UriReference;

RefCountPtr<FileReadStream> FileReadStream::create(const std::string& filename, FileShareMode share,
                                                   FileOpenFlags flags) {
    return make_ref_counted<impl::FileReadStreamImpl>(filename, impl::access_read, open_existing,
                                                      share, flags);
}

RefCountPtr<FileWriteStream> FileWriteStream::create(const std::string& filename,
                                                     FileCreationDisposition disposition,
                                                     FileShareMode share, FileOpenFlags flags) {
    return make_ref_counted<impl::FileWriteStreamImpl>(filename, impl::access_write, disposition,
                                                       share, flags);
}

RefCountPtr<FileReadWriteStream> FileReadWriteStream::create(const std::string& filename,
                                                             FileCreationDisposition disposition,
                                                             FileShareMode share,
                                                             FileOpenFlags flags) {
    return make_ref_counted<impl::FileReadWriteStreamImpl>(filename, impl::access_read_write,
                                                           disposition, share, flags);
}

RefCountPtr<FileReadStream> FileReadStream::create(const UriReference& uri, FileShareMode share,
                                                   FileOpenFlags flags) {
    return create(filename_from_uri(uri, nullptr), share, flags);
}

RefCountPtr<FileWriteStream> FileWriteStream::create(const UriReference& uri,
                                                     FileCreationDisposition disposition,
                                                     FileShareMode share, FileOpenFlags flags) {
    return create(filename_from_uri(uri, nullptr), disposition, share, flags);
}

RefCountPtr<FileReadWriteStream> FileReadWriteStream::create(const UriReference& uri,
                                                             FileCreationDisposition disposition,
                                                             FileShareMode share,
                                                             FileOpenFlags flags) {
    return create(filename_from_uri(uri, nullptr), disposition, share, flags);
}

} // namespace qnfile
