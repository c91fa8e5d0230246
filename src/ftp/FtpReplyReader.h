#pragma once

#include "platform/TcpSocket.h"

#include <cstddef>
#include <deque>
#include <string>
#include <vector>

namespace kestrin {

// Reads the replies of an FTP control connection. A server may send a
// reply's lines in several pieces, or several replies in one: lines that
// arrive behind the reply being read are kept for the next read, and a
// multi-line reply ends only on its own code followed by a blank.
//
// A reply that has not ended when the time-out has passed since its first
// byte is given up, so a server that sends continuation lines for ever (or
// closes in the middle) costs one time-out, not a hang. Such a read, or a
// closed connection, is remembered as the connection's loss.
class FtpReplyReader
{
public:
    // How the connection was lost, if it was. Dropped: the server closed it
    // or it broke; a new connection may well work. Silent: an answer did not
    // come within the time-out; a late one would be taken for the answer to
    // a later command, so the connection is of no more use.
    enum class Loss { None, Dropped, Silent };

    // The code a read answers when no reply came; the buffer then holds
    // "TIMEOUT".
    static constexpr int kNoReply = 2;

    void SetTimeout(long seconds, long microseconds);

    // The next reply into `buffer` (its first line, then its others as far
    // as they fit), a kept line first; answers its code.
    int Read(platform::TcpSocket &socket, char *buffer, size_t size);

    // The lines of the last reply read, each with its line end.
    const std::vector<std::string> &Lines() const { return fLines; }
    size_t PendingCount() const { return fPending.size(); }

    Loss LossSeen() const { return fLoss; }
    // The first loss counts: a silent server that then closes was silent.
    void NoteLoss(Loss how);
    // A new connection: nothing kept, nothing lost.
    void Reset();
    // Lines kept from the connection just closed mean nothing any more.
    void DropPending() { fPending.clear(); }

private:
    int Receive(platform::TcpSocket &socket, char *buffer, size_t size);

    long fSeconds = 0;
    long fMicroseconds = 0;
    Loss fLoss = Loss::None;
    // Lines that arrived in one read behind the reply they followed.
    std::deque<std::string> fPending;
    std::vector<std::string> fLines;
};

} // namespace kestrin
