// Every pairing of the five kinds of place and the five operations, as the
// planner decides it: the steps of the plan, or the refusal's exact text.

#include "fileops/FileOpsMessages.h"
#include "fileops/TransferPlanner.h"

#include <gtest/gtest.h>
#include <map>
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

bool OnAServer(Kind kind)
{
    return kind == Kind::FtpFolder || kind == Kind::SftpFolder;
}

TransferPlace PlaceOf(Kind kind, const std::string &folder)
{
    if (OnAServer(kind))
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
    const std::map<uint32_t, std::string> verbs = {{kMsgFtpDownload, "download"},
                                                   {kMsgSftpDownload, "sftp-download"},
                                                   {kMsgSftpUpload, "sftp-upload"},
                                                   {kMsgPackRequest, "pack"},
                                                   {kMsgUnpackRequest, "unpack"}};
    std::string text = plan.title + ":";
    for (const TransferPlan::Step &step : plan.steps) {
        std::string type;
        step.request.FindString("TypeOfCopy", &type);
        const auto verb = verbs.find(step.request.what);
        if (verb != verbs.end())
            text += " " + verb->second;
        else if (step.request.what == kMsgCopyRequest)
            text += step.request.HasField("Session") ? " upload"
                    : type == "Move"                 ? " move"
                    : type == "Link"                 ? " link"
                                                     : " copy";
        else
            text += " ?";
        if (step.takes != TransferPlan::Stage::None)
            text += std::string("(") + StageName(step.takes) + ")";
        text += ">";
        text += step.into != TransferPlan::Stage::None ? StageName(step.into) : step.destination;
        text += ";";
    }
    return text;
}

// The plan of `request` from `fromFolder` in a place of kind `from`, described.
std::string PlanText(const platform::Message &request,
                     Kind from,
                     const std::string &fromFolder,
                     Kind to,
                     const std::string &toFolder)
{
    return Describe(
        TransferPlanner::Plan(request, PlaceOf(from, fromFolder), PlaceOf(to, toFolder)));
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
    using enum kestrin::TransferPlace::Kind;
    using enum kestrin::TransferPlanner::Operation;
    std::vector<Pairing> rows = {
        {Folder, Folder, Copy, "Copy: copy>/dst;"},
        {Folder, Folder, Move, "Copy: move>/dst;"},
        {Folder, Folder, Link, "Copy: link>/dst;"},
        {Folder, Folder, Pack, "Packing: pack>/dst;"},
        {Folder, Folder, Unpack, Refused("Unpacking", kUnpack)},
        {Folder, FtpFolder, Copy, "Upload: upload>/pub;"},
        {Folder, FtpFolder, Move, Refused("Move", kMoveToServer)},
        {Folder, FtpFolder, Link, Refused("Link", kLink)},
        {Folder, FtpFolder, Pack, "Packing: pack>packed; upload(packed)>/pub;"},
        {Folder, FtpFolder, Unpack, Refused("Unpacking", kUnpack)},

        {Archive, Folder, Copy, "Unpacking: unpack>/dst;"},
        {Archive, Folder, Move, Refused("Move", kMoveFromArchive)},
        {Archive, Folder, Link, Refused("Link", kLink)},
        {Archive, Folder, Pack, "Packing: unpack>fetched; pack(fetched)>/dst;"},
        {Archive, Folder, Unpack, "Unpacking: unpack>/dst;"},
        {Archive, FtpFolder, Copy, "Unpacking: unpack>fetched; upload(fetched)>/pub;"},
        {Archive, FtpFolder, Move, Refused("Move", kMoveFromArchive)},
        {Archive, FtpFolder, Link, Refused("Link", kLink)},
        {Archive,
         FtpFolder,
         Pack,
         "Packing: unpack>fetched; pack(fetched)>packed; upload(packed)>/pub;"},
        {Archive, FtpFolder, Unpack, "Unpacking: unpack>fetched; upload(fetched)>/pub;"},

        {FtpFolder, Folder, Copy, "Download: download>/dst;"},
        {FtpFolder, Folder, Move, Refused("Move", kMoveFromServer)},
        {FtpFolder, Folder, Link, Refused("Link", kLink)},
        {FtpFolder, Folder, Pack, "Packing: download>fetched; pack(fetched)>/dst;"},
        {FtpFolder, Folder, Unpack, Refused("Unpacking", kUnpack)},
    };
    // Query results hold entries on disk: out of them is as out of a folder.
    for (size_t i = 0; i < 10; i++)
        rows.push_back({QueryResults, rows[i].to, rows[i].operation, rows[i].expected});
    // An SFTP folder plans as an FTP folder does, with requests of its own.
    const auto sftp = [](std::string text) {
        for (const char *verb : {" download", " upload"}) {
            const std::string from = verb;
            const std::string to = " sftp-" + from.substr(1);
            for (size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + 1))
                text.replace(at, from.size(), to);
        }
        return text;
    };
    for (size_t i = 0, count = rows.size(); i < count; i++) {
        const Pairing row = rows[i];
        if (row.from == FtpFolder || row.to == FtpFolder)
            rows.push_back(
                {row.from == FtpFolder ? SftpFolder : row.from,
                 row.to == FtpFolder ? SftpFolder : row.to,
                 row.operation,
                 row.expected.starts_with("refused") ? row.expected : sftp(row.expected)});
    }
    for (Operation operation : {Copy, Move, Link, Pack, Unpack}) {
        for (Kind from : {FtpFolder, SftpFolder})
            for (Kind to : {FtpFolder, SftpFolder})
                rows.push_back({from, to, operation, Refused("Foo", kServerToServer)});
        for (Kind from : {Folder, QueryResults, FtpFolder, Archive, SftpFolder}) {
            rows.push_back({from, QueryResults, operation, Refused("foo", kQueryRefusal)});
            rows.push_back({from, Archive, operation, Refused("foo", kArchiveRefusal)});
        }
    }
    ASSERT_EQ(rows.size(), 5u * 5u * 5u);
    for (const Pairing &row : rows) {
        EXPECT_EQ(PlanText(RequestOf(row.from, row.operation),
                           row.from,
                           OnAServer(row.from) ? "/src" : "/a",
                           row.to,
                           OnAServer(row.to) ? "/pub" : "/dst"),
                  row.expected)
            << "from " << int(row.from) << " to " << int(row.to) << ", operation "
            << int(row.operation);
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
    for (const auto &[field, value] :
         {std::pair{"Session", "target"}, {"FtpPath", "/pub"}, {"Password", "guest@"}}) {
        EXPECT_EQ(upload.FindString(field, &text), B_OK) << field;
        EXPECT_EQ(text, value);
    }
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
    for (Kind from : {Kind::Folder, Kind::FtpFolder, Kind::Archive})
        EXPECT_EQ(PlanText(RequestOf(from, Operation::Pack), from, "/a", Kind::Folder, "/"), root);
    // The root of a server is a folder like any other.
    EXPECT_EQ(PlanText(RequestOf(Kind::Folder, Operation::Copy),
                       Kind::Folder,
                       "/a",
                       Kind::FtpFolder,
                       "/"),
              "Upload: upload>/;");

    platform::Message drop = RequestOf(Kind::Folder, Operation::Move);
    drop.AddString("DropFolder", "/dst/inner");
    EXPECT_EQ(PlanText(drop, Kind::Folder, "/a", Kind::Folder, "/dst"), "Copy: move>/dst/inner;");
    drop.ReplaceString("DropFolder", 0, "/");
    EXPECT_EQ(PlanText(drop, Kind::Folder, "/a", Kind::Folder, "/dst"), root);
}
