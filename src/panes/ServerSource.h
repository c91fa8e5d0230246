#pragma once

#include "panes/PaneSource.h"

#include <QPointer>
#include <memory>
#include <optional>
#include <string>

namespace kestrin {

class ServerConversation;
struct FtpSession;

// What a folder on a server (FTP, SFTP) is in a pane, whatever the
// protocol: read through the pane's conversation, which every place of the
// same connection shares, each place being the step that leads to it from
// the folder before; it lists again without repeating the step once it is
// reached. Rows are no local entries: F5 asks for a download, F3 views a
// downloaded copy, and names holding "/" or made of dots are shown but never
// fetched. A kind's source keeps its steps and the rows of its listings.
class ServerSource : public PaneSource
{
public:
    // Moves as an FTP pane's does: the messages know no other server mode.
    int32_t Mode() const override;
    // The session's local folder, else the one the pane stood in.
    const std::string &Folder() const override { return fLocalFolder; }
    std::string HeaderText() const override;
    // An FTP session's name, an SFTP session's file name: the profile keeps
    // either, and the file says which kind it is.
    std::string SavedPlace() const override;
    // The remote folder: a path typed in its place is one on the same server.
    std::string PathText() const override { return RemoteFolder(); }
    // The session and its remote folder (PlaceText::ServerPlace).
    std::string RecalledPlace() const override;
    // A folder of the same session, through this conversation.
    std::unique_ptr<PaneSource> Recall(const std::string &recalled) const override;

    FolderLister::Reader Reader(const RowStyle &style) const override;
    // The conversation's log lines and its changes of status.
    void Follow(QObject *context,
                std::function<void(const std::string &line)> logLine,
                std::function<void()> changed) const override;
    // The conversation.
    const void *Connection() const override { return fConversation.get(); }

    std::string PathOf(const DirListItem &row) const override;
    entry_ref RefOf(const DirListItem &row) const override;
    std::unique_ptr<PaneSource> Parent(std::string *selectAfter) const override;

    bool HoldsLocalEntries() const override { return false; }
    bool IsRemote() const override { return true; }
    // The server's folder, with the session that reaches it.
    TransferPlace Place() const override;
    bool ListsAgainAfterTransfers() const override { return true; }
    // The download of the row, for the viewer to show once it has come.
    std::optional<platform::Message> ViewRequest(const DirListItem &row) const override;
    // A request of these rows (a download with F5): the server's fields,
    // an "FtpFile" or "FtpDir" for each. Rows whose names cannot be local
    // names are refused with an alert.
    platform::Message Request(uint32_t what,
                              const std::vector<const DirListItem *> &rows) const override;

    // The remote folder, once the place has been listed.
    const std::string &RemoteFolder() const;
    const FtpSession &Session() const;

    // The session's local folder, else `standing`.
    static std::string LocalFolderOf(const FtpSession &session, const std::string &standing);
    // A request of rows of the server's `folder`: the server's fields
    // ("Session", "Host", "User", "Password", "FtpPath", "Port") and an
    // "FtpFile" or "FtpDir" for each row. Rows whose names cannot be local
    // names are refused with an alert; code 0 when none is left.
    static platform::Message RowsRequest(uint32_t what,
                                         const FtpSession &session,
                                         const std::string &folder,
                                         const std::vector<const DirListItem *> &rows);
    // The absolute remote path a path typed in a pane on `folder` of
    // `session` names: an absolute or relative path, or an address with
    // `scheme` ("ftp", "sftp") on the session's server. Empty, with a
    // refusal or none (nothing typed), for anything else.
    static std::string TypedRemotePath(const std::string &typed,
                                       const FtpSession &session,
                                       const std::string &folder,
                                       const std::string &scheme,
                                       std::optional<platform::Alert> *refusal);
    static platform::Alert PathRefusal(const std::string &text);

protected:
    // What a listing of the place found, shared with the listing in flight.
    struct Reached
    {
        bool done = false;
        std::string folder;
        // The first listing told what came of a typed path.
        bool told = false;
    };

    // `base`: the remote folder the place's step starts from.
    ServerSource(std::shared_ptr<ServerConversation> conversation,
                 const std::string &localFolder,
                 std::string base);

    // The parent folder, and the folder `folder` of the same connection.
    virtual std::unique_ptr<PaneSource> Up() const = 0;
    virtual std::unique_ptr<PaneSource> StayAt(const std::string &folder) const = 0;
    virtual TransferPlace::Kind PlaceKind() const = 0;

    // A connection that failed is told in an alert: true when it was.
    static bool ToldProblem(const FolderLister::Job &job);

    // Submits `request` to `conversation`; `makeRows` makes the rows of its
    // answer on the worker, and the folder it reached is this place's.
    template<typename Conversation, typename Request, typename Result>
    std::shared_ptr<FolderLister::Job> Read(Conversation &conversation,
                                            Request request,
                                            const RowStyle &style,
                                            QObject *context,
                                            FolderLister::Done done,
                                            void (*makeRows)(Result &,
                                                             const RowStyle &,
                                                             FolderLister::Job &)) const
    {
        auto job = std::make_shared<FolderLister::Job>();
        QPointer<QObject> guard(context);
        conversation.Submit(
            std::move(request),
            [job, style, makeRows](Result &result) {
                FolderLister::Run([&result, &style, makeRows](
                                      FolderLister::Job &into) { makeRows(result, style, into); },
                                  style,
                                  *job);
            },
            [job, guard, done = std::move(done), reached = fReached](Result &result) {
                // After a lost connection the place is the folder listed last.
                if (result.ReachedFolder()) {
                    reached->done = true;
                    reached->folder = result.folder;
                }
                if (!job->cancel && guard)
                    done(job);
            });
        return job;
    }

    const ServerConversation &Talk() const { return *fConversation; }
    const std::shared_ptr<Reached> &Found() const { return fReached; }
    const std::string &Base() const { return fBase; }

private:
    std::shared_ptr<ServerConversation> fConversation;
    std::string fLocalFolder;
    std::string fBase;
    std::shared_ptr<Reached> fReached;
};

} // namespace kestrin
