#pragma once

#include "platform/Background.h"
#include "platform/Errors.h"
#include "platform/File.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace kestrin {

// The rows of a text file, found without reading the file into memory. A
// row is a line, or a piece of kPieceBytes of a longer line, so that a file
// of one 50 MB line lays out as many short rows. The file is read in blocks
// (never mapped: a file that shrinks while mapped kills the reader), and its
// size is taken once, at opening: bytes that grow later are not shown, bytes
// that go away read as the end.
//
// Start() opens the file and indexes it on a worker of its own, so that a
// slow disk or a network mount holds up nobody else; the rows found so far
// can be asked for at any time from the GUI thread, and rows past them are
// found by reading around the place asked for, so the end of a file shows
// before its index is complete. The worker keeps the index alive while it
// runs: owners share it (std::shared_ptr) and Stop() it when they go.
class TextIndex : public std::enable_shared_from_this<TextIndex>
{
public:
    static constexpr int64_t kPieceBytes = 4096;

    // Keeps the path; nothing is opened yet.
    explicit TextIndex(const std::string &path);
    ~TextIndex();

    TextIndex(const TextIndex &) = delete;
    TextIndex &operator=(const TextIndex &) = delete;

    // Opens the file and takes its size on the caller, for readers that
    // do without the worker.
    status_t Open();
    // B_NO_INIT until the file is open.
    status_t InitCheck() const { return fStatus.load(std::memory_order_acquire); }
    // 0 until the file is open.
    int64_t Size() const { return InitCheck() == B_OK ? fSize : 0; }

    // On a worker: opens the file, indexes up to `firstBytes`, says so with
    // `grown` (called on the worker), then indexes the rest in blocks,
    // calling `grown` after every block. A file that cannot be opened is
    // said with `grown` too, and InitCheck() tells why.
    void Start(int64_t firstBytes, std::function<void()> grown = {});
    // The worker ends after the block it reads: for an owner that goes.
    void Stop() { fWork.Stop(); }
    // Whether the worker has the first bytes Start() asked for, or has
    // found that the file cannot be opened.
    bool FirstBytesRead() const { return fFirstRead.load(std::memory_order_acquire); }
    bool Complete() const { return InitCheck() == B_OK && IndexedBytes() >= fSize; }
    // How far the index has read.
    int64_t IndexedBytes() const { return fIndexed.load(std::memory_order_acquire); }
    // Rows whose start the index knows (an empty file has none).
    int64_t KnownRows() const { return fRows.load(std::memory_order_acquire); }
    // The start of a known row.
    int64_t RowStart(int64_t row) const;
    // The start and length (line end left out) of the longest row found so far.
    std::pair<int64_t, int64_t> LongestRow() const;

    // The start of the row that holds byte `offset` (0 for an empty file).
    int64_t RowContaining(int64_t offset) const;
    // The row that starts at `start`: its bytes, without the line end ("\n"
    // or "\r\n"), and where the next row starts (Size() after the last).
    // A piece of a long line keeps a character cut at its end whole, by
    // taking the continuation bytes that follow.
    struct Row
    {
        std::string bytes;
        int64_t next = 0;
    };
    Row RowAt(int64_t start) const;
    int64_t NextRow(int64_t start) const { return RowAt(start).next; }
    // The row before the one starting at `start` (0 stays 0).
    int64_t PreviousRow(int64_t start) const { return start > 0 ? RowContaining(start - 1) : 0; }

    // Up to `length` bytes at `offset`: fewer at the end or when the file
    // shrank.
    std::string Read(int64_t offset, int64_t length) const;
    // The same into `buffer`: the byte count, 0 at the end or on failure.
    int64_t ReadAt(int64_t offset, char *buffer, int64_t length) const;

private:
    static constexpr int64_t kChunkRows = 1 << 16;

    void IndexUpTo(int64_t end, const std::atomic<bool> &stop);
    void Work(int64_t firstBytes, const std::atomic<bool> &stop);
    void AddRow(int64_t start);
    int64_t LineStart(int64_t offset) const;

    const std::string fPath;
    mutable platform::File fFile;
    // Both set once, before fStatus tells B_OK.
    int64_t fSize = 0;
    std::atomic<status_t> fStatus{B_NO_INIT};
    // Row starts in chunks; the table of chunks never grows, so the GUI
    // thread reads every row below fRows while the worker adds more.
    std::vector<std::unique_ptr<int64_t[]>> fChunks;
    std::atomic<int64_t> fRows{0};
    std::atomic<int64_t> fIndexed{0};
    mutable std::mutex fLongestLock;
    std::pair<int64_t, int64_t> fLongest{0, 0}; // guarded by fLongestLock
    int64_t fRowBegin = 0;                      // worker's: where the current row began
    std::function<void()> fGrown;
    platform::Background::Task fWork;
    std::atomic<bool> fFirstRead{false};
};

} // namespace kestrin
