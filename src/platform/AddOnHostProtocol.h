#pragma once

#include <string>

// What kestrin-addon-host and AddOnRunner agree on. The host runs one add-on:
//
//     kestrin-addon-host ADD-ON  DEVICE DIRECTORY NAME PATH  [DEVICE DIRECTORY NAME PATH]...
//
// The first four-tuple after the add-on is the folder, every further one an
// entry; devices and nodes are decimal. Every argument is percent-encoded
// (EncodeArgument): Qt hands arguments to the process as UTF-8 text, and
// file names are bytes that need not be UTF-8.
//
// The host keeps its standard output for the report: one line, written
// before it exits, that names the outcome. The add-on's own standard output
// goes to standard error with everything else it prints. A run whose report
// is missing ended inside the add-on (a crash, or the add-on calling exit()).
// The exit status says the same for people who run the host by hand.
namespace platform::addon_host {

inline constexpr int kExitDone = 0;
inline constexpr int kExitFailed = 1; // the report holds process_refs's result
inline constexpr int kExitUsage = 2;
inline constexpr int kExitCannotLoad = 3; // dlerror() is the last line of standard error
inline constexpr int kExitNoEntryPoint = 4;

// Report lines, each followed by "\n". "failed" is followed by " <result>".
inline constexpr const char *kReportDone = "done";
inline constexpr const char *kReportFailed = "failed";
inline constexpr const char *kReportCannotLoad = "cannot-load";
inline constexpr const char *kReportNoEntryPoint = "no-entry-point";

// Printable ASCII but '%' stays as it is, so a path reads well in ps.
inline std::string EncodeArgument(const std::string &bytes)
{
    static const char kHex[] = "0123456789ABCDEF";
    std::string text;
    text.reserve(bytes.size());
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte > 0x20 && byte < 0x7f && byte != '%') {
            text += c;
        } else {
            text += '%';
            text += kHex[byte >> 4];
            text += kHex[byte & 0x0f];
        }
    }
    return text;
}

// False for text that EncodeArgument cannot have made.
inline bool DecodeArgument(const std::string &text, std::string *bytes)
{
    const auto digit = [](char c) {
        return c >= '0' && c <= '9' ? c - '0' : c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
    };
    bytes->clear();
    for (size_t i = 0; i < text.size(); i++) {
        if (text[i] != '%') {
            *bytes += text[i];
            continue;
        }
        if (i + 2 >= text.size())
            return false;
        const int high = digit(text[i + 1]), low = digit(text[i + 2]);
        if (high < 0 || low < 0)
            return false;
        *bytes += static_cast<char>(high << 4 | low);
        i += 2;
    }
    return true;
}

} // namespace platform::addon_host
