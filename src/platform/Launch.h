#pragma once

#include <string>
#include <utility>
#include <vector>

namespace platform {

// One program to start, detached from Kestrin: what a test recorder keeps,
// and what the real launcher starts.
struct Launch
{
    std::string program;
    std::vector<std::string> arguments;
    std::string workingDirectory;                                 // empty: Kestrin's own
    std::vector<std::pair<std::string, std::string>> environment; // added to Kestrin's

    bool operator==(const Launch &other) const = default;
};

} // namespace platform
