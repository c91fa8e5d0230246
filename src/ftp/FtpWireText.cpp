#include "ftp/FtpWireText.h"

#include "app/NumberText.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace kestrin {

int FtpWireText::LeadingNumber(const std::string &line)
{
    return kestrin::atoi(line.c_str());
}

bool FtpWireText::EndsReply(const std::string &line, int firstCode)
{
    return line.size() >= 4 && line[3] == ' ' && LeadingNumber(line) == firstCode;
}

bool FtpWireText::StartsMultiLine(const std::string &line)
{
    return line.size() >= 4 && line[3] == '-';
}

std::vector<std::string> FtpWireText::SplitLines(const char *data, size_t size)
{
    std::vector<std::string> lines;
    size_t start = 0;
    for (size_t i = 0; i <= size; i++) {
        if (i == size || data[i] == '\r' || data[i] == '\n') {
            if (i > start) {
                std::string line(data + start, i - start);
                line.resize(strnlen(line.c_str(), line.size()));
                lines.push_back(std::move(line));
            }
            start = i + 1;
        }
    }
    return lines;
}

std::string FtpWireText::PortCommand(const platform::SocketAddress &address)
{
    std::string command = "PORT " + address.Dotted() + "," + std::to_string(address.port / 256)
                          + "," + std::to_string(address.port % 256) + "\r\n";
    for (char &c : command) {
        if (c == '.')
            c = ',';
    }
    return command;
}

bool FtpWireText::ParsePassiveReply(const char *reply, PassiveAddress *address)
{
    const char *open = strrchr(reply, '(');
    if (open == nullptr)
        return false;
    unsigned fields[6];
    const char *next = open + 1;
    for (unsigned &field : fields) {
        while (*next == ',')
            next++;
        if (*next < '0' || *next > '9')
            return false;
        // Three digits at most: anything longer is out of range anyway, and
        // the count cannot overflow.
        unsigned value = 0;
        int digits = 0;
        for (; *next >= '0' && *next <= '9'; next++, digits++) {
            if (digits < 4)
                value = value * 10 + unsigned(*next - '0');
        }
        if (value > 255)
            return false;
        field = value;
        while (*next != '\0' && *next != ',')
            next++;
    }
    address->host = std::to_string(fields[0]) + "." + std::to_string(fields[1]) + "."
                    + std::to_string(fields[2]) + "." + std::to_string(fields[3]);
    address->port = fields[4] * 256 + fields[5];
    return true;
}

int64_t FtpWireText::ExpectedSize(const char *reply)
{
    const char *open = strrchr(reply, '(');
    if (open == nullptr)
        return 0;
    int64_t value = 0;
    for (const char *digit = open + 1; *digit >= '0' && *digit <= '9'; digit++) {
        if (value > INT64_MAX / 10 - 10)
            return 0;
        value = value * 10 + (*digit - '0');
    }
    return value;
}

int64_t FtpWireText::SizeReply(const char *reply)
{
    // "213 <bytes>"; whatever follows the digits is no part of the number.
    const char *text = reply + std::min<size_t>(3, strlen(reply));
    while (*text == ' ')
        text++;
    int64_t value = 0;
    for (; *text >= '0' && *text <= '9' && value < INT64_MAX / 10 - 10; text++)
        value = value * 10 + (*text - '0');
    return value;
}

} // namespace kestrin
