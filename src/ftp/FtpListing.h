#pragma once

// Rows of a remote folder, taken from a listing: the lines of a Unix-style
// LIST reply, of a DOS-style one (IIS and other Windows servers), or of a
// machine listing (MLSD).

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
    // The moment of the entry's last change to the second, in UTC, where the
    // listing tells it so (a machine listing); a LIST line's date text names
    // a day at best, which ListedTime reads.
    std::optional<time_t> modified = std::nullopt;

    bool operator==(const FtpListingRow &) const = default;
};

// Splits the listing into lines at "\n" (the last line need not end in one) and
// reads each in the form it has: a machine listing's facts, a DOS-style date,
// else a Unix-style line. Lines that are no entry (a "total" line, the folder
// itself and its parent) give no row. The text ends at its first NUL byte, as
// the C text of a listing does.
std::vector<FtpListingRow> GetEntries(std::string_view listing);

// A Unix-style line, split into fields at runs of spaces: permissions, link
// count, owner, group, size, then month, day and time-or-year kept as one date
// text with the spaces between them; the name is the rest of the line after
// the one space that follows the date (as ls writes it, so a name's own
// leading blanks stay), cut at its first carriage return. Too few fields, a
// name of blanks only, "." and ".." give no row.
std::optional<FtpListingRow> ReadUnixLine(std::string_view line);

// A DOS-style line: "01-02-24  10:30AM       <DIR>          name" or
// "01-02-24  10:30AM                 1234 name" (years of two or four digits,
// or a date written year first; times with or without AM/PM). A folder's size
// text is "<DIR>" and its permissions "d"; a file's are its byte count and
// "-". Anything else gives no row.
std::optional<FtpListingRow> ReadDosLine(std::string_view line);

// The moment a row's date text names when it has a year: a Unix-style
// "Jan  2  2020" or a DOS-style "01-02-20  10:30AM" gives that day's start,
// in UTC, as servers list times by default; a date with a time of day
// instead of a year ("Jan  2 12:00") or anything else names none.
std::optional<time_t> ListedTime(const std::string &date);

// Whether a listed name can stand for an entry inside its folder, here or on
// the server: not empty, no "/", not "." or "..".
bool IsPlainName(const std::string &name);

} // namespace kestrin
