#include "ftp/FtpListing.h"

#include "ftp/FtpMachineListing.h"
#include "ftp/FtpWireText.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <optional>

namespace kestrin {

namespace {

constexpr size_t kFieldsBeforeName = 8;

bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool AllDigits(std::string_view text)
{
    return !text.empty() && std::all_of(text.begin(), text.end(), IsDigit);
}

// The first field of `line` from `at` on (runs of spaces skipped); `at`
// moves past it. Empty at the line's end.
std::string_view NextField(std::string_view line, size_t *at)
{
    const size_t start = line.find_first_not_of(' ', *at);
    if (start == std::string_view::npos) {
        *at = line.size();
        return {};
    }
    const size_t end = std::min(line.find(' ', start), line.size());
    *at = end;
    return line.substr(start, end - start);
}

// The rest of a line as a name: up to its first carriage return; a name of
// blanks only, or none, or the folder itself or its parent is no entry.
std::optional<std::string> NameOf(std::string_view rest)
{
    rest = rest.substr(0, rest.find('\r'));
    if (rest.find_first_not_of(' ') == std::string_view::npos || rest == "." || rest == "..")
        return std::nullopt;
    return std::string(rest);
}

// "01-02-24", "01-02-2024" or "2024-01-02".
bool IsDosDate(std::string_view text)
{
    const auto digits = [&](size_t from, size_t count) {
        return AllDigits(text.substr(from, count));
    };
    if (text.size() == 8 || text.size() == 10) {
        if (text[2] == '-' && text[5] == '-' && digits(0, 2) && digits(3, 2)
            && digits(6, text.size() - 6))
            return true;
    }
    return text.size() == 10 && text[4] == '-' && text[7] == '-' && digits(0, 4) && digits(5, 2)
           && digits(8, 2);
}

// "10:30", "9:05" or either with AM or PM.
bool IsDosTime(std::string_view text)
{
    if (text.size() >= 2) {
        const std::string_view suffix = text.substr(text.size() - 2);
        if (strncasecmp(suffix.data(), "AM", 2) == 0 || strncasecmp(suffix.data(), "PM", 2) == 0)
            text.remove_suffix(2);
    }
    const size_t colon = text.find(':');
    return colon != std::string_view::npos && (colon == 1 || colon == 2)
           && AllDigits(text.substr(0, colon)) && text.size() == colon + 3
           && AllDigits(text.substr(colon + 1));
}

// IIS pads "<DIR>" so that every name starts in this column: whatever blanks
// stand there beyond the padding are the name's own.
constexpr size_t kDosNameColumn = 39;
constexpr size_t kDosDirEnd = 29;

std::optional<FtpListingRow> ReadLine(std::string_view line)
{
    if (IsMachineLine(line))
        return ReadMachineLine(line);
    size_t at = 0;
    if (IsDosDate(NextField(line, &at)))
        return ReadDosLine(line);
    return ReadUnixLine(line);
}

} // namespace

std::optional<FtpListingRow> ReadUnixLine(std::string_view line)
{
    std::string_view fields[kFieldsBeforeName];
    size_t at = 0;
    for (std::string_view &field : fields) {
        field = NextField(line, &at);
        if (field.empty())
            return std::nullopt;
    }
    // The name starts after every blank that follows the date, so a name's
    // own leading blanks are lost in a LIST line (an MLSD line keeps them).
    at = line.find_first_not_of(' ', at);
    if (at == std::string_view::npos)
        return std::nullopt;
    const std::optional<std::string> name = NameOf(line.substr(at));
    if (!name)
        return std::nullopt;

    // The date keeps the spaces between month, day and time-or-year: servers
    // pad the day to line the columns up, and the pane shows it as sent.
    const char *dateBegin = fields[5].data();
    const char *dateEnd = fields[7].data() + fields[7].size();
    return FtpListingRow{*name,
                         std::string(fields[4]),
                         std::string(dateBegin, size_t(dateEnd - dateBegin)),
                         std::string(fields[0]),
                         std::nullopt};
}

std::optional<FtpListingRow> ReadDosLine(std::string_view line)
{
    size_t at = 0;
    const std::string_view date = NextField(line, &at);
    const std::string_view time = NextField(line, &at);
    const std::string_view size = NextField(line, &at);
    if (!IsDosDate(date) || !IsDosTime(time) || at >= line.size())
        return std::nullopt;
    const bool folder = size == "<DIR>";
    if (!folder && !AllDigits(size))
        return std::nullopt;
    size_t nameStart = at + 1;
    if (folder) {
        const bool padded = at == kDosDirEnd && line.size() > kDosNameColumn
                            && line.substr(at, kDosNameColumn - at).find_first_not_of(' ')
                                   == std::string_view::npos;
        nameStart = padded ? kDosNameColumn : line.find_first_not_of(' ', at);
        if (nameStart == std::string_view::npos)
            return std::nullopt;
    }
    const std::optional<std::string> name = NameOf(line.substr(nameStart));
    if (!name)
        return std::nullopt;
    return FtpListingRow{*name,
                         std::string(size),
                         std::string(date.data(), size_t(time.data() + time.size() - date.data())),
                         folder ? "d" : "-",
                         std::nullopt};
}

std::vector<FtpListingRow> GetEntries(std::string_view listing)
{
    listing = listing.substr(0, listing.find('\0'));
    std::vector<FtpListingRow> rows;
    // No line is skipped by position: vsftpd sends no "total" line, and where a
    // server does, its two fields are too few for a row.
    while (!listing.empty()) {
        const size_t end = listing.find('\n');
        if (std::optional<FtpListingRow> row = ReadLine(listing.substr(0, end)))
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
    unsigned day = 0, month = 0;
    int year = 0, yearStart = 0, end = 0;
    size_t at = 0;
    const std::string_view dosDate = NextField(date, &at);
    if (IsDosDate(dosDate)) {
        const bool yearFirst = dosDate[4] == '-';
        if (yearFirst)
            sscanf(dosDate.data(), "%4d-%2u-%2u", &year, &month, &day);
        else
            sscanf(dosDate.data(), "%2u-%2u-%d", &month, &day, &year);
        // Two digits name the years from 1970 to 2069.
        if (dosDate.size() == 8)
            year += year < 70 ? 2000 : 1900;
        return FtpWireText::UtcTime(year, month, day, 0, 0, 0);
    }
    char monthName[4] = {};
    // Four digits to the end of the text; a time of day stands there instead
    // in the dates of the last half year.
    if (sscanf(date.c_str(), "%3s %u %n%d%n", monthName, &day, &yearStart, &year, &end) != 3
        || end - yearStart != 4 || size_t(end) != date.size())
        return std::nullopt;
    const size_t named = kMonths.find(monthName);
    if (strlen(monthName) != 3 || named == std::string_view::npos || named % 3 != 0)
        return std::nullopt;
    return FtpWireText::UtcTime(year, unsigned(named / 3) + 1, day, 0, 0, 0);
}

bool IsPlainName(const std::string &name)
{
    return !name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos;
}

} // namespace kestrin
