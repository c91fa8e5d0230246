#include "ftp/FtpWireText.h"

#include "app/NumberText.h"

#include <algorithm>
#include <cctype>
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
    // "213 " and the moment, then the end or a blank.
    if (strncmp(reply, "213 ", 4) != 0)
        return std::nullopt;
    std::string_view moment(reply + 4);
    moment = moment.substr(0, moment.find(' '));
    return MachineTime(moment);
}

std::optional<timespec> FtpWireText::MachineTime(std::string_view text)
{
    // Fourteen digits, then the end or a fraction.
    unsigned parts[6] = {};
    const unsigned widths[6] = {4, 2, 2, 2, 2, 2};
    size_t at = 0;
    for (int i = 0; i < 6; i++) {
        for (unsigned n = 0; n < widths[i]; n++, at++) {
            if (at >= text.size() || text[at] < '0' || text[at] > '9')
                return std::nullopt;
            parts[i] = parts[i] * 10 + unsigned(text[at] - '0');
        }
    }
    const std::optional<time_t> seconds
        = UtcTime(int(parts[0]), parts[1], parts[2], parts[3], parts[4], parts[5]);
    if (!seconds || (at < text.size() && text[at] != '.'))
        return std::nullopt;
    timespec time{*seconds, 0};
    if (at < text.size()) {
        long scale = 100000000;
        for (at++; at < text.size() && text[at] >= '0' && text[at] <= '9'; at++, scale /= 10)
            time.tv_nsec += scale * (text[at] - '0');
    }
    return time;
}

namespace {

// The facts a listing row is made of.
constexpr const char *kRowFacts[] = {"type", "size", "modify", "unix.mode"};

} // namespace

std::string FtpWireText::LowerCase(std::string_view text)
{
    std::string lower(text);
    for (char &c : lower)
        c = char(std::tolower(static_cast<unsigned char>(c)));
    return lower;
}

FtpWireText::Features FtpWireText::ParseFeatures(const std::vector<std::string> &replyLines)
{
    Features features;
    if (replyLines.empty() || LeadingNumber(replyLines.front()) != 211)
        return features;
    for (size_t i = 1; i < replyLines.size(); i++) {
        std::string_view line = replyLines[i];
        const size_t start = line.find_first_not_of(' ');
        // The closing line repeats the code; feature lines begin with a blank.
        if (start == 0 || start == std::string_view::npos)
            continue;
        line.remove_prefix(start);
        const size_t blank = line.find(' ');
        const std::string name = LowerCase(line.substr(0, blank));
        if (name == "utf8")
            features.utf8 = true;
        if (name != "mlst")
            continue;
        features.machineListings = true;
        std::string_view facts = blank == std::string_view::npos ? "" : line.substr(blank + 1);
        while (!facts.empty()) {
            const size_t end = std::min(facts.find(';'), facts.size());
            std::string fact = LowerCase(facts.substr(0, end));
            const bool on = !fact.empty() && fact.back() == '*';
            if (on)
                fact.pop_back();
            if (!fact.empty()) {
                features.facts.push_back(fact);
                if (on)
                    features.factsOn.push_back(fact);
            }
            facts.remove_prefix(std::min(end + 1, facts.size()));
        }
    }
    return features;
}

std::string FtpWireText::MachineFactsCommand(const Features &features)
{
    const auto names = [](const std::vector<std::string> &facts, const char *fact) {
        return std::find(facts.begin(), facts.end(), fact) != facts.end();
    };
    std::string wanted;
    bool missing = false;
    for (const char *fact : kRowFacts) {
        if (!names(features.facts, fact))
            continue;
        wanted += std::string(fact) + ";";
        missing = missing || !names(features.factsOn, fact);
    }
    return missing ? "OPTS MLST " + wanted + "\r\n" : std::string();
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
