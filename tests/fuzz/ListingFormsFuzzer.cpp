// Feeds each line of arbitrary listings to the machine-listing (MLSD) and the
// DOS-style line readers. Besides what the sanitizers catch, it checks that
// every row is one such a line could have produced, and that the row written
// back out as a line of its form reads back the same: facts, sizes, times,
// modes and names are cut and kept exactly, leading blanks included.

#include "app/EntryTexts.h"
#include "ListingRowChecks.h"
#include "ftp/FtpListing.h"
#include "ftp/FtpMachineListing.h"
#include "ftp/FtpWireText.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

using kestrin::FtpListingRow;

bool Digits(const std::string &text)
{
    return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
}

// The facts a row stands for; the mode's bits from the nine letters.
std::string FactsOf(const FtpListingRow &row, std::string *name)
{
    *name = row.name;
    std::string facts;
    const char kind = row.permissions[0];
    if (kind == 'd') {
        facts = "type=dir;";
    } else if (kind == '-') {
        facts = "type=file;";
    } else if (kind == '?') {
        facts = "type=OS.unix=chr-1/3;";
    } else {
        // A target has no blank (facts end at the first), so the last arrow
        // is the one the reader put there, if any. A link without a target
        // whose own name has an arrow keeps it all when what stands before
        // the arrow could not be a name of its own: empty, "." or "..".
        const size_t arrow = row.name.rfind(" -> ");
        const std::string target = arrow == std::string::npos ? "" : row.name.substr(arrow + 4);
        const std::string before = row.name.substr(0, arrow);
        const bool beforeIsAName = !before.empty() && before != "." && before != "..";
        if (beforeIsAName && !target.empty() && !Holds(target, " ;="))
            *name = before;
        facts = name->size() < row.name.size() ? "type=OS.unix=slink:" + target + ";"
                                               : "type=OS.unix=symlink;";
    }
    if (!row.size.empty())
        facts += "size=" + row.size + ";";
    if (row.modified)
        facts += "modify=" + kestrin::FtpWireText::TimeText(*row.modified) + ";";
    if (row.permissions.size() == 10) {
        unsigned mode = 0;
        for (size_t bit = 0; bit < 9; bit++) {
            if (row.permissions[bit + 1] != '-')
                mode |= 0400u >> bit;
        }
        char text[16];
        snprintf(text, sizeof text, "UNIX.mode=0%o;", mode);
        facts += text;
    }
    return facts;
}

void CheckMachineLine(std::string_view line)
{
    const std::optional<FtpListingRow> row = kestrin::ReadMachineLine(line);
    if (!row)
        return;
    CheckName(*row);
    const std::string &permissions = row->permissions;
    if ((permissions.size() != 1 && permissions.size() != 10)
        || std::string_view("-dl?").find(permissions[0]) == std::string_view::npos)
        Fail("bad permissions", *row);
    if (permissions.size() == 10 && permissions.substr(1) != kestrin::EntryTexts::PermissionText(0)
        && permissions.find_first_not_of("-rwx", 1) != std::string::npos)
        Fail("bad mode letters", *row);
    if (!row->size.empty() && !Digits(row->size))
        Fail("bad size", *row);
    if (row->modified.has_value() == row->date.empty())
        Fail("a date without its moment, or the other way round", *row);
    std::string name;
    const std::string written = FactsOf(*row, &name) + " " + name + "\r";
    if (kestrin::ReadMachineLine(written) != row)
        Fail("written back as facts, the row reads back differently", *row);
}

void CheckDosLine(std::string_view line)
{
    const std::optional<FtpListingRow> row = kestrin::ReadDosLine(line);
    if (!row)
        return;
    CheckName(*row);
    const bool folder = row->permissions == "d";
    if ((!folder && row->permissions != "-") || (folder != (row->size == "<DIR>"))
        || (!folder && !Digits(row->size)) || row->date.empty())
        Fail("bad DOS row", *row);
    if (!kestrin::ReadDosLine(row->date + " " + row->size + " x"))
        Fail("the date and size do not read again", *row);
    // A folder's name goes where IIS puts it, which keeps its leading blanks.
    std::string written = row->date + " ";
    if (folder) {
        if (written.size() > 24 && row->name[0] == ' ')
            return;
        written.resize(std::max<size_t>(written.size(), 24), ' ');
        written += "<DIR>          ";
    } else {
        written += row->size + " ";
    }
    written += row->name + "\r";
    if (kestrin::ReadDosLine(written) != row)
        Fail("written back as a DOS line, the row reads back differently", *row);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    std::string_view listing(reinterpret_cast<const char *>(data), size);
    listing = listing.substr(0, listing.find('\0'));
    while (!listing.empty()) {
        const size_t end = listing.find('\n');
        const std::string_view line = listing.substr(0, end);
        CheckMachineLine(line);
        CheckDosLine(line);
        if (end == std::string_view::npos)
            break;
        listing.remove_prefix(end + 1);
    }
    return 0;
}
