#include "viewer/TextIndex.h"

#include <algorithm>
#include <cstring>

namespace kestrin {

namespace {

// Large enough that reading costs little per byte, small enough that a
// cancelled index stops at once.
constexpr int64_t kBlockBytes = 4 << 20;
// What a backward look for a line start reads at a time.
constexpr int64_t kBackBytes = 64 << 10;

} // namespace

TextIndex::TextIndex(const std::string &path)
    : fPath(path)
{}

TextIndex::~TextIndex() = default;

status_t TextIndex::Open()
{
    off_t size = 0;
    status_t status = fFile.SetTo(fPath, B_READ_ONLY);
    if (status == B_OK)
        status = fFile.GetSize(&size);
    if (status == B_OK) {
        fSize = size;
        // A row starts at every line and every piece: never more rows than bytes.
        fChunks.resize(size_t(fSize / kChunkRows + 2));
    }
    fStatus.store(status, std::memory_order_release);
    return status;
}

void TextIndex::Start(int64_t firstBytes, std::function<void()> grown)
{
    // An index stopped before it started stays so.
    if (fWork.Stopping())
        return;
    fGrown = std::move(grown);
    // A thread of its own that nobody waits for: a slow disk may hold a read
    // up. The worker's share keeps the index until it ends.
    fWork = platform::Background::Start(
        nullptr,
        [self = shared_from_this(), firstBytes](const platform::Background::Task &task) {
            self->Work(firstBytes, task.Flag());
        },
        platform::Background::Thread::Own);
}

void TextIndex::Work(int64_t firstBytes, const std::atomic<bool> &stop)
{
    if (InitCheck() == B_OK || Open() == B_OK)
        IndexUpTo(std::min(firstBytes, fSize), stop);
    fFirstRead.store(true, std::memory_order_release);
    if (fGrown)
        fGrown();
    while (!stop && InitCheck() == B_OK && !Complete()) {
        IndexUpTo(std::min(IndexedBytes() + kBlockBytes, fSize), stop);
        if (fGrown)
            fGrown();
    }
}

void TextIndex::AddRow(int64_t start)
{
    const int64_t row = fRows.load(std::memory_order_relaxed);
    std::unique_ptr<int64_t[]> &chunk = fChunks[size_t(row / kChunkRows)];
    if (!chunk)
        chunk = std::make_unique<int64_t[]>(size_t(kChunkRows));
    chunk[size_t(row % kChunkRows)] = start;
    fRows.store(row + 1, std::memory_order_release);
}

// Reads from where the index stopped up to `end`, adding a row after every
// line end and wherever a line reaches kPieceBytes without one.
void TextIndex::IndexUpTo(int64_t end, const std::atomic<bool> &stop)
{
    int64_t position = IndexedBytes();
    if (position == 0 && fSize > 0 && KnownRows() == 0)
        AddRow(0);
    std::vector<char> buffer(size_t(std::min(kBlockBytes, std::max<int64_t>(end - position, 1))));
    int64_t longest = 0, longestStart = 0;
    auto rowEnded = [&](int64_t length) {
        if (length > longest) {
            longest = length;
            longestStart = fRowBegin;
        }
    };
    while (position < end && !stop) {
        const int64_t wanted = std::min<int64_t>(int64_t(buffer.size()), end - position);
        const int64_t got = ReadAt(position, buffer.data(), wanted);
        if (got <= 0) {
            // The file shrank: what is gone is past the end.
            rowEnded(position - fRowBegin);
            position = fSize;
            break;
        }
        const char *base = buffer.data();
        const char *cursor = base;
        const char *const limit = base + got;
        while (const char *newline = static_cast<const char *>(
                   std::memchr(cursor, '\n', size_t(limit - cursor)))) {
            const int64_t at = position + (newline - base);
            for (; at - fRowBegin >= kPieceBytes; fRowBegin += kPieceBytes) {
                rowEnded(kPieceBytes);
                AddRow(fRowBegin + kPieceBytes);
            }
            const bool carriage = at > fRowBegin && newline > base && newline[-1] == '\r';
            rowEnded(at - fRowBegin - (carriage ? 1 : 0));
            if (at + 1 < fSize) {
                fRowBegin = at + 1;
                AddRow(fRowBegin);
            }
            cursor = newline + 1;
        }
        const int64_t blockEnd = position + got;
        for (; fRowBegin + kPieceBytes <= blockEnd && fRowBegin + kPieceBytes < fSize;
             fRowBegin += kPieceBytes) {
            rowEnded(kPieceBytes);
            AddRow(fRowBegin + kPieceBytes);
        }
        position = blockEnd;
        if (position >= fSize)
            rowEnded(fSize - fRowBegin);
        {
            std::lock_guard lock(fLongestLock);
            if (longest > fLongest.second)
                fLongest = {longestStart, longest};
        }
        fIndexed.store(position, std::memory_order_release);
    }
    if (position >= fSize)
        fIndexed.store(fSize, std::memory_order_release);
}

int64_t TextIndex::RowStart(int64_t row) const
{
    return fChunks[size_t(row / kChunkRows)][size_t(row % kChunkRows)];
}

std::pair<int64_t, int64_t> TextIndex::LongestRow() const
{
    std::lock_guard lock(fLongestLock);
    return fLongest;
}

int64_t TextIndex::RowContaining(int64_t offset) const
{
    const int64_t size = Size();
    if (size == 0)
        return 0;
    offset = std::clamp<int64_t>(offset, 0, size - 1);
    if (offset < IndexedBytes()) {
        // Every row that starts before what the index has read is known.
        int64_t low = 0, high = KnownRows() - 1;
        while (low < high) {
            const int64_t middle = low + (high - low + 1) / 2;
            if (RowStart(middle) <= offset)
                low = middle;
            else
                high = middle - 1;
        }
        return RowStart(low);
    }
    const int64_t line = LineStart(offset);
    return line + (offset - line) / kPieceBytes * kPieceBytes;
}

// The start of the line holding `offset`, looked for backwards.
int64_t TextIndex::LineStart(int64_t offset) const
{
    char buffer[kBackBytes];
    int64_t end = offset;
    while (end > 0) {
        const int64_t begin = std::max<int64_t>(0, end - kBackBytes);
        const int64_t got = ReadAt(begin, buffer, end - begin);
        if (got < end - begin)
            return begin + std::max<int64_t>(got, 0);
        if (const void *newline = memrchr(buffer, '\n', size_t(got)))
            return begin + (static_cast<const char *>(newline) - buffer) + 1;
        end = begin;
    }
    return 0;
}

TextIndex::Row TextIndex::RowAt(int64_t start) const
{
    // Three bytes past a piece: the most a UTF-8 character can still need.
    std::string bytes = Read(start, kPieceBytes + 3);
    Row row;
    const size_t newline = bytes.find('\n');
    if (newline != std::string::npos && newline < size_t(kPieceBytes)) {
        row.next = start + int64_t(newline) + 1;
        bytes.resize(newline);
        if (!bytes.empty() && bytes.back() == '\r')
            bytes.pop_back();
    } else if (bytes.size() > size_t(kPieceBytes)) {
        row.next = start + kPieceBytes;
        size_t keep = size_t(kPieceBytes);
        while (keep < bytes.size() && (uint8_t(bytes[keep]) & 0xC0) == 0x80)
            keep++;
        bytes.resize(keep);
    } else {
        row.next = bytes.empty() ? Size() : start + int64_t(bytes.size());
    }
    row.bytes = std::move(bytes);
    return row;
}

std::string TextIndex::Read(int64_t offset, int64_t length) const
{
    std::string bytes(size_t(std::max<int64_t>(0, std::min(length, Size() - offset))), '\0');
    bytes.resize(size_t(ReadAt(offset, bytes.data(), int64_t(bytes.size()))));
    return bytes;
}

int64_t TextIndex::ReadAt(int64_t offset, char *buffer, int64_t length) const
{
    const int64_t size = Size();
    if (offset < 0 || offset >= size || length <= 0)
        return 0;
    const ssize_t got = fFile.ReadAt(offset, buffer, size_t(std::min(length, size - offset)));
    return got > 0 ? got : 0;
}

} // namespace kestrin
