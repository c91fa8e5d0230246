#pragma once

// The lines of a machine listing (MLSD, RFC 3659): "fact=value;...; name",
// read into the rows that LIST lines give, so that a pane and a transfer
// need not know which of the two a server spoke.

#include "ftp/FtpListing.h"

#include <optional>
#include <string_view>

namespace kestrin {

// Whether the line begins with facts: a run of "name=value;" up to its first
// space. No Unix- or DOS-style line does.
bool IsMachineLine(std::string_view line);

// The row of a machine listing's line. The name is everything after the
// first space, blanks included, cut at a carriage return. From the facts:
// the type gives the permissions' first letter ("d" a folder, "-" a file,
// "l" a link, "?" anything else); UNIX.mode the nine letters after it; size
// (or sizd) the size text; modify the exact time and, in UTC, the date text
// "YYYY-MM-DD HH:MM:SS". A link whose target the type names
// ("OS.unix=slink:target") is named "name -> target", as ls names it.
// Facts it does not know are passed over; "cdir", "pdir", the names "." and
// "..", and a line without facts give no row.
std::optional<FtpListingRow> ReadMachineLine(std::string_view line);

} // namespace kestrin
