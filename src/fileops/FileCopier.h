#pragma once

#include "platform/EntryRef.h"
#include "platform/Errors.h"
#include "platform/Node.h"

#include <cstddef>
#include <memory>
#include <string>
#include <sys/types.h>

namespace platform {
class File;
} // namespace platform

namespace kestrin {

class CopyControl;
class KestrinEntry;
class OverwritePolicy;

// Copies one file: its data, then its attributes (typed attributes and every
// other extended attribute), and its permission bits. Reports each chunk to
// the progress window and stops when the user asks it to. A target whose
// data is not complete never stays behind: a stopped or failed data copy
// removes it. (A failed attribute leaves the complete data in place.)
//
// The modification time is not carried over, as `cp` without -p does not:
// the copy is new, and "Overwrite All Older" compares against that.
class FileCopier
{
public:
    // What CopyFile answers when the user stopped the copy.
    static constexpr status_t kStopped = -1;
    // The copy buffer: as much of this as memory allows, in steps of kBufferStep.
    static constexpr size_t kMaxBufferSize = 512 * 1024;
    static constexpr size_t kBufferStep = 8 * 1024;
    // Blocks a copy leaves free on the target volume at the least.
    static constexpr off_t kSpareBlocks = 128;

    // Either may be null: no progress is reported and no question asked; an
    // existing target then fails the copy with B_FILE_EXISTS. Errors go to
    // `control`, or without one to an alert of their own.
    FileCopier(CopyControl *control, OverwritePolicy *overwrite);

    FileCopier(const FileCopier &) = delete;
    FileCopier &operator=(const FileCopier &) = delete;

    // B_OK when copied, or when the user chose to keep an existing target
    // (then Skipped() is true); kStopped; else the status of what failed.
    // With `preflight`, a file that would leave fewer than kSpareBlocks free
    // on the target volume is refused with an error alert and B_DEVICE_FULL.
    status_t CopyFile(KestrinEntry &source, const entry_ref &target, bool preflight = true);

    bool Skipped() const { return fSkipped; }

    // The blocks of `blockSize` that a copy of the file takes: its data, one
    // more, and room for its attributes.
    static status_t PreflightFileSize(const std::string &sourcePath, off_t blockSize, off_t *blocks);

private:
    struct Buffer
    {
        std::unique_ptr<char[]> data;
        size_t size = 0;
    };

    static bool AllocateBuffer(Buffer *buffer);
    status_t CheckSpace(const std::string &sourcePath, const std::string &targetPath);
    status_t OpenTarget(KestrinEntry &source,
                        const std::string &sourcePath,
                        const std::string &targetPath,
                        platform::File *target,
                        bool *replaced);
    status_t CopyData(platform::File &source,
                      platform::File &target,
                      off_t expectedSize,
                      const std::string &leafName,
                      Buffer &buffer);
    status_t CopyAttributes(const std::string &sourcePath,
                            const std::string &targetPath,
                            Buffer &buffer,
                            bool replaced);
    static status_t CopyAttribute(const platform::Node &source,
                                  platform::Node &target,
                                  const std::string &name,
                                  const attr_info &info,
                                  Buffer &buffer);

    CopyControl *fControl;
    OverwritePolicy *fOverwrite;
    bool fSkipped = false;
};

} // namespace kestrin
