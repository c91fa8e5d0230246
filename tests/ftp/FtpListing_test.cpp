#include "ftp/FtpListing.h"
#include "ftp/FtpMachineListing.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

using namespace std::string_literals;

namespace kestrin {

void PrintTo(const FtpListingRow &row, std::ostream *out)
{
    *out << "{'" << row.name << "' '" << row.size << "' '" << row.date << "' '" << row.permissions
         << "' " << (row.modified ? std::to_string(*row.modified) : "-") << "}";
}

namespace {

struct Case
{
    const char *what;
    std::string listing;
    std::vector<FtpListingRow> rows;
};

constexpr time_t kJan2Noon = 1577966400; // 2020-01-02 12:00:00 UTC

TEST(FtpListing, LinesBecomeRowsOfFourTexts)
{
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
        {"a name of blanks only is no row", "-rw-r--r-- 1 u g 5 Jan 1 2001  \r\n", {}},
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

TEST(FtpListing, DosAndMixedLinesBecomeRows)
{
    const Case cases[] = {
        {"a folder in IIS's columns",
         "01-02-24  10:30AM       <DIR>          name\r\n",
         {{"name", "<DIR>", "01-02-24  10:30AM", "d", {}}}},
        {"IIS's columns keep a folder name's leading blank",
         "01-02-24  10:30AM       <DIR>           lead\r\n",
         {{" lead", "<DIR>", "01-02-24  10:30AM", "d", {}}}},
        {"a folder out of those columns",
         "01-02-24  10:30AM  <DIR>  name",
         {{"name", "<DIR>", "01-02-24  10:30AM", "d", {}}}},
        {"a file with its size, blanks in its name",
         "02-14-19  10:54PM                 1234 my file.txt\r\n",
         {{"my file.txt", "1234", "02-14-19  10:54PM", "-", {}}}},
        {"one blank after the size; more are the name's",
         "02-14-19  10:54AM                  689  lead\r\n",
         {{" lead", "689", "02-14-19  10:54AM", "-", {}}}},
        {"four-digit years, year first, 24-hour times",
         "01-02-2024  9:05PM 5 a\r\n2024-01-02  22:15  <DIR>  Sub\r\n",
         {{"a", "5", "01-02-2024  9:05PM", "-", {}},
          {"Sub", "<DIR>", "2024-01-02  22:15", "d", {}}}},
        {"no name, a size that is no number, an odd time, the folder and its parent",
         "01-02-24  10:30AM  <DIR>\r\n01-02-24  10:30AM  <DIR>   \r\n"
         "01-02-24  10:30AM  12k name\r\n01-02-24  10:30XM  1 name\r\n"
         "01-02-24  10:30AM  <DIR>  .\r\n01-02-24  10:30AM  <DIR>  ..\r\n",
         {}},
        {"one listing may mix the forms, line by line",
         "type=file;size=3;modify=20200102120000;UNIX.mode=0644; m\r\n"
         "01-02-24  10:30AM  <DIR>  d\r\n"
         "-rw-r--r--    1 1000     1000            3 Jan 02  2020 l",
         {{"m", "3", "2020-01-02 12:00:00", "-rw-r--r--", kJan2Noon},
          {"d", "<DIR>", "01-02-24  10:30AM", "d", {}},
          {"l", "3", "Jan 02  2020", "-rw-r--r--"}}},
    };
    for (const Case &c : cases)
        EXPECT_EQ(GetEntries(c.listing), c.rows) << c.what;
}

TEST(FtpListing, MachineLinesBecomeRowsWithExactTimes)
{
    const Case cases[] = {
        {"pyftpdlib's facts, its mode in Python's octal",
         "modify=20200102120000;perm=r;size=1234;type=file;unix.mode=0o644; my file.txt\r\n",
         {{"my file.txt", "1234", "2020-01-02 12:00:00", "-rw-r--r--", kJan2Noon}}},
        {"every blank after the first space is the name's",
         "type=file;size=0;modify=20200102120059;   two  \r\n",
         {{"  two  ", "0", "2020-01-02 12:00:59", "-", kJan2Noon + 59}}},
        {"a folder's size as sizd, names of facts in any case",
         "Type=Dir;Sizd=4096;Modify=20200102120000.123;UNIX.mode=0755; sub",
         {{"sub", "4096", "2020-01-02 12:00:00", "drwxr-xr-x", kJan2Noon}}},
        {"a link that names its target, as Pure-FTPd's do",
         "type=OS.unix=slink:../Target;size=9;UNIX.mode=0777; link\r\n",
         {{"link -> ../Target", "9", "", "lrwxrwxrwx", {}}}},
        {"a link that does not, as ProFTPD's",
         "type=OS.unix=symlink;size=9; link\r\n",
         {{"link", "9", "", "l", {}}}},
        {"a device, and facts that do not read",
         "type=OS.unix=chr-4/5;size=12x;modify=2020;unix.mode=9; tty\r\n",
         {{"tty", "", "", "?", {}}}},
        {"no type: a file", "size=3; x", {{"x", "3", "", "-", {}}}},
        {"the folder itself, its parent, and names of dots",
         "type=cdir; /pub\r\ntype=pdir; /\r\ntype=dir; .\r\ntype=dir; ..\r\n",
         {}},
        {"facts without a name, no facts, a fact without a name",
         "type=file;\r\n name\r\ntype=file;=x; name\r\ntype=file name\r\n",
         {}},
    };
    for (const Case &c : cases)
        EXPECT_EQ(GetEntries(c.listing), c.rows) << c.what;
}

} // namespace
} // namespace kestrin
