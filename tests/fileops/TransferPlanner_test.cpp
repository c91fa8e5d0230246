// Every pairing of the five kinds of place and the five operations, as the
// planner decides it: the steps of the plan, or the refusal's exact text.

#include "fileops/FileOpsMessages.h"
#include "fileops/TransferPlanner.h"

#include <gtest/gtest.h>
#include <string>

using namespace kestrin;
using Kind = TransferPlace::Kind;
using Operation = TransferPlanner::Operation;

namespace {

const char *const kQueryRefusal
    = "This view contains Query Results. You cannot copy or move to it.";
const char *const kArchiveRefusal
    = "This view shows the contents of an archive. You cannot copy or move to it.";
const char *const kServerToServer
    = "Transferring from one Ftp server to another is not supported(Yet...we will support this.";
const char *const kMoveFromServer = "Files on an FTP server are not moved from here: copy them "
                                    "with F5, then delete them on the server.";
const char *const kMoveToServer = "Files are not moved to an FTP server: upload them with F5, "
                                  "then delete them here once they have arrived.";
const char *const kMoveFromArchive = "Members of an archive are not moved out of it: the "
                                     "archive stays as it is. Unpack them with F5.";
const char *const kLink = "Links are made between local folders only.";
const char *const kUnpack = "Only the members of an archive can be unpacked: open the archive "
                            "with Return, then unpack them with F5.";

FtpSession Session(const std::string &name)
{
    FtpSession session;
    session.name = name;
    session.host = "127.0.0.1";
    session.port = "2121";
    session.user = "anonymous";
    session.pass = "guest@";
    return session;
}

TransferPlace PlaceOf(Kind kind, const std::string &folder)
{
    if (kind == Kind::FtpFolder || kind == Kind::SftpFolder)
        return {kind, folder, Session(folder == "/pub" ? "target" : "origin")};
    return {kind, folder, {}};
}

// The request a pane of `kind` builds for `operation`, as its keys do.
platform::Message RequestOf(Kind kind, Operation operation)
{
    static const char *const types[] = {"Copy", "Move", "Link", "Pack", "UnPack"};
    uint32_t what = kMsgCopyRequest;
    if (operation == Operation::Pack)
        what = kMsgPackRequest;
    else if (operation == Operation::Unpack)
        what = kMsgUnpackRequest;
    else if (operation == Operation::Copy && kind == Kind::FtpFolder)
        what = kMsgFtpDownload;
    else if (operation == Operation::Copy && kind == Kind::SftpFolder)
        what = kMsgSftpDownload;
    platform::Message request(what);
    request.AddString("TypeOfCopy", types[int(operation)]);
    if (kind == Kind::Archive) {
        request.AddString("Archive", "/a/bundle.zip");
        request.AddString("CopyFrom", "");
        request.AddString("ZipFile", "m.txt");
    } else if (kind == Kind::FtpFolder || kind == Kind::SftpFolder) {
        request.AddString("FtpPath", "/src");
        request.AddString("FtpFile", "f.txt");
    } else {
        entry_ref ref;
        ref.path = "/a/f.txt";
        request.AddRef("refs", ref);
    }
    request.AddString("From", "/a");
    return request;
}

const char *StageName(TransferPlan::Stage stage)
{
    return stage == TransferPlan::Stage::Fetched ? "fetched" : "packed";
}

// "Title: step; step": each step as what it does, "(stage)" when it takes
// a stage's entries, and ">" where it writes.
std::string Describe(const TransferPlan &plan)
{
    if (plan.Refused())
        return "refused [" + plan.refusal->title + "] " + plan.refusal->text;
    std::string text = plan.title + ":";
    for (const TransferPlan::Step &step : plan.steps) {
        std::string type;
        step.request.FindString("TypeOfCopy", &type);
        switch (step.request.what) {
        case kMsgFtpDownload:
            text += " download";
            break;
        case kMsgSftpDownload:
            text += " sftp-download";
            break;
        case kMsgSftpUpload:
            text += " sftp-upload";
            break;
        case kMsgPackRequest:
            text += " pack";
            break;
        case kMsgUnpackRequest:
            text += " unpack";
            break;
        case kMsgCopyRequest:
            text += step.request.HasField("Session") ? " upload"
                    : type == "Move"                 ? " move"
                    : type == "Link"                 ? " link"
                                                     : " copy";
            break;
        default:
            text += " ?";
        }
        if (step.takes != TransferPlan::Stage::None)
            text += std::string("(") + StageName(step.takes) + ")";
        text += ">";
        text += step.into != TransferPlan::Stage::None ? StageName(step.into) : step.destination;
        text += ";";
    }
    return text;
}

struct Pairing
{
    Kind from;
    Kind to;
    Operation operation;
    std::string expected;
};

std::string Refused(const std::string &title, const std::string &text)
{
    return "refused [" + title + "] " + text;
}

} // namespace

