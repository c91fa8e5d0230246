#include "platform/Errors.h"

#include <cerrno>

namespace platform {

status_t StatusFromErrno(int error)
{
    switch (error) {
    case 0:
        return B_OK;
    case ENOMEM:
        return B_NO_MEMORY;
    case EIO:
        return B_IO_ERROR;
    case EACCES:
        return B_PERMISSION_DENIED;
    case EPERM: // as BeOS defined it
        return B_NOT_ALLOWED;
    case EINVAL:
    case EBADF:
    case EFAULT:
        return B_BAD_VALUE;
    case ETIMEDOUT:
        return B_TIMED_OUT;
    case EINTR:
        return B_INTERRUPTED;
    case EAGAIN:
        return B_WOULD_BLOCK;
    case ECANCELED:
        return B_CANCELED;
    case EBUSY:
    case ETXTBSY:
        return B_BUSY;
    case EEXIST:
        return B_FILE_EXISTS;
    case ENOENT:
        return B_ENTRY_NOT_FOUND;
    case ENAMETOOLONG:
        return B_NAME_TOO_LONG;
    case ENOTDIR:
        return B_NOT_A_DIRECTORY;
    case ENOTEMPTY:
        return B_DIRECTORY_NOT_EMPTY;
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
        return B_DEVICE_FULL;
    case EROFS:
        return B_READ_ONLY_DEVICE;
    case EISDIR:
        return B_IS_A_DIRECTORY;
    case EMFILE:
    case ENFILE:
        return B_NO_MORE_FDS;
    case EXDEV:
        return B_CROSS_DEVICE_LINK;
    case ELOOP:
        return B_LINK_LIMIT;
    case EPIPE:
        return B_BUSTED_PIPE;
    case ENOTSUP:
    case ENOSYS:
        return B_UNSUPPORTED;
    case ENODATA:
        return B_ENTRY_NOT_FOUND;
    case ERANGE:
        return B_BAD_VALUE;
    default:
        return B_ERROR;
    }
}

status_t LastError()
{
    return StatusFromErrno(errno);
}

} // namespace platform
