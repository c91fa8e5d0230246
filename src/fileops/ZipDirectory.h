#pragma once

#include "fileops/ArchiveReader.h"

#include <atomic>
#include <functional>
#include <string>

namespace kestrin {

// The members of a zip archive read from its central directory alone: one
// read of the directory at the archive's end instead of a visit to every
// member's own header, which is what makes a zip of 100,000 members list
// in a fraction of the time. Only listing uses it; unpacking reads members
// through ArchiveReader.
//
// Anything this reader is not sure to describe exactly as ArchiveReader
// would (no directory found, numbers that do not add up, split archives,
// names that are not plain ASCII, attributes of other systems) makes it give
// up with B_UNSUPPORTED before it calls `each` at all, so that the caller
// reads the archive the slow, general way. Core code, run on a worker.
class ZipDirectory
{
public:
    // Calls `each` for every member in the directory's order. B_OK,
    // B_CANCELED when `cancel` was set, or B_UNSUPPORTED.
    static status_t Read(const std::string &archive,
                         const std::function<void(const ArchiveMember &)> &each,
                         const std::atomic<bool> *cancel = nullptr);
};

} // namespace kestrin
