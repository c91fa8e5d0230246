// Feeds arbitrary server bytes to the FTP client's reply reader, as one
// stream that ends with the connection closing. Besides what the sanitizers
// catch, it checks that every reply stays inside the 1024-byte buffer, that
// the reader comes to an end, and that the PASV, byte-count and time parsers
// only ever yield values a connection or a file could use.

#include "ftp/clsFTP.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    // More than a socket buffer would block the writer; the reader's limits
    // are reached long before.
    if (size > 65536)
        return 0;
    platform::TcpSocket server, client;
    if (platform::TcpSocket::CreatePair(&server, &client) != B_OK)
        abort();
    if (size > 0 && server.SendAll(data, size) != B_OK)
        abort();
    server.Close();

    // 999 ms wait 999 us; the closed peer answers at once anyway.
    kestrin::clsFTP ftp(999, nullptr, nullptr);
    char buffer[kestrin::clsFTP::kReplySize];
    // Each read consumes received bytes or one queued line of them.
    const size_t limit = 2 * size + 2;
    size_t reads = 0;
    for (;; reads++) {
        if (reads > limit) {
            fprintf(stderr, "the reader did not come to an end\n");
            abort();
        }
        memset(buffer, 'Z', sizeof buffer);
        const int code = ftp.FTPReadString(client, buffer, sizeof buffer);
        if (memchr(buffer, '\0', sizeof buffer) == nullptr)
            abort();
        kestrin::FtpWireText::PassiveAddress address;
        if (kestrin::FtpWireText::ParsePassiveReply(buffer, &address) && address.port > 65535)
            abort();
        if (kestrin::FtpWireText::ExpectedSize(buffer) < 0)
            abort();
        const std::optional<timespec> time = kestrin::FtpWireText::ModificationTimeReply(buffer);
        if (time && (time->tv_nsec < 0 || time->tv_nsec >= 1000000000))
            abort();
        if (code == 2 && strcmp(buffer, "TIMEOUT") == 0 && ftp.PendingLineCount() == 0)
            break;
    }
    return 0;
}
