#include "fileops/TransferPlanner.h"

#include "app/AppUtils.h"
#include "fileops/FileOpsMessages.h"
#include "platform/PathNames.h"

#include <algorithm>
#include <iterator>

namespace kestrin {

namespace {

using Kind = TransferPlace::Kind;
using Operation = TransferPlanner::Operation;
using Stage = TransferPlan::Stage;

// Where the rows come from, as far as moving their bytes goes: entries on
// disk (a folder or query results), members of an archive, or files on a
// server.
enum class Origin { Entries, Archive, Server };

enum class Route {
    Copy,                // the engine copies, moves or links the entries
    Pack,                // packed into a zip in the target folder
    Unpack,              // members written into the target folder
    Download,            // fetched from the server into the target folder
    Upload,              // sent to the server's folder
    PackAndUpload,       // packed in the work folder, the zip sent
    UnpackAndUpload,     // unpacked in the work folder, then sent
    UnpackAndPack,       // unpacked in the work folder, then packed into the target
    UnpackPackAndUpload, // unpacked and packed in the work folder, the zip sent
    DownloadAndPack,     // fetched into the work folder, then packed into the target
    RefuseServerToServer,
    RefuseMoveFromServer,
    RefuseMoveToServer,
    RefuseMoveFromArchive,
    RefuseLink,
    RefuseUnpack,
};

struct Pairing
{
    Origin origin;
    bool toServer; // else into a local folder
    Operation operation;
    Route route;
};

// Every pairing whose target can take entries. Query results and an
// archive's contents take none, and the root of the file system is refused,
// before this table is asked.
constexpr Pairing kPairings[] = {
    {Origin::Entries, false, Operation::Copy, Route::Copy},
    {Origin::Entries, false, Operation::Move, Route::Copy},
    {Origin::Entries, false, Operation::Link, Route::Copy},
    {Origin::Entries, false, Operation::Pack, Route::Pack},
    {Origin::Entries, false, Operation::Unpack, Route::RefuseUnpack},

    // A move would delete the originals on the word of a server; a link
    // cannot point from a server to this machine.
    {Origin::Entries, true, Operation::Copy, Route::Upload},
    {Origin::Entries, true, Operation::Move, Route::RefuseMoveToServer},
    {Origin::Entries, true, Operation::Link, Route::RefuseLink},
    {Origin::Entries, true, Operation::Pack, Route::PackAndUpload},
    {Origin::Entries, true, Operation::Unpack, Route::RefuseUnpack},

    // The archive is only read: its members are copied out, never moved.
    {Origin::Archive, false, Operation::Copy, Route::Unpack},
    {Origin::Archive, false, Operation::Move, Route::RefuseMoveFromArchive},
    {Origin::Archive, false, Operation::Link, Route::RefuseLink},
    {Origin::Archive, false, Operation::Pack, Route::UnpackAndPack},
    {Origin::Archive, false, Operation::Unpack, Route::Unpack},

    {Origin::Archive, true, Operation::Copy, Route::UnpackAndUpload},
    {Origin::Archive, true, Operation::Move, Route::RefuseMoveFromArchive},
    {Origin::Archive, true, Operation::Link, Route::RefuseLink},
    {Origin::Archive, true, Operation::Pack, Route::UnpackPackAndUpload},
    {Origin::Archive, true, Operation::Unpack, Route::UnpackAndUpload},

    {Origin::Server, false, Operation::Copy, Route::Download},
    {Origin::Server, false, Operation::Move, Route::RefuseMoveFromServer},
    {Origin::Server, false, Operation::Link, Route::RefuseLink},
    {Origin::Server, false, Operation::Pack, Route::DownloadAndPack},
    {Origin::Server, false, Operation::Unpack, Route::RefuseUnpack},

    {Origin::Server, true, Operation::Copy, Route::RefuseServerToServer},
    {Origin::Server, true, Operation::Move, Route::RefuseServerToServer},
    {Origin::Server, true, Operation::Link, Route::RefuseServerToServer},
    {Origin::Server, true, Operation::Pack, Route::RefuseServerToServer},
    {Origin::Server, true, Operation::Unpack, Route::RefuseServerToServer},
};

// What each kind of place is to a transfer: where its rows come from, whether
// it is a server, and the requests that fetch from it and send to it.
struct PlaceRow
{
    Kind kind;
    Origin origin;
    bool server;
    uint32_t download;
    uint32_t upload;
};

constexpr PlaceRow kPlaces[] = {
    {Kind::Folder, Origin::Entries, false, 0, 0},
    {Kind::QueryResults, Origin::Entries, false, 0, 0},
    {Kind::FtpFolder, Origin::Server, true, kMsgFtpDownload, kMsgCopyRequest},
    {Kind::Archive, Origin::Archive, false, 0, 0},
    {Kind::SftpFolder, Origin::Server, true, kMsgSftpDownload, kMsgSftpUpload},
};

const PlaceRow &PlaceOf(Kind kind)
{
    const auto row = std::find_if(std::begin(kPlaces),
                                  std::end(kPlaces),
                                  [&](const PlaceRow &each) { return each.kind == kind; });
    return row != std::end(kPlaces) ? *row : kPlaces[0];
}

platform::Alert Refusal(Route route)
{
    switch (route) {
    case Route::RefuseServerToServer:
        return {"Foo",
                "Transferring from one Ftp server to another is not supported(Yet...we will "
                "support this.",
                {"OK"}};
    case Route::RefuseMoveFromServer:
        return {"Move",
                "Files on an FTP server are not moved from here: copy them with F5, then "
                "delete them on the server.",
                {"OK"},
                B_WARNING_ALERT};
    case Route::RefuseMoveToServer:
        return {"Move",
                "Files are not moved to an FTP server: upload them with F5, then delete them "
                "here once they have arrived.",
                {"OK"},
                B_WARNING_ALERT};
    case Route::RefuseMoveFromArchive:
        return {"Move",
                "Members of an archive are not moved out of it: the archive stays as it is. "
                "Unpack them with F5.",
                {"OK"},
                B_WARNING_ALERT};
    case Route::RefuseLink:
        return {"Link", "Links are made between local folders only.", {"OK"}, B_WARNING_ALERT};
    default:
        return {"Unpacking",
                "Only the members of an archive can be unpacked: open the archive with Return, "
                "then unpack them with F5.",
                {"OK"},
                B_WARNING_ALERT};
    }
}

// Why `to` takes nothing, whatever comes; nothing when it may.
std::optional<platform::Alert> TargetRefusal(const TransferPlace &to, const std::string &folder)
{
    if (to.kind == Kind::QueryResults)
        return MsgBoxAlert("This view contains Query Results. You cannot copy or move to it.");
    if (to.kind == Kind::Archive)
        return MsgBoxAlert(
            "This view shows the contents of an archive. You cannot copy or move to it.");
    // The root of a server is a folder like any other.
    if (to.kind == Kind::Folder && folder == "/")
        return platform::Alert{"Warning",
                               "Sorry can't copy files or folders to the root of the file system!",
                               {"OK"}};
    return std::nullopt;
}

platform::Message Retyped(platform::Message request, uint32_t what)
{
    request.what = what;
    return request;
}

// An upload of `request`'s "refs" (or of a stage's entries) to `to`'s folder.
platform::Message UploadTo(const TransferPlace &to, platform::Message request)
{
    const FtpSession session = to.server.value_or(FtpSession{});
    request.what = PlaceOf(to.kind).upload;
    request.AddString("Session", session.name);
    request.AddString("Host", session.host);
    request.AddString("User", session.user);
    request.AddString("Password", session.pass);
    request.AddString("FtpPath", to.folder);
    request.AddInt32("Port", int32_t(session.PortNumber()));
    return request;
}

platform::Message StagedUpload(const TransferPlace &to)
{
    platform::Message request(PlaceOf(to.kind).upload);
    request.AddString("TypeOfCopy", "Copy");
    return UploadTo(to, std::move(request));
}

// A pack of a stage's entries; a zip of several is named after `namedFor`.
platform::Message StagedPack(const std::string &namedFor)
{
    platform::Message request(kMsgPackRequest);
    request.AddString("TypeOfCopy", "Pack");
    request.AddString("From", namedFor);
    return request;
}

// What a zip of members of an archive is named after when there are
// several: the folder inside the archive, or the archive without its
// extension.
std::string ArchiveNaming(const platform::Message &request)
{
    std::string archive, inside;
    request.FindString("Archive", &archive);
    request.FindString("CopyFrom", &inside);
    while (!inside.empty() && inside.back() == '/')
        inside.pop_back();
    if (!inside.empty())
        return platform::JoinPath(archive, inside);
    const size_t dot = archive.rfind('.');
    const size_t slash = archive.rfind('/');
    return dot != std::string::npos && (slash == std::string::npos || dot > slash + 1)
               ? archive.substr(0, dot)
               : archive;
}

const char *TitleOf(Route route)
{
    switch (route) {
    case Route::Copy:
        return "Copy";
    case Route::Download:
        return "Download";
    case Route::Upload:
        return "Upload";
    case Route::Unpack:
    case Route::UnpackAndUpload:
        return "Unpacking";
    default:
        return "Packing";
    }
}

std::vector<TransferPlan::Step> StepsOf(Route route,
                                        const platform::Message &request,
                                        const TransferPlace &from,
                                        const TransferPlace &to,
                                        const std::string &target)
{
    using Step = TransferPlan::Step;
    const platform::Message unpack = Retyped(request, kMsgUnpackRequest);
    const platform::Message download = Retyped(request, PlaceOf(from.kind).download);
    switch (route) {
    case Route::Copy:
        return {Step{request, target}};
    case Route::Pack:
        return {Step{Retyped(request, kMsgPackRequest), target}};
    case Route::Unpack:
        return {Step{unpack, target}};
    case Route::Download:
        return {Step{download, target}};
    case Route::Upload:
        return {Step{UploadTo(to, request), target}};
    case Route::PackAndUpload:
        return {Step{Retyped(request, kMsgPackRequest), {}, Stage::Packed},
                Step{StagedUpload(to), target, Stage::None, Stage::Packed}};
    case Route::UnpackAndUpload:
        return {Step{unpack, {}, Stage::Fetched},
                Step{StagedUpload(to), target, Stage::None, Stage::Fetched}};
    case Route::UnpackAndPack:
        return {Step{unpack, {}, Stage::Fetched},
                Step{StagedPack(ArchiveNaming(request)), target, Stage::None, Stage::Fetched}};
    case Route::UnpackPackAndUpload:
        return {Step{unpack, {}, Stage::Fetched},
                Step{StagedPack(ArchiveNaming(request)), {}, Stage::Packed, Stage::Fetched},
                Step{StagedUpload(to), target, Stage::None, Stage::Packed}};
    case Route::DownloadAndPack:
        return {Step{download, {}, Stage::Fetched},
                Step{StagedPack(from.folder), target, Stage::None, Stage::Fetched}};
    default:
        return {};
    }
}

} // namespace

TransferPlanner::Operation TransferPlanner::OperationOf(const platform::Message &request)
{
    std::string type;
    if (request.FindString("TypeOfCopy", &type) == B_OK) {
        if (type == "Move")
            return Operation::Move;
        if (type == "Link")
            return Operation::Link;
        if (type == "Pack")
            return Operation::Pack;
        if (type == "UnPack")
            return Operation::Unpack;
        if (type == "Copy")
            return Operation::Copy;
    }
    if (request.what == kMsgPackRequest)
        return Operation::Pack;
    if (request.what == kMsgUnpackRequest)
        return Operation::Unpack;
    return Operation::Copy;
}

TransferPlan TransferPlanner::Plan(const platform::Message &request,
                                   const TransferPlace &from,
                                   const TransferPlace &to)
{
    TransferPlan plan;
    plan.destination = to.folder;
    // A drop onto a folder row lands in that folder.
    if (std::string dropFolder; to.kind == Kind::Folder
                                && request.FindString("DropFolder", &dropFolder) == B_OK
                                && !dropFolder.empty())
        plan.destination = dropFolder;
    if (std::optional<platform::Alert> refusal = TargetRefusal(to, plan.destination)) {
        plan.refusal = std::move(refusal);
        return plan;
    }
    const Origin origin = PlaceOf(from.kind).origin;
    const bool toServer = PlaceOf(to.kind).server;
    const Operation operation = OperationOf(request);
    const auto pairing = std::find_if(std::begin(kPairings),
                                      std::end(kPairings),
                                      [&](const Pairing &row) {
                                          return row.origin == origin && row.toServer == toServer
                                                 && row.operation == operation;
                                      });
    // The table covers every pairing; one missing would be refused.
    const Route route = pairing != std::end(kPairings) ? pairing->route : Route::RefuseUnpack;
    plan.steps = StepsOf(route, request, from, to, plan.destination);
    if (plan.steps.empty()) {
        plan.refusal = Refusal(route);
        return plan;
    }
    plan.title = TitleOf(route);
    return plan;
}

} // namespace kestrin
