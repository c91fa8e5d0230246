#include "ftp/FtpListing.h"

#include "ftp/FtpWireText.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <optional>

namespace kestrin {

namespace {

constexpr size_t kFieldsBeforeName = 8;

std::optional<FtpListingRow> ParseLine(std::string_view line)
{
    std::string_view fields[kFieldsBeforeName];
    size_t at = 0;
    for (std::string_view &field : fields) {
        at = line.find_first_not_of(' ', at);
        if (at == std::string_view::npos)
            return std::nullopt;
        const size_t end = std::min(line.find(' ', at), line.size());
        field = line.substr(at, end - at);
        at = end;
    }
    at = line.find_first_not_of(' ', at);
    if (at == std::string_view::npos)
        return std::nullopt;
    std::string_view name = line.substr(at);
    name = name.substr(0, name.find('\r'));
    if (name.empty() || name == "." || name == "..")
        return std::nullopt;

    // The date keeps the spaces between month, day and time-or-year: servers
    // pad the day to line the columns up, and the pane shows it as sent.
    const char *dateBegin = fields[5].data();
    const char *dateEnd = fields[7].data() + fields[7].size();
    return FtpListingRow{std::string(name),
                         std::string(fields[4]),
                         std::string(dateBegin, size_t(dateEnd - dateBegin)),
                         std::string(fields[0])};
}

} // namespace

std::vector<FtpListingRow> GetEntries(std::string_view listing)
{
    listing = listing.substr(0, listing.find('\0'));
    std::vector<FtpListingRow> rows;
    // No line is skipped by position: vsftpd sends no "total" line, and where a
    // server does, its two fields are too few for a row.
    while (!listing.empty()) {
        const size_t end = listing.find('\n');
        if (std::optional<FtpListingRow> row = ParseLine(listing.substr(0, end)))
            rows.push_back(std::move(*row));
        if (end == std::string_view::npos)
            break;
        listing.remove_prefix(end + 1);
    }
    return rows;
}

std::optional<time_t> ListedTime(const std::string &date)
{
    static constexpr std::string_view kMonths = "JanFebMarAprMayJunJulAugSepOctNovDec";
    char month[4] = {};
    unsigned day = 0;
    int year = 0, yearStart = 0, end = 0;
    // Four digits to the end of the text; a time of day stands there instead
    // in the dates of the last half year.
    if (sscanf(date.c_str(), "%3s %u %n%d%n", month, &day, &yearStart, &year, &end) != 3
        || end - yearStart != 4 || size_t(end) != date.size())
        return std::nullopt;
    const size_t named = kMonths.find(month);
    if (strlen(month) != 3 || named == std::string_view::npos || named % 3 != 0)
        return std::nullopt;
    return FtpWireText::UtcTime(year, unsigned(named / 3) + 1, day, 0, 0, 0);
}

bool IsPlainName(const std::string &name)
{
    return !name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos;
}

} // namespace kestrin
