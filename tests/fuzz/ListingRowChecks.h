#pragma once

// What the listing fuzzers share: stopping with the row that broke a rule,
// and the rule for a name that every form of listing line must keep.

#include "ftp/FtpListing.h"

#include <cstdio>
#include <cstdlib>
#include <string_view>

[[noreturn]] inline void Fail(const char *what, const kestrin::FtpListingRow &row)
{
    fprintf(stderr,
            "%s: name '%s' size '%s' date '%s' permissions '%s'\n",
            what,
            row.name.c_str(),
            row.size.c_str(),
            row.date.c_str(),
            row.permissions.c_str());
    abort();
}

inline bool Holds(std::string_view text, std::string_view bytes)
{
    return text.find_first_of(bytes) != std::string_view::npos;
}

// A name is never empty, the folder itself or its parent, and has no line
// end or NUL in it.
inline void CheckName(const kestrin::FtpListingRow &row)
{
    using namespace std::string_view_literals;
    if (row.name.empty() || row.name == "." || row.name == ".." || Holds(row.name, "\n\r\0"sv))
        Fail("bad name", row);
}
