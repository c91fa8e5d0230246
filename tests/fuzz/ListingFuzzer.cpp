// Feeds arbitrary server listings to GetEntries and each of their lines to the
// Unix-style line reader. Besides what the sanitizers catch, it checks that
// every row is one a listing line could have produced and that a Unix-style
// row written back out as a listing line reads back the same, which holds
// only when fields, date and name are cut at the right places.

#include "ListingRowChecks.h"
#include "ftp/FtpListing.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

namespace {

// What holds for a row of any form.
void CheckRow(const kestrin::FtpListingRow &row)
{
    using namespace std::string_view_literals;
    CheckName(row);
    if (row.permissions.empty() || Holds(row.size, " \n\0"sv) || Holds(row.permissions, " \n\0"sv))
        Fail("bad field", row);
    if (Holds(row.date, "\n\0"sv))
        Fail("bad date", row);
    // Any date text, however odd, names a day or none.
    kestrin::ListedTime(row.date);
}

void CheckUnixLine(std::string_view line)
{
    const std::optional<kestrin::FtpListingRow> row = kestrin::ReadUnixLine(line);
    if (!row)
        return;
    CheckRow(*row);
    if (row->size.empty() || row->date.empty() || row->date.front() == ' '
        || row->date.back() == ' ' || row->name.front() == ' ')
        Fail("bad Unix row", *row);
    const std::string written = row->permissions + " 1 owner group " + row->size + " " + row->date
                                + " " + row->name + "\r";
    if (kestrin::ReadUnixLine(written) != row)
        Fail("written back as a listing line, the row reads back differently", *row);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    std::string_view listing(reinterpret_cast<const char *>(data), size);
    for (const kestrin::FtpListingRow &row : kestrin::GetEntries(listing))
        CheckRow(row);
    // The lines as GetEntries cuts them.
    listing = listing.substr(0, listing.find('\0'));
    while (!listing.empty()) {
        const size_t end = listing.find('\n');
        CheckUnixLine(listing.substr(0, end));
        if (end == std::string_view::npos)
            break;
        listing.remove_prefix(end + 1);
    }
    return 0;
}
