#pragma once

#include "platform/Errors.h"

#include <cstdint>
#include <string>
#include <sys/stat.h>

struct archive;
struct archive_entry;

namespace kestrin {

// One member of an archive as its header describes it.
struct ArchiveMember
{
    // The path as the archive names it, made regular: no leading "./", no
    // doubled or trailing "/". An absolute path keeps its leading "/"; the
    // folder an archive was made of ("." or "./") is "".
    std::string path;
    struct stat info = {};
    // For a symbolic link, where it leads; for a hard link, the member it
    // shares its data with (a path in the archive).
    std::string linkTarget;
    std::string hardLinkTarget;
    bool encrypted = false;
};

// Reads an archive of any kind libarchive knows (zip, tar with or without
// gzip, bzip2, xz or zstd, 7z, iso9660, cpio, ar, rar ...) from start to end,
// once: member headers in order, and the data of the member just read. Core
// code: no window, used on workers.
class ArchiveReader
{
public:
    explicit ArchiveReader(const std::string &path);
    ~ArchiveReader();

    ArchiveReader(const ArchiveReader &) = delete;
    ArchiveReader &operator=(const ArchiveReader &) = delete;

    // B_OK, or why the archive cannot be read (ErrorText() says more).
    status_t InitCheck() const { return fStatus; }

    // The next member; B_ENTRY_NOT_FOUND after the last one, or an error
    // (a corrupt or truncated archive) with ErrorText().
    status_t Next(ArchiveMember *member);
    // The next block of the current member's data: B_OK with the block,
    // B_ENTRY_NOT_FOUND at the member's end, or an error.
    status_t ReadBlock(const void **data, size_t *size, int64_t *offset);
    // The current member's header, for libarchive's writers.
    struct archive_entry *Header() const { return fHeader; }

    // How much of the archive file has been read, of its whole size.
    int64_t BytesRead() const;
    int64_t FileSize() const { return fFileSize; }

    std::string ErrorText() const;

    // A member path made regular (see ArchiveMember::path).
    static std::string Regular(const std::string &path);
    // Whether a member path may become a path below a folder: relative, and
    // without "." or ".." components.
    static bool IsSafe(const std::string &path);

private:
    struct archive *fArchive = nullptr;
    struct archive_entry *fHeader = nullptr;
    status_t fStatus = B_NO_INIT;
    int64_t fFileSize = 0;
};

} // namespace kestrin
