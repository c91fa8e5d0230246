#include "ftp/FtpMachineListing.h"

#include "app/EntryTexts.h"
#include "ftp/FtpWireText.h"

#include <algorithm>
#include <string>

namespace kestrin {

namespace {

// What the facts of one line say.
struct Facts
{
    char kind = '-';
    bool entry = true; // false for the folder itself and its parent
    std::string linkTarget;
    std::string size;
    std::string sizd;
    std::optional<mode_t> mode;
    std::optional<time_t> modified;
};

void ReadType(std::string_view value, Facts *facts)
{
    const std::string type = FtpWireText::LowerCase(value);
    if (type == "file") {
        facts->kind = '-';
    } else if (type == "dir") {
        facts->kind = 'd';
    } else if (type == "cdir" || type == "pdir") {
        facts->entry = false;
    } else if (type == "os.unix=symlink" || type == "os.unix=slink") {
        facts->kind = 'l';
    } else if (type.starts_with("os.unix=slink:")) {
        facts->kind = 'l';
        facts->linkTarget = std::string(value.substr(sizeof "os.unix=slink:" - 1));
    } else {
        facts->kind = '?';
    }
}

// Octal, as servers write it: "644", "0644", or Python's "0o644".
std::optional<mode_t> ReadMode(std::string_view value)
{
    if (value.starts_with("0o") || value.starts_with("0O"))
        value.remove_prefix(2);
    if (value.empty() || value.size() > 6)
        return std::nullopt;
    mode_t mode = 0;
    for (const char c : value) {
        if (c < '0' || c > '7')
            return std::nullopt;
        mode = mode * 8 + mode_t(c - '0');
    }
    return mode & 07777;
}

bool IsDecimal(std::string_view value)
{
    return !value.empty() && value.size() <= 19
           && std::all_of(value.begin(), value.end(), [](char c) { return c >= '0' && c <= '9'; });
}

void ReadFact(std::string_view name, std::string_view value, Facts *facts)
{
    const std::string fact = FtpWireText::LowerCase(name);
    if (fact == "type") {
        ReadType(value, facts);
    } else if (fact == "size" && IsDecimal(value)) {
        facts->size = value;
    } else if (fact == "sizd" && IsDecimal(value)) {
        facts->sizd = value;
    } else if (fact == "modify") {
        if (const std::optional<timespec> time = FtpWireText::MachineTime(value))
            facts->modified = time->tv_sec;
    } else if (fact == "unix.mode") {
        facts->mode = ReadMode(value);
    }
}

// "2020-01-02 12:00:00" from "20200102120000".
std::string DateText(time_t time)
{
    const std::string digits = FtpWireText::TimeText(time);
    return digits.substr(0, 4) + "-" + digits.substr(4, 2) + "-" + digits.substr(6, 2) + " "
           + digits.substr(8, 2) + ":" + digits.substr(10, 2) + ":" + digits.substr(12, 2);
}

} // namespace

bool IsMachineLine(std::string_view line)
{
    const std::string_view facts = line.substr(0, line.find(' '));
    if (facts.size() == line.size() || facts.empty() || facts.back() != ';'
        || facts.find('\r') != std::string_view::npos)
        return false;
    // Each fact has a name before its "=".
    size_t start = 0;
    while (start < facts.size()) {
        const size_t end = facts.find(';', start);
        const size_t equals = facts.find('=', start);
        if (equals == std::string_view::npos || equals == start || equals > end)
            return false;
        start = end + 1;
    }
    return true;
}

std::optional<FtpListingRow> ReadMachineLine(std::string_view line)
{
    if (!IsMachineLine(line))
        return std::nullopt;
    const size_t blank = line.find(' ');
    std::string_view name = line.substr(blank + 1);
    name = name.substr(0, name.find('\r'));
    if (name.empty() || name == "." || name == "..")
        return std::nullopt;

    Facts facts;
    const std::string_view list = line.substr(0, blank);
    for (size_t start = 0; start < list.size();) {
        const size_t end = list.find(';', start);
        const std::string_view fact = list.substr(start, end - start);
        const size_t equals = fact.find('=');
        ReadFact(fact.substr(0, equals), fact.substr(equals + 1), &facts);
        start = end + 1;
    }
    if (!facts.entry)
        return std::nullopt;

    FtpListingRow row;
    row.name = name;
    if (!facts.linkTarget.empty())
        row.name += " -> " + facts.linkTarget;
    row.size = !facts.size.empty() ? facts.size : facts.sizd;
    row.permissions = std::string(1, facts.kind);
    if (facts.mode)
        row.permissions += EntryTexts::PermissionText(*facts.mode);
    if (facts.modified) {
        row.modified = facts.modified;
        row.date = DateText(*facts.modified);
    }
    return row;
}

} // namespace kestrin
