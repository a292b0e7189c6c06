#include "qnfile/errors.h"

namespace qnfile::error {

using qncore::ErrorCode;

constinit const ErrorCode qnfile{"error.qnfile"};
constinit const ErrorCode qnfile_directory{"error.qnfile.directory"};
constinit const ErrorCode qnfile_directory_access{"error.qnfile.directory.access"};
constinit const ErrorCode qnfile_directory_access_notHidden{
    "error.qnfile.directory.access.notHidden"};
constinit const ErrorCode qnfile_directory_access_notRead{"error.qnfile.directory.access.notRead"};
constinit const ErrorCode qnfile_directory_access_notWrite{
    "error.qnfile.directory.access.notWrite"};
constinit const ErrorCode qnfile_directory_alreadyExists{"error.qnfile.directory.alreadyExists"};
constinit const ErrorCode qnfile_directory_entry{"error.qnfile.directory.entry"};
constinit const ErrorCode qnfile_directory_iterator{"error.qnfile.directory.iterator"};
constinit const ErrorCode qnfile_directory_notDirectory{"error.qnfile.directory.notDirectory"};
constinit const ErrorCode qnfile_directory_notFound{"error.qnfile.directory.notFound"};
constinit const ErrorCode qnfile_directory_sequence{"error.qnfile.directory.sequence"};
constinit const ErrorCode qnfile_filename{"error.qnfile.filename"};
constinit const ErrorCode qnfile_filename_uri{"error.qnfile.filename.uri"};
constinit const ErrorCode qnfile_io{"error.qnfile.io"};
constinit const ErrorCode qnfile_io_open{"error.qnfile.io.open"};
constinit const ErrorCode qnfile_io_open_invalidParameter{"error.qnfile.io.open.invalidParameter"};
constinit const ErrorCode qnfile_io_read{"error.qnfile.io.read"};
constinit const ErrorCode qnfile_io_resize{"error.qnfile.io.resize"};
constinit const ErrorCode qnfile_io_seek{"error.qnfile.io.seek"};
constinit const ErrorCode qnfile_io_seek_badOrigin{"error.qnfile.io.seek.badOrigin"};
constinit const ErrorCode qnfile_io_size{"error.qnfile.io.size"};
constinit const ErrorCode qnfile_io_view{"error.qnfile.io.view"};
constinit const ErrorCode qnfile_io_view_badRange{"error.qnfile.io.view.badRange"};
constinit const ErrorCode qnfile_io_write{"error.qnfile.io.write"};

} // namespace qnfile::error
