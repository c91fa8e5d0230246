#pragma once

#include "platform/Errors.h"

#include <cerrno>
#include <dirent.h>
#include <unistd.h>
#include <vector>

namespace platform {

// Large enough that a folder of 100,000 entries takes a dozen system calls,
// small enough to live on the heap only while names are read.
inline constexpr size_t kDirentBufferSize = 256 * 1024;

inline bool IsDotOrDotDot(const char *name)
{
    return name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'));
}

// Calls visit(name, d_type) for every entry of the open folder `fd` from its
// current position, "." and ".." left out, until visit answers false. Reads
// the kernel's records directly into `buffer`: readdir would copy each name
// once more and allocate a stream per call.
template<typename Visit>
status_t ForEachDirEntry(int fd, std::vector<char> &buffer, Visit visit)
{
    for (;;) {
        const ssize_t length = getdents64(fd, buffer.data(), buffer.size());
        if (length < 0) {
            if (errno == EINTR)
                continue;
            return LastError();
        }
        if (length == 0)
            return B_OK;
        for (ssize_t offset = 0; offset < length;) {
            const auto *entry = reinterpret_cast<const dirent64 *>(buffer.data() + offset);
            offset += entry->d_reclen;
            if (IsDotOrDotDot(entry->d_name))
                continue;
            if (!visit(entry->d_name, entry->d_type))
                return B_OK;
        }
    }
}

template<typename Visit>
status_t ForEachDirEntry(int fd, Visit visit)
{
    std::vector<char> buffer(kDirentBufferSize);
    return ForEachDirEntry(fd, buffer, visit);
}

} // namespace platform
