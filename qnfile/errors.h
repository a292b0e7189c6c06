#pragma once

#include "qncore/error_code.h"

namespace qnfile::error {

inline constinit const qncore::ErrorCode qnfile{"error.qnfile"};
inline constinit const qncore::ErrorCode qnfile_directory{"error.qnfile.directory"};
inline constinit const qncore::ErrorCode qnfile_directory_access{"error.qnfile.directory.access"};
inline constinit const qncore::ErrorCode qnfile_directory_access_notHidden{
    "error.qnfile.directory.access.notHidden"};
inline constinit const qncore::ErrorCode qnfile_directory_access_notRead{
    "error.qnfile.directory.access.notRead"};
inline constinit const qncore::ErrorCode qnfile_directory_access_notWrite{
    "error.qnfile.directory.access.notWrite"};
inline constinit const qncore::ErrorCode qnfile_directory_alreadyExists{
    "error.qnfile.directory.alreadyExists"};
inline constinit const qncore::ErrorCode qnfile_directory_entry{"error.qnfile.directory.entry"};
inline constinit const qncore::ErrorCode qnfile_directory_iterator{
    "error.qnfile.directory.iterator"};
inline constinit const qncore::ErrorCode qnfile_directory_notDirectory{
    "error.qnfile.directory.notDirectory"};
inline constinit const qncore::ErrorCode qnfile_directory_notFound{
    "error.qnfile.directory.notFound"};
inline constinit const qncore::ErrorCode qnfile_directory_sequence{
    "error.qnfile.directory.sequence"};
inline constinit const qncore::ErrorCode qnfile_filename{"error.qnfile.filename"};
inline constinit const qncore::ErrorCode qnfile_filename_uri{"error.qnfile.filename.uri"};
inline constinit const qncore::ErrorCode qnfile_io{"error.qnfile.io"};
inline constinit const qncore::ErrorCode qnfile_io_open{"error.qnfile.io.open"};
inline constinit const qncore::ErrorCode qnfile_io_open_invalidParameter{
    "error.qnfile.io.open.invalidParameter"};
inline constinit const qncore::ErrorCode qnfile_io_read{"error.qnfile.io.read"};
inline constinit const qncore::ErrorCode qnfile_io_resize{"error.qnfile.io.resize"};
inline constinit const qncore::ErrorCode qnfile_io_seek{"error.qnfile.io.seek"};
inline constinit const qncore::ErrorCode qnfile_io_seek_badOrigin{"error.qnfile.io.seek.badOrigin"};
inline constinit const qncore::ErrorCode qnfile_io_size{"error.qnfile.io.size"};
inline constinit const qncore::ErrorCode qnfile_io_view{"error.qnfile.io.view"};
inline constinit const qncore::ErrorCode qnfile_io_view_badRange{"error.qnfile.io.view.badRange"};
inline constinit const qncore::ErrorCode qnfile_io_write{"error.qnfile.io.write"};

} // namespace qnfile::error