TEST(TransferPlanner, DecidesEveryPairingOfPlacesAndOperations)
{
    std::vector<Pairing> rows = {
        {Kind::Folder, Kind::Folder, Operation::Copy, "Copy: copy>/dst;"},
        {Kind::Folder, Kind::Folder, Operation::Move, "Copy: move>/dst;"},
        {Kind::Folder, Kind::Folder, Operation::Link, "Copy: link>/dst;"},
        {Kind::Folder, Kind::Folder, Operation::Pack, "Packing: pack>/dst;"},
        {Kind::Folder, Kind::Folder, Operation::Unpack, Refused("Unpacking", kUnpack)},
        {Kind::Folder, Kind::FtpFolder, Operation::Copy, "Upload: upload>/pub;"},
        {Kind::Folder, Kind::FtpFolder, Operation::Move, Refused("Move", kMoveToServer)},
        {Kind::Folder, Kind::FtpFolder, Operation::Link, Refused("Link", kLink)},
        {Kind::Folder,
         Kind::FtpFolder,
         Operation::Pack,
         "Packing: pack>packed; upload(packed)>/pub;"},
        {Kind::Folder, Kind::FtpFolder, Operation::Unpack, Refused("Unpacking", kUnpack)},

        {Kind::Archive, Kind::Folder, Operation::Copy, "Unpacking: unpack>/dst;"},
        {Kind::Archive, Kind::Folder, Operation::Move, Refused("Move", kMoveFromArchive)},
        {Kind::Archive, Kind::Folder, Operation::Link, Refused("Link", kLink)},
        {Kind::Archive,
         Kind::Folder,
         Operation::Pack,
         "Packing: unpack>fetched; pack(fetched)>/dst;"},
        {Kind::Archive, Kind::Folder, Operation::Unpack, "Unpacking: unpack>/dst;"},
        {Kind::Archive,
         Kind::FtpFolder,
         Operation::Copy,
         "Unpacking: unpack>fetched; upload(fetched)>/pub;"},
        {Kind::Archive, Kind::FtpFolder, Operation::Move, Refused("Move", kMoveFromArchive)},
        {Kind::Archive, Kind::FtpFolder, Operation::Link, Refused("Link", kLink)},
        {Kind::Archive,
         Kind::FtpFolder,
         Operation::Pack,
         "Packing: unpack>fetched; pack(fetched)>packed; upload(packed)>/pub;"},
        {Kind::Archive,
         Kind::FtpFolder,
         Operation::Unpack,
         "Unpacking: unpack>fetched; upload(fetched)>/pub;"},

        {Kind::FtpFolder, Kind::Folder, Operation::Copy, "Download: download>/dst;"},
        {Kind::FtpFolder, Kind::Folder, Operation::Move, Refused("Move", kMoveFromServer)},
        {Kind::FtpFolder, Kind::Folder, Operation::Link, Refused("Link", kLink)},
        {Kind::FtpFolder,
         Kind::Folder,
         Operation::Pack,
         "Packing: download>fetched; pack(fetched)>/dst;"},
        {Kind::FtpFolder, Kind::Folder, Operation::Unpack, Refused("Unpacking", kUnpack)},
    };
    const Operation operations[] = {Operation::Copy,
                                    Operation::Move,
                                    Operation::Link,
                                    Operation::Pack,
                                    Operation::Unpack};
    // Query results hold entries on disk: out of them is as out of a folder.
    const size_t folderRows = 10;
    for (size_t i = 0; i < folderRows; i++) {
        Pairing row = rows[i];
        row.from = Kind::QueryResults;
        rows.push_back(row);
    }
    // An SFTP folder plans as an FTP folder does, with requests of its own.
    const auto sftp = [](std::string text) {
        if (text.starts_with("refused"))
            return text;
        for (const char *verb : {" download", " upload"}) {
            const std::string from = verb;
            const std::string to = " sftp-" + from.substr(1);
            for (size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + 1))
                text.replace(at, from.size(), to);
        }
        return text;
    };
    for (size_t i = 0, count = rows.size(); i < count; i++) {
        Pairing row = rows[i];
        if (row.from != Kind::FtpFolder && row.to != Kind::FtpFolder)
            continue;
        row.from = row.from == Kind::FtpFolder ? Kind::SftpFolder : row.from;
        row.to = row.to == Kind::FtpFolder ? Kind::SftpFolder : row.to;
        row.expected = sftp(row.expected);
        rows.push_back(row);
    }
    const Kind kinds[] = {Kind::Folder,
                          Kind::QueryResults,
                          Kind::FtpFolder,
                          Kind::Archive,
                          Kind::SftpFolder};
    for (Operation operation : operations) {
        for (Kind from : {Kind::FtpFolder, Kind::SftpFolder})
            for (Kind to : {Kind::FtpFolder, Kind::SftpFolder})
                rows.push_back({from, to, operation, Refused("Foo", kServerToServer)});
        for (Kind from : kinds) {
            rows.push_back({from, Kind::QueryResults, operation, Refused("foo", kQueryRefusal)});
            rows.push_back({from, Kind::Archive, operation, Refused("foo", kArchiveRefusal)});
        }
    }
    ASSERT_EQ(rows.size(), 5u * 5u * 5u);
    for (const Pairing &row : rows) {
        const auto server = [](Kind kind) {
            return kind == Kind::FtpFolder || kind == Kind::SftpFolder;
        };
        const TransferPlan plan = TransferPlanner::Plan(RequestOf(row.from, row.operation),
                                                        PlaceOf(row.from,
                                                                server(row.from) ? "/src" : "/a"),
                                                        PlaceOf(row.to,
                                                                server(row.to) ? "/pub" : "/dst"));
        EXPECT_EQ(Describe(plan), row.expected) << "from " << int(row.from) << " to " << int(row.to)
                                                << ", operation " << int(row.operation);
    }
}

