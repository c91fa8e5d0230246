#pragma once

#include "platform/TcpSocket.h"

#include <cstdint>
#include <ctime>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kestrin {

// The texts an FTP client sends and reads, apart from the conversation that
// carries them: reply lines and their numbers, and the addresses and sizes
// that replies name. Pure functions, open to the tests and the fuzzer.
class FtpWireText
{
public:
    // The passive data address that a 227 reply names.
    struct PassiveAddress
    {
        std::string host;
        unsigned port = 0;
    };

    // What a server offers beyond RFC 959, as its reply to FEAT lists it.
    struct Features
    {
        // MLST, and with it MLSD.
        bool machineListings = false;
        bool utf8 = false;
        // The facts MLST names, in lower case, and those of them it sends
        // unasked (marked "*").
        std::vector<std::string> facts, factsOn;
    };

    // The reply code a line begins with, as the profile's atoi reads it.
    static int LeadingNumber(const std::string &line);
    // The last line of a multi-line reply repeats the first line's number and
    // has a blank where the first had "-".
    static bool EndsReply(const std::string &line, int firstCode);
    static bool StartsMultiLine(const std::string &line);
    // Splits a received text at its line ends, empty lines skipped. A NUL
    // ends a line's text, as it would in the reply buffer.
    static std::vector<std::string> SplitLines(const char *data, size_t size);

    // "PORT a,b,c,d,p1,p2\r\n"
    static std::string PortCommand(const platform::SocketAddress &address);
    // The address and port in the parentheses of a 227 reply; false when
    // there are none or a number is out of range.
    static bool ParsePassiveReply(const char *reply, PassiveAddress *address);
    // The byte count in the last parentheses of a 150 reply, 0 when none.
    static int64_t ExpectedSize(const char *reply);
    // The byte count of a 213 reply to SIZE.
    static int64_t SizeReply(const char *reply);

    // Seconds since 1970 of a moment in UTC, the calendar checked (no
    // February 30th); nothing for a moment that does not exist.
    static std::optional<time_t> UtcTime(
        int year, unsigned month, unsigned day, unsigned hour, unsigned minute, unsigned second);
    // The moment a 213 reply to MDTM names: "213 YYYYMMDDHHMMSS", UTC,
    // perhaps with a fraction of a second after a "."; nothing when the
    // reply names none.
    static std::optional<timespec> ModificationTimeReply(const char *reply);
    // "YYYYMMDDHHMMSS" in UTC, perhaps with a fraction of a second after a
    // ".", and nothing else: MDTM's moment and a machine listing's.
    static std::optional<timespec> MachineTime(std::string_view text);
    // Names of commands, features and facts are the same in any case.
    static std::string LowerCase(std::string_view text);
    // The features that the lines of a 211 reply to FEAT name, one to a line
    // after the first; nothing from any other reply.
    static Features ParseFeatures(const std::vector<std::string> &replyLines);
    // "OPTS MLST type;size;modify;unix.mode;\r\n" with those of the facts a
    // row is made of that the server offers, when it would not send them all
    // unasked; empty when it would, or offers none of them.
    static std::string MachineFactsCommand(const Features &features);

    // "YYYYMMDDHHMMSS" in UTC, the time MFMT sets.
    static std::string TimeText(time_t time);
};

} // namespace kestrin
