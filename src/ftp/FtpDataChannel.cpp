#include "ftp/FtpDataChannel.h"

#include "ftp/clsFTP.h"
#include "platform/File.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace kestrin {

void FtpDataChannel::ReceiveAll(char **buffer, int64_t *total, const Progress &progress)
{
    *buffer = nullptr;
    *total = 0;
    size_t capacity = 0;
    char block[clsFTP::kBlockSize];
    for (;;) {
        const ssize_t received = data.Receive(block, sizeof block);
        if (received <= 0)
            break;
        // Doubling keeps a listing of megabytes from being copied once per
        // block.
        const size_t needed = size_t(*total) + size_t(received) + 1;
        if (needed > capacity) {
            const size_t grown = std::max(needed, capacity * 2);
            char *larger = static_cast<char *>(realloc(*buffer, grown));
            if (larger == nullptr)
                break;
            *buffer = larger;
            capacity = grown;
        }
        memcpy(*buffer + *total, block, size_t(received));
        *total += received;
        if (progress && progress(*total) == 0)
            break;
    }
}

status_t FtpDataChannel::ReceiveToFile(platform::File &file,
                                       int64_t *total,
                                       const Progress &progress,
                                       const bool &cancelled)
{
    *total = 0;
    const std::unique_ptr<char[]> buffer(new char[kFileReadSize]);
    while (!cancelled) {
        const ssize_t received = data.Receive(buffer.get(), kFileReadSize);
        if (received <= 0)
            break;
        const ssize_t written = file.Write(buffer.get(), size_t(received));
        if (written != received)
            return written < 0 ? status_t(written) : B_DEVICE_FULL;
        *total += received;
        if (progress && progress(*total) == 0)
            break;
    }
    return B_OK;
}

bool FtpDataChannel::SendBlock(const char *block,
                               size_t size,
                               int64_t *sent,
                               const Progress &progress)
{
    size_t offset = 0;
    while (offset < size) {
        const ssize_t count = data.Send(block + offset, size - offset);
        if (count <= 0)
            return false;
        offset += size_t(count);
        *sent += count;
        if (progress && progress(*sent) == 0)
            break;
    }
    return true;
}

void FtpDataChannel::FinishSending()
{
    data.ShutdownSend();
    if (!data.IsSecure())
        return;
    char discarded[4096];
    while (data.Receive(discarded, sizeof discarded) > 0) {
    }
}

void FtpDataChannel::Close()
{
    listener.Close();
    data.Close();
}

} // namespace kestrin
