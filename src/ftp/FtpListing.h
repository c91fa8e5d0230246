#pragma once

// Rows of a remote folder, taken from the text of a Unix-style LIST reply.

#include <ctime>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kestrin {

// One listing line's texts as they stand in the line. The name may hold "/" or
// be made of dots: it is the server's word, shown as it came, and whoever turns
// it into a local path must refuse such a name.
struct FtpListingRow
{
    std::string name, size, date, permissions;

    bool operator==(const FtpListingRow &) const = default;
};

// Splits each line (at "\n"; the last line need not end in one) into fields at
// runs of spaces: permissions, link count, owner, group, size, then month, day
// and time-or-year kept as one date text with the spaces between them, and the
// rest of the line as the name, cut at its first carriage return. Lines with
// too few fields (the "total" line among them) and the names "." and ".." give
// no row. The text ends at its first NUL byte, as the C text of a listing does.
std::vector<FtpListingRow> GetEntries(std::string_view listing);

// The moment a row's date text names when it has a year ("Jan  2  2020":
// that day's start, in UTC, as servers list times by default); a date with a
// time of day instead of a year ("Jan  2 12:00") or anything else names none.
std::optional<time_t> ListedTime(const std::string &date);

// Whether a listed name can stand for an entry inside its folder, here or on
// the server: not empty, no "/", not "." or "..".
bool IsPlainName(const std::string &name);

} // namespace kestrin
