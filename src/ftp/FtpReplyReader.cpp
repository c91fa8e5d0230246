#include "ftp/FtpReplyReader.h"

#include "app/NumberText.h"
#include "ftp/FtpWireText.h"

#include <algorithm>
#include <chrono>
#include <cstring>

namespace kestrin {

namespace {

void CopyInto(char *buffer, size_t size, const std::string &text)
{
    const size_t length = std::min(text.size(), size - 1);
    memcpy(buffer, text.data(), length);
    buffer[length] = '\0';
}

} // namespace

void FtpReplyReader::SetTimeout(long seconds, long microseconds)
{
    fSeconds = seconds;
    fMicroseconds = microseconds;
}

void FtpReplyReader::NoteLoss(Loss how)
{
    if (fLoss == Loss::None)
        fLoss = how;
}

void FtpReplyReader::Reset()
{
    fLoss = Loss::None;
    fPending.clear();
}

int FtpReplyReader::Read(platform::TcpSocket &socket, char *buffer, size_t size)
{
    if (buffer == nullptr || size == 0)
        return 0;
    memset(buffer, 0, size);
    fLines.clear();
    if (fPending.empty())
        return Receive(socket, buffer, size);
    CopyInto(buffer, size, fPending.front());
    fLines.push_back(std::move(fPending.front()));
    fPending.pop_front();
    return kestrin::atoi(buffer);
}

int FtpReplyReader::Receive(platform::TcpSocket &socket, char *buffer, size_t size)
{
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(fSeconds)
                          + std::chrono::microseconds(fMicroseconds);
    std::vector<char> scratch(size);
    bool started = false;
    int firstCode = 0;
    size_t length = 0;
    for (;;) {
        ssize_t received = -1;
        const status_t ready = socket.WaitReady(true, fSeconds, fMicroseconds);
        if (ready == B_OK)
            received = socket.Receive(scratch.data(), scratch.size());
        // Nothing, or a dropped connection: both mean no reply came.
        if (received <= 0) {
            NoteLoss(ready == B_TIMED_OUT ? Loss::Silent : Loss::Dropped);
            break;
        }
        std::vector<std::string> lines = FtpWireText::SplitLines(scratch.data(), size_t(received));
        if (lines.empty())
            lines.emplace_back();
        for (size_t i = 0; i < lines.size(); i++) {
            const std::string &line = lines[i];
            fLines.push_back(line);
            bool complete;
            if (!started) {
                started = true;
                firstCode = FtpWireText::LeadingNumber(line);
                CopyInto(buffer, size, line);
                length = strlen(buffer);
                complete = !FtpWireText::StartsMultiLine(line);
            } else {
                if (length + line.size() < size) {
                    memcpy(buffer + length, line.data(), line.size());
                    length += line.size();
                    buffer[length] = '\0';
                }
                complete = FtpWireText::EndsReply(line, firstCode);
            }
            if (complete) {
                fPending.insert(fPending.end(), lines.begin() + long(i) + 1, lines.end());
                return firstCode;
            }
        }
        if (std::chrono::steady_clock::now() >= deadline) {
            NoteLoss(Loss::Silent);
            break;
        }
    }
    memset(buffer, 0, size);
    CopyInto(buffer, size, "TIMEOUT");
    fLines.clear();
    return kNoReply;
}

} // namespace kestrin