TEST(TransferPlanner, StepsCarryTheTargetServerAndNameTheirZip)
{
    // An upload goes to the target pane's server and folder.
    TransferPlan plan = TransferPlanner::Plan(RequestOf(Kind::Folder, Operation::Pack),
                                              PlaceOf(Kind::Folder, "/a"),
                                              PlaceOf(Kind::FtpFolder, "/pub"));
    ASSERT_EQ(plan.steps.size(), 2u);
    const platform::Message &upload = plan.steps[1].request;
    std::string text;
    int32_t port = 0;
    EXPECT_EQ(upload.FindString("Session", &text), B_OK);
    EXPECT_EQ(text, "target");
    EXPECT_EQ(upload.FindString("FtpPath", &text), B_OK);
    EXPECT_EQ(text, "/pub");
    EXPECT_EQ(upload.FindString("Password", &text), B_OK);
    EXPECT_EQ(text, "guest@");
    EXPECT_EQ(upload.FindInt32("Port", &port), B_OK);
    EXPECT_EQ(port, 2121);
    EXPECT_FALSE(upload.HasField("refs")) << "the packed zip is found when the step starts";

    // Files fetched to be packed: a zip of several is named after the
    // folder they came from, on the server or in the archive.
    plan = TransferPlanner::Plan(RequestOf(Kind::FtpFolder, Operation::Pack),
                                 PlaceOf(Kind::FtpFolder, "/src"),
                                 PlaceOf(Kind::Folder, "/dst"));
    ASSERT_EQ(plan.steps.size(), 2u);
    EXPECT_EQ(plan.steps[1].request.FindString("From", &text), B_OK);
    EXPECT_EQ(text, "/src");
    platform::Message members = RequestOf(Kind::Archive, Operation::Pack);
    plan = TransferPlanner::Plan(members,
                                 PlaceOf(Kind::Archive, "/a"),
                                 PlaceOf(Kind::Folder, "/dst"));
    ASSERT_EQ(plan.steps.size(), 2u);
    EXPECT_EQ(plan.steps[0].request.what, kMsgUnpackRequest);
    EXPECT_EQ(plan.steps[1].request.FindString("From", &text), B_OK);
    EXPECT_EQ(text, "/a/bundle");
    members.ReplaceString("CopyFrom", 0, "docs/old/");
    plan = TransferPlanner::Plan(members,
                                 PlaceOf(Kind::Archive, "/a"),
                                 PlaceOf(Kind::Folder, "/dst"));
    EXPECT_EQ(plan.steps[1].request.FindString("From", &text), B_OK);
    EXPECT_EQ(text, "/a/bundle.zip/docs/old");
}

TEST(TransferPlanner, TheRootRefusesAndADropLandsInItsFolder)
{
    const std::string root = Refused("Warning",
                                     "Sorry can't copy files or folders to the root of the file "
                                     "system!");
    for (Kind from : {Kind::Folder, Kind::FtpFolder, Kind::Archive}) {
        EXPECT_EQ(Describe(TransferPlanner::Plan(RequestOf(from, Operation::Pack),
                                                 PlaceOf(from, "/a"),
                                                 PlaceOf(Kind::Folder, "/"))),
                  root);
    }
    // The root of a server is a folder like any other.
    EXPECT_EQ(Describe(TransferPlanner::Plan(RequestOf(Kind::Folder, Operation::Copy),
                                             PlaceOf(Kind::Folder, "/a"),
                                             PlaceOf(Kind::FtpFolder, "/"))),
              "Upload: upload>/;");

    platform::Message drop = RequestOf(Kind::Folder, Operation::Move);
    drop.AddString("DropFolder", "/dst/inner");
    EXPECT_EQ(Describe(TransferPlanner::Plan(drop,
                                             PlaceOf(Kind::Folder, "/a"),
                                             PlaceOf(Kind::Folder, "/dst"))),
              "Copy: move>/dst/inner;");
    drop.ReplaceString("DropFolder", 0, "/");
    EXPECT_EQ(Describe(TransferPlanner::Plan(drop,
                                             PlaceOf(Kind::Folder, "/a"),
                                             PlaceOf(Kind::Folder, "/dst"))),
              root);
}
