#pragma once

#include "ftp/FtpRequest.h"
#include "panes/ServerSource.h"

#include <memory>

namespace kestrin {

class FtpConversation;

// A folder on an FTP server (mode 1102), read through the pane's
// conversation as every server's folder is (ServerSource); its steps are
// log in, enter a folder, up, make and delete. Nothing is edited or dragged
// out.
class FtpSource : public ServerSource
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

    // That the connection goes in clear where the server refused TLS.
    std::string HeaderNote() const override;
    // An absolute or relative remote path, or an ftp:// address on the
    // session's server; a local path or another server is refused.
    std::unique_ptr<PaneSource> TypedPath(const std::string &typed,
                                          std::optional<platform::Alert> *refusal) const override;

    std::shared_ptr<FolderLister::Job> StartReading(const RowStyle &style,
                                                    QObject *context,
                                                    FolderLister::Done done) const override;
    // A connection that failed, or a typed path the server did not enter,
    // is told in an alert.
    void Listed(const FolderLister::Job &job) override;

    Opening Open(const DirListItem &row) const override;

    std::unique_ptr<PaneSource> WithNewFolder(const std::string &name) const override;
    std::unique_ptr<PaneSource> WithoutRows(
        const std::vector<const DirListItem *> &rows) const override;
    CopyOut CopyRequest() const override;
    std::optional<platform::Alert> EditRefusal() const override;

    const FtpConversation &Conversation() const { return *fConversation; }

protected:
    std::unique_ptr<PaneSource> Up() const override;
    std::unique_ptr<PaneSource> StayAt(const std::string &folder) const override;
    TransferPlace::Kind PlaceKind() const override { return TransferPlace::Kind::FtpFolder; }

private:
    std::unique_ptr<PaneSource> Next(FtpRequest step) const;

    std::shared_ptr<FtpConversation> fConversation;
    FtpRequest fStep;
};

} // namespace kestrin
