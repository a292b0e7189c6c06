#pragma once

#include "qncore/error_code.h"

namespace qnfile::error {

extern const qncore::ErrorCode qnfile;
extern const qncore::ErrorCode qnfile_directory;
extern const qncore::ErrorCode qnfile_directory_access;
extern const qncore::ErrorCode qnfile_directory_access_notHidden;
extern const qncore::ErrorCode qnfile_directory_access_notRead;
extern const qncore::ErrorCode qnfile_directory_access_notWrite;
extern const qncore::ErrorCode qnfile_directory_alreadyExists;
extern const qncore::ErrorCode qnfile_directory_entry;
extern const qncore::ErrorCode qnfile_directory_iterator;
extern const qncore::ErrorCode qnfile_directory_notDirectory;
extern const qncore::ErrorCode qnfile_directory_notFound;
extern const qncore::ErrorCode qnfile_directory_sequence;
extern const qncore::ErrorCode qnfile_filename;
extern const qncore::ErrorCode qnfile_filename_uri;
extern const qncore::ErrorCode qnfile_io;
extern const qncore::ErrorCode qnfile_io_open;
extern const qncore::ErrorCode qnfile_io_open_invalidParameter;
extern const qncore::ErrorCode qnfile_io_read;
extern const qncore::ErrorCode qnfile_io_resize;
extern const qncore::ErrorCode qnfile_io_seek;
extern const qncore::ErrorCode qnfile_io_seek_badOrigin;
extern const qncore::ErrorCode qnfile_io_size;
extern const qncore::ErrorCode qnfile_io_view;
extern const qncore::ErrorCode qnfile_io_view_badRange;
extern const qncore::ErrorCode qnfile_io_write;

} // namespace qnfile::error
