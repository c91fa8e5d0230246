#include "ftp/FtpWireText.h"

#include "app/NumberText.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
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

std::optional<time_t> FtpWireText::UtcTime(
    int year, unsigned month, unsigned day, unsigned hour, unsigned minute, unsigned second)
{
    using namespace std::chrono;
    // The calendar's types keep a byte or two of each number: one too large
    // would wrap round to a day that exists.
    if (year < 1 || year > 9999 || month > 12 || day > 31)
        return std::nullopt;
    const year_month_day date{std::chrono::year(year),
                              std::chrono::month(month),
                              std::chrono::day(day)};
    // A leap second, 60, is taken as the next moment; the clock has no other.
    if (!date.ok() || hour > 23 || minute > 59 || second > 60)
        return std::nullopt;
    const sys_seconds moment = sys_days(date) + hours(hour) + minutes(minute) + seconds(second);
    return time_t(moment.time_since_epoch().count());
}

std::optional<timespec> FtpWireText::ModificationTimeReply(const char *reply)
{
    // "213 " and fourteen digits, then the end, a blank or a fraction.
    if (strncmp(reply, "213 ", 4) != 0)
        return std::nullopt;
    const char *digits = reply + 4;
    unsigned parts[6] = {};
    const unsigned widths[6] = {4, 2, 2, 2, 2, 2};
    for (int i = 0; i < 6; i++) {
        for (unsigned n = 0; n < widths[i]; n++, digits++) {
            if (*digits < '0' || *digits > '9')
                return std::nullopt;
            parts[i] = parts[i] * 10 + unsigned(*digits - '0');
        }
    }
    const std::optional<time_t> seconds
        = UtcTime(int(parts[0]), parts[1], parts[2], parts[3], parts[4], parts[5]);
    if (!seconds || (*digits != '\0' && *digits != '.' && *digits != ' '))
        return std::nullopt;
    timespec time{*seconds, 0};
    if (*digits == '.') {
        long scale = 100000000;
        for (digits++; *digits >= '0' && *digits <= '9'; digits++, scale /= 10)
            time.tv_nsec += scale * (*digits - '0');
    }
    return time;
}

std::string FtpWireText::TimeText(time_t time)
{
    using namespace std::chrono;
    const sys_seconds moment{seconds(time)};
    const sys_days day = floor<days>(moment);
    const year_month_day date{day};
    const hh_mm_ss clock{moment - day};
    char text[32];
    snprintf(text,
             sizeof text,
             "%04d%02u%02u%02d%02d%02d",
             int(date.year()),
             unsigned(date.month()),
             unsigned(date.day()),
             int(clock.hours().count()),
             int(clock.minutes().count()),
             int(clock.seconds().count()));
    return text;
}

} // namespace kestrin
