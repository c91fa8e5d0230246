#pragma once

#include "ftp/FtpRequest.h"
#include "panes/PaneSource.h"

#include <memory>

namespace kestrin {

class FtpConversation;

// A folder on an FTP server (mode 1102), read through the pane's
// conversation, which every place of the same connection shares: each place
// is the step that leads to it (log in, enter a folder, up, make, delete)
// from the folder before, and lists again without repeating it once it is
// reached. Rows are no local entries: F5 asks for a download, nothing is
// viewed, edited or dragged out, and names holding "/" or made of dots are
// shown but never fetched.
class FtpSource : public PaneSource
{
public:
    // `localFolder` is where the pane stood before: the local folder of the
    // place when the session names none.
    FtpSource(std::shared_ptr<FtpConversation> conversation,
              const std::string &localFolder,
              FtpRequest step = {});
    // A new conversation with the session stored in `sessionFile`
    // ("<name>.ftp"), at its remote folder once listed.
    static std::unique_ptr<PaneSource> Connect(const std::string &sessionFile,
                                               const std::string &localFolder);
    // The place a profile's saved text names when it is a stored session's
    // name (SavedPlace), or such a name with a remote folder
    // (RecalledPlace); null for anything else.
    static std::unique_ptr<PaneSource> FromSaved(const std::string &saved,
                                                 const std::string &localFolder);

    int32_t Mode() const override;
    // The session's local folder, else the one the pane stood in.
    const std::string &Folder() const override { return fLocalFolder; }
    std::string HeaderText() const override;
    // That the connection goes in clear where the server refused TLS.
    std::string HeaderNote() const override;
    std::string SavedPlace() const override;
    // The remote folder: a path typed in its place is one on the same server.
    std::string PathText() const override { return RemoteFolder(); }
    // An absolute or relative remote path, or an ftp:// address on the
    // session's server; a local path or another server is refused.
    std::unique_ptr<PaneSource> TypedPath(const std::string &typed,
                                          std::optional<platform::Alert> *refusal) const override;
    // The session and its remote folder (PlaceText::ServerPlace).
    std::string RecalledPlace() const override;
    // A folder of the same session, through this conversation.
    std::unique_ptr<PaneSource> Recall(const std::string &recalled) const override;

    FolderLister::Reader Reader(const RowStyle &style) const override;
    std::shared_ptr<FolderLister::Job> StartReading(const RowStyle &style,
                                                    QObject *context,
                                                    FolderLister::Done done) const override;
    // A connection that failed, or a typed path the server did not enter,
    // is told in an alert.
    void Listed(const FolderLister::Job &job) override;
    // The conversation's log lines and its changes of status.
    void Follow(QObject *context,
                std::function<void(const std::string &line)> logLine,
                std::function<void()> changed) const override;

    std::string PathOf(const DirListItem &row) const override;
    entry_ref RefOf(const DirListItem &row) const override;

    std::unique_ptr<PaneSource> Parent(std::string *selectAfter) const override;
    Opening Open(const DirListItem &row) const override;

    bool HoldsLocalEntries() const override { return false; }
    bool IsRemote() const override { return true; }
    // The server's folder, with the session that reaches it.
    TransferPlace Place() const override;
    bool ListsAgainAfterTransfers() const override { return true; }
    std::unique_ptr<PaneSource> WithNewFolder(const std::string &name) const override;
    std::unique_ptr<PaneSource> WithoutRows(
        const std::vector<const DirListItem *> &rows) const override;
    CopyOut CopyRequest() const override;
    // The download of the row, for the viewer to show once it has come.
    std::optional<platform::Message> ViewRequest(const DirListItem &row) const override;
    std::optional<platform::Alert> EditRefusal() const override;
    // A request of these rows (a download with F5): the server's fields,
    // an "FtpFile" or "FtpDir" for each. Rows whose names cannot be local
    // names are refused with an alert.
    platform::Message Request(uint32_t what,
                              const std::vector<const DirListItem *> &rows) const override;

    // The remote folder, once the place has been listed.
    const std::string &RemoteFolder() const;
    const FtpConversation &Conversation() const { return *fConversation; }

    // What an FTP and an SFTP place share.
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

private:
    // What a listing of the place found, shared with the listing in flight.
    struct Reached
    {
        bool done = false;
        std::string folder;
        // The first listing told what came of a typed path.
        bool told = false;
    };

    std::unique_ptr<PaneSource> Next(FtpRequest step) const;

    std::shared_ptr<FtpConversation> fConversation;
    std::string fLocalFolder;
    FtpRequest fStep;
    std::shared_ptr<Reached> fReached;
};

} // namespace kestrin
