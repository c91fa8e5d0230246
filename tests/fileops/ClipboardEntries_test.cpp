// Entries on the clipboard in the forms other file managers write and read,
// and a pasted cut carried out by the copy engine.

#include "CopyTestSupport.h"

#include "fileops/ClipboardEntries.h"
#include "fileops/TransferPlanner.h"

#include <QMimeData>

using namespace kestrin;
using Action = ClipboardEntries::Action;

namespace {

std::string Bytes(const QMimeData &data, const char *format)
{
    return data.data(format).toStdString();
}

TEST(ClipboardEntriesTest, NamesTravelPercentEncodedAndComeBackWhole)
{
    const std::vector<std::pair<std::string, std::string>> rows = {
        {"/tmp/a b", "file:///tmp/a%20b"},
        {"/t/Grüße", "file:///t/Gr%C3%BC%C3%9Fe"},
        {"/t/100%", "file:///t/100%25"},
        {"/t/two\nlines", "file:///t/two%0Alines"},
        {"/t/x#?y", "file:///t/x%23%3Fy"},
        {"/t/\xff-latin1", "file:///t/%FF-latin1"},
    };
    ClipboardEntries entries;
    std::string uriList, gnome;
    for (const auto &[path, uri] : rows) {
        entries.paths.push_back(path);
        uriList += uri + "\r\n";
        gnome += "\n" + uri;
    }
    for (const Action action : {Action::Copy, Action::Cut}) {
        entries.action = action;
        const std::unique_ptr<QMimeData> data = entries.Mime();
        EXPECT_EQ(Bytes(*data, "text/uri-list"), uriList);
        EXPECT_EQ(Bytes(*data, "x-special/gnome-copied-files"),
                  (action == Action::Cut ? "cut" : "copy") + gnome);
        EXPECT_EQ(data->hasFormat("application/x-kde-cutselection"), action == Action::Cut);
        EXPECT_TRUE(data->text().startsWith("/tmp/a b\n/t/Grüße\n"));
        const ClipboardEntries back = ClipboardEntries::Read(*data);
        EXPECT_EQ(back.action, action);
        EXPECT_EQ(back.paths, entries.paths);
    }
}

TEST(ClipboardEntriesTest, WhatOtherApplicationsLeft)
{
    TempHome home;
    const std::string a = home.Root() + "/a", b = home.Root() + "/b";
    WriteFileBytes(a, "a");
    WriteFileBytes(b, "b");
    const char *const gnome = "x-special/gnome-copied-files", *const uris = "text/uri-list",
                      *const text = "text/plain";
    struct Row
    {
        std::vector<std::pair<const char *, std::string>> formats;
        Action action;
        std::vector<std::string> paths;
    };
    const std::vector<Row> rows = {
        {{{gnome, "cut\nfile:///a%20b\nfile://localhost/c\n"}}, Action::Cut, {"/a b", "/c"}},
        {{{gnome, "copy\r\nsftp://h/x\r\nfile:///y"}, {uris, "file:///z\r\n"}},
         Action::Copy,
         {"/y"}},
        {{{uris, "# a comment\r\nfile:///u\r\nhttp://h/\r\nfile://elsewhere.example/v\r\n"}},
         Action::Copy,
         {"/u"}},
        {{{uris, "file:///m\r\n"}, {"application/x-kde-cutselection", "1"}}, Action::Cut, {"/m"}},
        {{{text, a + "\n" + b + "\n"}}, Action::Copy, {a, b}},
        {{{text, a + "\nnot a path"}}, Action::Copy, {}},
        {{{text, "a"}}, Action::Copy, {}},
        {{{text, home.Root() + "/missing"}}, Action::Copy, {}},
    };
    for (const Row &row : rows) {
        QMimeData data;
        for (const auto &[format, bytes] : row.formats)
            data.setData(format, QByteArray::fromStdString(bytes));
        const ClipboardEntries entries = ClipboardEntries::Read(data);
        EXPECT_EQ(entries.action, row.action) << row.formats.front().second;
        EXPECT_EQ(entries.paths, row.paths) << row.formats.front().second;
    }
}

TEST(ClipboardEntriesTest, ArchivesAndServersGiveTheirPathsAsTextAndCannotBeCut)
{
    FtpSession server;
    server.host = "127.0.0.1";
    server.port = "2350";
    server.user = "u";
    server.pass = "secret";
    FtpSession standardPort = server;
    standardPort.port = "21";
    FtpSession sftp = server;
    sftp.kind = FtpSession::Kind::Sftp;
    FtpSession sftpPort = sftp;
    sftpPort.port = "22";
    using Kind = TransferPlace::Kind;
    struct Row
    {
        TransferPlace place;
        Action action;
        std::string path, text; // no text: refused
        bool files;
    };
    const std::vector<Row> rows = {
        {{Kind::QueryResults, "/x", {}}, Action::Cut, "/y/found", "/y/found", true},
        {{Kind::Archive, "/x", {}}, Action::Copy, "/x/a.zip/m 1", "/x/a.zip/m 1", false},
        {{Kind::Archive, "/x", {}}, Action::Cut, "/x/a.zip/m", "", false},
        {{Kind::FtpFolder, "/", server}, Action::Copy, "/a b", "ftp://u@127.0.0.1:2350/a%20b", false},
        {{Kind::FtpFolder, "/", standardPort}, Action::Copy, "/f", "ftp://u@127.0.0.1/f", false},
        {{Kind::FtpFolder, "/", server}, Action::Cut, "/a", "", false},
        {{Kind::SftpFolder, "/", sftp}, Action::Copy, "/a b", "sftp://u@127.0.0.1:2350/a%20b", false},
        {{Kind::SftpFolder, "/", sftpPort}, Action::Copy, "/f", "sftp://u@127.0.0.1/f", false},
        {{Kind::SftpFolder, "/", sftp}, Action::Cut, "/a", "", false},
    };
    for (const Row &row : rows) {
        const ClipboardEntries::Written written = ClipboardEntries::ForPlace(row.place,
                                                                             row.action,
                                                                             {row.path});
        EXPECT_EQ(written.refusal.has_value(), row.text.empty()) << row.path;
        EXPECT_EQ(written.data ? written.data->text().toStdString() : "", row.text);
        EXPECT_EQ(written.data && written.data->hasUrls(), row.files) << row.path;
    }
}

// A cut made in another file manager, pasted: the planner's plan run by the
// engine moves the entries, and the one already in the target stays put.
TEST(ClipboardEntriesTest, APastedCutMovesTheEntriesThroughTheCopyEngine)
{
    TempHome home;
    const std::string from = home.Root() + "/from", into = home.Root() + "/into";
    fs::create_directories(from + "/folder/deep");
    fs::create_directories(into);
    const std::string big(100000, 'a');
    WriteFileBytes(from + "/a file", big);
    WriteFileBytes(from + "/folder/deep/b", "b");
    WriteFileBytes(into + "/here", "h");
    QMimeData data;
    data.setData("x-special/gnome-copied-files",
                 QByteArray::fromStdString("cut\n" + ClipboardEntries::FileUri(from + "/a file")
                                           + "\n" + ClipboardEntries::FileUri(from + "/folder")
                                           + "\n" + ClipboardEntries::FileUri(into + "/here")));

    const ClipboardEntries::Paste paste = ClipboardEntries::Read(data).PasteInto(into);
    ASSERT_FALSE(paste.refusal);
    const TransferPlan plan = TransferPlanner::Plan(paste.request,
                                                    TransferPlace::LocalFolder(from),
                                                    TransferPlace::LocalFolder(into));
    ASSERT_EQ(plan.steps.size(), 1u);
    FakeCopyControl control;
    CopyEngine(plan.steps[0].request, plan.steps[0].destination, control).Run();

    EXPECT_TRUE(control.errors.empty());
    EXPECT_TRUE(fs::is_empty(from));
    EXPECT_EQ(Tree(into),
              (std::map<std::string, std::string>{{"a file", big},
                                                  {"folder", "/"},
                                                  {"folder/deep", "/"},
                                                  {"folder/deep/b", "b"},
                                                  {"here", "h"}}));
    // Pasted again, there is nothing left to move.
    EXPECT_TRUE(ClipboardEntries::Read(data).PasteInto(into).refusal);
}

} // namespace
