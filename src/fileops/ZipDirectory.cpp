#include "fileops/ZipDirectory.h"

#include "platform/File.h"

#include <algorithm>
#include <ctime>
#include <vector>

namespace kestrin {

namespace {

constexpr uint32_t kEndSignature = 0x06054b50;
constexpr uint32_t kEnd64LocatorSignature = 0x07064b50;
constexpr uint32_t kEnd64Signature = 0x06064b50;
constexpr uint32_t kEntrySignature = 0x02014b50;
constexpr size_t kEndSize = 22;
constexpr size_t kEnd64LocatorSize = 20;
constexpr size_t kEnd64Size = 56;
constexpr size_t kEntrySize = 46;
constexpr size_t kLongestComment = 0xffff;
// A directory this large would be several million members: the general
// reader copes with it without holding it all at once.
constexpr uint64_t kLargestDirectory = uint64_t(512) << 20;
constexpr uint16_t kZip64Extra = 0x0001;
constexpr uint16_t kTimestampExtra = 0x5455;
constexpr int kDosHost = 0;
constexpr int kUnixHost = 3;
constexpr uint32_t kDosReadOnly = 0x01;
constexpr uint32_t kDosFolder = 0x10;

// Little-endian fields of a byte buffer, read only where the caller has
// checked that they lie inside it.
uint16_t U16(const uint8_t *at)
{
    return uint16_t(at[0] | (at[1] << 8));
}
uint32_t U32(const uint8_t *at)
{
    return uint32_t(U16(at)) | (uint32_t(U16(at + 2)) << 16);
}
uint64_t U64(const uint8_t *at)
{
    return uint64_t(U32(at)) | (uint64_t(U32(at + 4)) << 32);
}

struct Directory
{
    uint64_t offset = 0;
    uint64_t size = 0;
    uint64_t entries = 0;
};

bool ReadAt(platform::File &file, uint64_t at, std::vector<uint8_t> *bytes, size_t size)
{
    bytes->resize(size);
    return file.ReadAt(off_t(at), bytes->data(), size) == ssize_t(size);
}

// Where the directory lies, from the end record (and its zip64 form).
bool FindDirectory(platform::File &file, uint64_t fileSize, Directory *directory)
{
    if (fileSize < kEndSize)
        return false;
    const uint64_t tailSize = std::min<uint64_t>(fileSize, kEndSize + kLongestComment);
    const uint64_t tailStart = fileSize - tailSize;
    std::vector<uint8_t> tail;
    if (!ReadAt(file, tailStart, &tail, size_t(tailSize)))
        return false;
    size_t end = tail.size() - kEndSize + 1;
    do {
        end--;
    } while (end > 0 && U32(&tail[end]) != kEndSignature);
    if (U32(&tail[end]) != kEndSignature || end + kEndSize + U16(&tail[end + 20]) != tail.size())
        return false;
    const uint8_t *record = &tail[end];
    // Archives split over several disks are left to the general reader.
    if (U16(record + 4) != 0 || U16(record + 6) != 0 || U16(record + 8) != U16(record + 10))
        return false;
    *directory = {U32(record + 16), U32(record + 12), U16(record + 10)};
    const bool needs64 = directory->entries == 0xffff || directory->size == 0xffffffff
                         || directory->offset == 0xffffffff;
    const uint64_t endAt = tailStart + end;
    if (needs64) {
        std::vector<uint8_t> locator, record64;
        if (endAt < kEnd64LocatorSize
            || !ReadAt(file, endAt - kEnd64LocatorSize, &locator, kEnd64LocatorSize)
            || U32(locator.data()) != kEnd64LocatorSignature)
            return false;
        const uint64_t at = U64(&locator[8]);
        if (at > endAt || !ReadAt(file, at, &record64, kEnd64Size)
            || U32(record64.data()) != kEnd64Signature)
            return false;
        *directory = {U64(&record64[48]), U64(&record64[40]), U64(&record64[32])};
        return directory->size <= at && directory->offset <= at - directory->size;
    }
    return directory->size <= endAt && directory->offset <= endAt - directory->size;
}

// As the general reader has it: the local time of the date and time fields.
// Neighbouring members mostly share them, and mktime is not cheap.
time_t DosTime(uint16_t time, uint16_t date)
{
    thread_local uint32_t lastKey = 0;
    thread_local time_t last = 0;
    const uint32_t key = (uint32_t(date) << 16) | time;
    if (key == lastKey && key != 0)
        return last;
    struct tm parts = {};
    parts.tm_year = ((date >> 9) & 0x7f) + 80;
    parts.tm_mon = ((date >> 5) & 0x0f) - 1;
    parts.tm_mday = date & 0x1f;
    parts.tm_hour = (time >> 11) & 0x1f;
    parts.tm_min = (time >> 5) & 0x3f;
    parts.tm_sec = (time << 1) & 0x3e;
    parts.tm_isdst = -1;
    lastKey = key;
    last = mktime(&parts);
    return last;
}

// The size of the zip64 field and the modification time of the Unix
// timestamp field; false when a field runs past its end.
bool ReadExtras(const uint8_t *extra, size_t size, ArchiveMember *member, bool size64, bool *timed)
{
    while (size >= 4) {
        const uint16_t id = U16(extra);
        const uint16_t length = U16(extra + 2);
        if (size_t(length) + 4 > size)
            return false;
        const uint8_t *data = extra + 4;
        if (id == kZip64Extra && size64) {
            if (length < 8)
                return false;
            member->info.st_size = off_t(U64(data));
        } else if (id == kTimestampExtra && length >= 5 && (data[0] & 1) != 0) {
            member->info.st_mtime = time_t(int32_t(U32(data + 1)));
            *timed = true;
        }
        extra += 4 + length;
        size -= 4 + size_t(length);
    }
    return true;
}

// The mode as the general reader makes it of the attributes that the
// archiving system wrote: a Unix mode, perhaps without its type, or the
// folder and read-only bits of DOS. 0 for anything else, and for a type that
// disagrees with the name's trailing "/".
mode_t ModeOf(int host, uint32_t attributes, bool slashed)
{
    mode_t mode = 0;
    if (host == kUnixHost) {
        mode = mode_t(attributes >> 16);
        // A folder known only by its name is made one that can be entered.
        if (mode != 0 && (mode & S_IFMT) == 0)
            mode |= slashed ? S_IFDIR | 0111 : S_IFREG;
    } else if (host == kDosHost) {
        mode = (attributes & kDosFolder) != 0 ? S_IFDIR | 0775 : S_IFREG | 0664;
        if ((attributes & kDosReadOnly) != 0)
            mode &= ~mode_t(0222);
    }
    const bool known = S_ISREG(mode) || S_ISDIR(mode) || S_ISLNK(mode);
    return known && S_ISDIR(mode) == slashed ? mode : 0;
}

bool IsPlainName(const uint8_t *name, size_t size)
{
    return size > 0
           && std::all_of(name, name + size, [](uint8_t c) { return c >= 0x20 && c < 0x7f; });
}

// One entry of the directory at `at`; false when it is not one this reader
// describes for sure. `next` is where the following entry starts.
bool ReadEntry(const std::vector<uint8_t> &bytes, size_t at, ArchiveMember *member, size_t *next)
{
    if (at + kEntrySize > bytes.size() || U32(&bytes[at]) != kEntrySignature)
        return false;
    const uint8_t *entry = &bytes[at];
    const size_t nameSize = U16(entry + 28), extraSize = U16(entry + 30),
                 commentSize = U16(entry + 32);
    *next = at + kEntrySize + nameSize + extraSize + commentSize;
    if (*next > bytes.size() || !IsPlainName(entry + kEntrySize, nameSize))
        return false;
    const std::string name(reinterpret_cast<const char *>(entry + kEntrySize), nameSize);
    const mode_t mode = ModeOf(U16(entry + 4) >> 8, U32(entry + 38), name.back() == '/');
    if (mode == 0)
        return false;
    member->path = ArchiveReader::Regular(name);
    member->info = {};
    member->info.st_mode = mode;
    member->info.st_nlink = 1;
    // A link's target is its data; the general reader gives it no size.
    member->info.st_size = S_ISLNK(mode) ? 0 : off_t(U32(entry + 24));
    member->encrypted = (U16(entry + 8) & 1) != 0;
    const bool size64 = U32(entry + 24) == 0xffffffff;
    bool timed = false;
    if (!ReadExtras(entry + kEntrySize + nameSize, extraSize, member, size64, &timed))
        return false;
    if (!timed)
        member->info.st_mtime = DosTime(U16(entry + 12), U16(entry + 14));
    return true;
}

} // namespace

status_t ZipDirectory::Read(const std::string &archive,
                            const std::function<void(const ArchiveMember &)> &each,
                            const std::atomic<bool> *cancel)
{
    platform::File file(archive, B_READ_ONLY);
    off_t fileSize = 0;
    Directory directory;
    std::vector<uint8_t> bytes;
    if (file.InitCheck() != B_OK || file.GetSize(&fileSize) != B_OK
        || !FindDirectory(file, uint64_t(fileSize), &directory)
        || directory.size > kLargestDirectory || directory.entries > directory.size / kEntrySize
        || !ReadAt(file, directory.offset, &bytes, size_t(directory.size)))
        return B_UNSUPPORTED;
    // Every entry is checked before any is handed on, so that giving up
    // halfway never leaves the caller with half a listing.
    ArchiveMember member;
    for (const bool handOn : {false, true}) {
        size_t at = 0;
        for (uint64_t i = 0; i < directory.entries; i++) {
            if (cancel != nullptr && *cancel)
                return B_CANCELED;
            if (!ReadEntry(bytes, at, &member, &at))
                return B_UNSUPPORTED;
            if (handOn)
                each(member);
        }
        if (at != bytes.size())
            return B_UNSUPPORTED;
    }
    return B_OK;
}

} // namespace kestrin
