#include "ftp/FtpListing.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

using namespace std::string_literals;

namespace kestrin {

void PrintTo(const FtpListingRow &row, std::ostream *out)
{
    *out << "{'" << row.name << "' '" << row.size << "' '" << row.date << "' '" << row.permissions
         << "'}";
}

namespace {

TEST(FtpListing, LinesBecomeRowsOfFourTexts)
{
    struct Case
    {
        const char *what;
        std::string listing;
        std::vector<FtpListingRow> rows;
    };
    const std::string line = "-rw-r--r--   1 u g 1234 Mar  5  2001 my file.txt";
    const FtpListingRow file{"my file.txt", "1234", "Mar  5  2001", "-rw-r--r--"};
    const std::string pubLine = "drwxr-xr-x 2 ftp ftp 4096 Jan  1 12:00 pub";
    const FtpListingRow pub{"pub", "4096", "Jan  1 12:00", "drwxr-xr-x"};
    const Case cases[] = {
        {"CR LF lines", "total 8\r\n" + line + "\r\n" + pubLine + "\r\n", {file, pub}},
        {"LF lines", "total 8\n" + line + "\n", {file}},
        {"the last line without its line end, as List leaves it",
         "total 8\r\n" + pubLine + "\r\n" + line + "\r",
         {pub, file}},
        {"no total line: the first entry is still a row", line + "\n" + pubLine, {file, pub}},
        {"a link keeps its arrow and target",
         "lrwxrwxrwx 1 0 0 11 Feb 29 09:15 latest -> releases/9\n",
         {{"latest -> releases/9", "11", "Feb 29 09:15", "lrwxrwxrwx"}}},
        {"leading and doubled spaces; trailing ones belong to the name",
         "  -rw-------  12  owner   group    77   Dec 31   1999   spaced  \n",
         {{"spaced  ", "77", "Dec 31   1999", "-rw-------"}}},
        {"the name ends at its first CR",
         "-rw-r--r-- 1 u g 5 Jan  1 2001 a\rb\r\n",
         {{"a", "5", "Jan  1 2001", "-rw-r--r--"}}},
        {"a tab is part of a field, not a separator",
         "-rw-r--r-- 1 u g 5 Jan 1 2001\tname\n-rw-r--r-- 1 u g 5 Jan 1 2001 \tname\n",
         {{"\tname", "5", "Jan 1 2001", "-rw-r--r--"}}},
        {"the text ends at a NUL byte",
         "total 1\n-rw-r--r-- 1 u g 5 Jan 1 2001 a\0b\nx"s,
         {{"a", "5", "Jan 1 2001", "-rw-r--r--"}}},
        // A server chooses the names: ones that would climb out of a local
        // folder are listed, so the user sees them and a transfer refuses them.
        {"hostile names are rows",
         "-rw-r--r-- 1 u g 5 Jan 1 2001 ../../etc/passwd\r\n"
         "-rw-r--r-- 1 u g 5 Jan 1 2001 /abs\r\n"
         "-rw-r--r-- 1 u g 5 Jan 1 2001 ...\r\n"
         "-rw-r--r-- 1 u g 5 Jan 1 2001 \xff\x01\r\n",
         {{"../../etc/passwd", "5", "Jan 1 2001", "-rw-r--r--"},
          {"/abs", "5", "Jan 1 2001", "-rw-r--r--"},
          {"...", "5", "Jan 1 2001", "-rw-r--r--"},
          {"\xff\x01", "5", "Jan 1 2001", "-rw-r--r--"}}},
        {"empty", "", {}},
        {"blank lines", "\n\n\r\n   \n", {}},
        {"total line alone", "total 0\r\n", {}},
        {"eight fields, no name", "-rw-r--r-- 1 u g 5 Jan 1 2001\r\n", {}},
        {"eight fields and blanks", "-rw-r--r-- 1 u g 5 Jan 1 2001   \r\n", {}},
        {"seven fields", "-rw-r--r-- 1 u g 5 Jan 1\r\n", {}},
        {"the folder itself and its parent",
         "drwxr-xr-x 2 u g 4096 Jan 1 12:00 .\r\ndrwxr-xr-x 9 u g 4096 Jan 1 12:00 ..\r\n"
         "drwxr-xr-x 9 u g 4096 Jan 1 12:00 ..",
         {}},
    };
    for (const Case &c : cases)
        EXPECT_EQ(GetEntries(c.listing), c.rows) << c.what;
}

TEST(FtpListing, LongListingsAndLinesAreReadWhole)
{
    std::string listing = "total 100000\r\n";
    for (int i = 0; i < 100000; i++) {
        const std::string n = std::to_string(i);
        listing += "-rw-r--r-- 1 u g " + n + " Jan 1 2001 f" + n + "\r\n";
    }
    const std::string longName(4 << 20, 'x');
    listing += "-rw-r--r-- 1 u g 0 Jan 1 2001 " + longName;

    const std::vector<FtpListingRow> rows = GetEntries(listing);
    ASSERT_EQ(rows.size(), 100001u);
    EXPECT_EQ(rows[99999], (FtpListingRow{"f99999", "99999", "Jan 1 2001", "-rw-r--r--"}));
    EXPECT_EQ(rows.back().name, longName);
}

} // namespace
} // namespace kestrin
