#pragma once

#include "platform/Errors.h"
#include "platform/TcpSocket.h"

#include <cstddef>
#include <cstdint>
#include <functional>

namespace platform {
class File;
} // namespace platform

namespace kestrin {

// The data side of one FTP transfer: the listening socket of an active
// connection (until the server has connected) and the data connection itself.
// Both close when the object goes.
class FtpDataChannel
{
public:
    // Told the bytes moved so far; answering 0 asks to stop.
    using Progress = std::function<int(int64_t done)>;

    platform::TcpSocket listener;
    platform::TcpSocket data;

    // Receives until the server ends the stream (or a receive fails, or
    // progress answers 0) into a malloc'ed block, which keeps room for a
    // terminator after *total bytes; *buffer stays null when nothing came.
    void ReceiveAll(char **buffer, int64_t *total, const Progress &progress);
    // Receives until the server ends the stream (or a receive fails, or
    // progress answers 0, or `cancelled` becomes true) into `file`, in reads
    // of up to kFileReadSize: loopback and fast links deliver far more than a
    // small block per call, and each read is one progress call and one write.
    // B_OK, or the status of the write that failed.
    status_t ReceiveToFile(platform::File &file,
                           int64_t *total,
                           const Progress &progress,
                           const bool &cancelled);
    // The block of a download.
    static constexpr size_t kFileReadSize = 1024 * 1024;
    // The block of an upload.
    static constexpr size_t kSendSize = 64 * 1024;

    // Sends one block, going on after short sends; a 0 from progress
    // abandons the rest of the block. False when the connection failed.
    bool SendBlock(const char *block, size_t size, int64_t *sent, const Progress &progress);

    // After an upload's last byte: the end of the stream sent, and, over
    // TLS, what the server said read to its end. A server in TLS 1.3 sends
    // session tickets that an upload never reads, and a connection closed
    // on unread bytes is reset: the server could lose the end of the file.
    void FinishSending();

    void Close();
};

} // namespace kestrin
