#include "fileops/ArchiveReader.h"

#include "platform/PathNames.h"

#include <archive.h>
#include <archive_entry.h>

namespace kestrin {

namespace {

constexpr size_t kBlockSize = 256 * 1024;

status_t StatusOf(struct archive *archive)
{
    const int error = archive_errno(archive);
    return error > 0 ? platform::StatusFromErrno(error) : B_BAD_DATA;
}

} // namespace

ArchiveReader::ArchiveReader(const std::string &path)
    : fArchive(archive_read_new())
{
    if (fArchive == nullptr) {
        fStatus = B_NO_MEMORY;
        return;
    }
    struct stat info;
    if (status_t status = platform::StatPath(path, &info); status != B_OK) {
        fStatus = status;
        return;
    }
    if (S_ISDIR(info.st_mode)) {
        fStatus = B_IS_A_DIRECTORY;
        return;
    }
    fFileSize = info.st_size;
    archive_read_support_filter_all(fArchive);
    archive_read_support_format_all(fArchive);
    fStatus = archive_read_open_filename(fArchive, path.c_str(), kBlockSize) == ARCHIVE_OK
                  ? B_OK
                  : StatusOf(fArchive);
}

ArchiveReader::~ArchiveReader()
{
    if (fArchive != nullptr)
        archive_read_free(fArchive);
}

status_t ArchiveReader::Next(ArchiveMember *member)
{
    if (fStatus != B_OK)
        return fStatus;
    const int result = archive_read_next_header(fArchive, &fHeader);
    if (result == ARCHIVE_EOF)
        return B_ENTRY_NOT_FOUND;
    // ARCHIVE_WARN: a header that was read all the same (an odd name, an
    // unknown extension); its member is as good as any.
    if (result < ARCHIVE_WARN)
        return StatusOf(fArchive);
    const char *path = archive_entry_pathname(fHeader);
    member->path = Regular(path != nullptr ? path : "");
    member->info = *archive_entry_stat(fHeader);
    const char *link = archive_entry_symlink(fHeader);
    member->linkTarget = link != nullptr ? link : "";
    const char *hardLink = archive_entry_hardlink(fHeader);
    member->hardLinkTarget = hardLink != nullptr ? Regular(hardLink) : "";
    member->encrypted = archive_entry_is_encrypted(fHeader) != 0;
    return B_OK;
}

status_t ArchiveReader::ReadBlock(const void **data, size_t *size, int64_t *offset)
{
    la_int64_t at = 0;
    const int result = archive_read_data_block(fArchive, data, size, &at);
    *offset = at;
    if (result == ARCHIVE_EOF)
        return B_ENTRY_NOT_FOUND;
    return result < ARCHIVE_WARN ? StatusOf(fArchive) : B_OK;
}

int64_t ArchiveReader::BytesRead() const
{
    return fArchive != nullptr ? archive_filter_bytes(fArchive, -1) : 0;
}

std::string ArchiveReader::ErrorText() const
{
    const char *text = fArchive != nullptr ? archive_error_string(fArchive) : nullptr;
    return text != nullptr ? text : "";
}

std::string ArchiveReader::Regular(const std::string &path)
{
    std::string regular;
    regular.reserve(path.size());
    for (char c : path) {
        if (c == '/' && !regular.empty() && regular.back() == '/')
            continue;
        regular += c;
    }
    // Made of ".", an archive names every member "./..." and the folder
    // itself "./": that one is no member of its own.
    while (regular.compare(0, 2, "./") == 0)
        regular.erase(0, 2);
    while (regular.size() > 1 && regular.back() == '/')
        regular.pop_back();
    if (regular == ".")
        regular.clear();
    return regular;
}

bool ArchiveReader::IsSafe(const std::string &path)
{
    if (path.empty() || path[0] == '/')
        return false;
    size_t start = 0;
    while (start <= path.size()) {
        size_t end = path.find('/', start);
        if (end == std::string::npos)
            end = path.size();
        const std::string_view part(path.data() + start, end - start);
        if (part.empty() || part == "." || part == "..")
            return false;
        start = end + 1;
    }
    return true;
}

} // namespace kestrin
