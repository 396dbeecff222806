#include "platform/defaults/DatabaseError.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace quillet {

DatabaseError databaseErrorOf(int systemError, const FilePath& file, DatabaseError otherwise)
{
    switch (systemError) {
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
        return DatabaseError::full;
    case EROFS:
        return DatabaseError::readOnly;
    case EACCES:
    case EPERM:
    case ENOENT:
        // Only writing is refused if the file can be read, or if one can at least tell that it is missing.
        return ::faccessat(AT_FDCWD, file.c_str(), R_OK, AT_EACCESS) == 0 || errno == ENOENT ? DatabaseError::readOnly
                                                                                             : DatabaseError::unreadable;
    default:
        return otherwise;
    }
}

}  // namespace quillet
