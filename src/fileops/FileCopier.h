#pragma once

#include "platform/EntryRef.h"
#include "platform/Errors.h"
#include "platform/File.h"

#include <cstddef>
#include <string>
#include <sys/types.h>
#include <vector>

namespace kestrin {

class CopyControl;
class KestrinEntry;
class OverwritePolicy;

// Copies one file: its data, then its attributes (typed attributes and every
// other extended attribute, byte for byte), its permission bits and, last,
// its access and modification times, as `cp -a` does. Reports each chunk to
// the progress window and stops when the user asks it to. A target whose
// data is not complete never stays behind: a stopped or failed data copy
// removes it. (A failed attribute leaves the complete data in place.)
//
// The copy carries the original's date, so sorting by date, comparing
// folders and "Overwrite All Older" judge the original, not the moment of
// the copy.
class FileCopier
{
public:
    // What CopyFile answers when the user stopped the copy.
    static constexpr status_t kStopped = -1;
    // The buffer of a copy that the kernel cannot make itself.
    static constexpr size_t kBufferSize = 512 * 1024;
    // What the kernel copies between two progress reports: starting at
    // kBufferSize, doubled while a chunk takes less than kQuickChunk and
    // halved when one takes more than kSlowChunk, within these bounds. Few
    // calls where the copy is fast, a prompt stop where it is slow.
    static constexpr size_t kMaxKernelChunk = 64 * 1024 * 1024;
    static constexpr int kQuickChunkMs = 15;
    static constexpr int kSlowChunkMs = 40;
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
    // Where the file system can share extents, the copy shares them.
    status_t CopyFile(KestrinEntry &source, const entry_ref &target, bool preflight = true);

    bool Skipped() const { return fSkipped; }

private:
    using Xattrs = std::vector<platform::File::Xattr>;

    status_t CheckSpace(const std::string &targetPath, off_t size, const Xattrs &xattrs);
    status_t OpenTarget(KestrinEntry &source,
                        const std::string &sourcePath,
                        const std::string &targetPath,
                        platform::File *target,
                        bool *replaced);
    status_t CopyData(platform::File &source, platform::File &target, const std::string &leafName);
    // What CopyData cannot have the kernel copy: from where it left off.
    status_t CopyByReading(platform::File &source,
                           platform::File &target,
                           const std::string &leafName,
                           int64_t total);
    // Reports a chunk; false when the user asked to stop.
    bool Reported(int64_t bytes, const std::string &leafName, int64_t total);
    static status_t CopyAttributes(platform::File &target, const Xattrs &xattrs, bool replaced);

    CopyControl *fControl;
    OverwritePolicy *fOverwrite;
    bool fSkipped = false;
};

} // namespace kestrin
