// Feeds arbitrary server listings to GetEntries. Besides what the sanitizers
// catch, it checks that every row is one a listing line could have produced
// and that writing the rows back out as listing lines reads back the same rows,
// which holds only when fields, date and name are cut at the right places.

#include "ftp/FtpListing.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

namespace {

[[noreturn]] void Fail(const char *what, const kestrin::FtpListingRow &row)
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

bool Holds(std::string_view text, std::string_view bytes)
{
    return text.find_first_of(bytes) != std::string_view::npos;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    using namespace std::string_view_literals;
    const std::string_view listing(reinterpret_cast<const char *>(data), size);
    const std::vector<kestrin::FtpListingRow> rows = kestrin::GetEntries(listing);

    std::string written;
    for (const kestrin::FtpListingRow &row : rows) {
        if (row.name.empty() || row.name == "." || row.name == ".." || row.name[0] == ' '
            || Holds(row.name, "\n\r\0"sv))
            Fail("bad name", row);
        if (row.size.empty() || row.permissions.empty() || Holds(row.size, " \n\0"sv)
            || Holds(row.permissions, " \n\0"sv))
            Fail("bad field", row);
        if (row.date.empty() || row.date.front() == ' ' || row.date.back() == ' '
            || Holds(row.date, "\n\0"sv))
            Fail("bad date", row);
        // Any date text, however odd, names a day or none.
        kestrin::ListedTime(row.date);
        written += row.permissions + " 1 owner group " + row.size + " " + row.date + " " + row.name
                   + "\r\n";
    }
    if (kestrin::GetEntries(written) != rows) {
        fprintf(stderr, "rows written back as a listing read back differently\n");
        abort();
    }
    return 0;
}
