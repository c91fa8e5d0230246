#pragma once

#include "panes/ServerSource.h"
#include "sftp/SftpRequest.h"

#include <memory>

namespace kestrin {

class SftpConversation;

// A folder on an SFTP server, read through the pane's conversation as
// every server's folder is (ServerSource); its steps are log in, enter, up,
// make, delete, rename and chmod, and links are entered as folders.
class SftpSource : public ServerSource
{
public:
    SftpSource(std::shared_ptr<SftpConversation> conversation,
               const std::string &localFolder,
               SftpRequest step = {});
    // A new conversation with the session stored in `sessionFile`
    // ("<name>.sftp"), asking the user through alerts; null for a file of
    // another kind.
    static std::unique_ptr<PaneSource> Connect(const std::string &sessionFile,
                                               const std::string &localFolder);
    // The place a saved or recalled text names when it is a stored SFTP
    // session's ("<name>.sftp", with a remote folder or not); null else.
    static std::unique_ptr<PaneSource> FromSaved(const std::string &saved,
                                                 const std::string &localFolder);

    // An absolute or relative remote path, or an sftp:// address on the
    // session's server.
    std::unique_ptr<PaneSource> TypedPath(const std::string &typed,
                                          std::optional<platform::Alert> *refusal) const override;

    std::shared_ptr<FolderLister::Job> StartReading(const RowStyle &style,
                                                    QObject *context,
                                                    FolderLister::Done done) const override;
    // A connection that failed is told in an alert.
    void Listed(const FolderLister::Job &job) override;

    // A folder or a link is entered (the server tells where a link leads).
    Opening Open(const DirListItem &row) const override;

    std::unique_ptr<PaneSource> WithNewFolder(const std::string &name) const override;
    std::unique_ptr<PaneSource> WithoutRows(
        const std::vector<const DirListItem *> &rows) const override;
    std::unique_ptr<PaneSource> WithRenamed(const DirListItem &row,
                                            const std::string &name) const override;
    std::unique_ptr<PaneSource> WithMode(const std::vector<const DirListItem *> &rows,
                                         mode_t mode) const override;
    // The entry's name, kind, size, modification time and permissions, as
    // the listing gave them.
    std::optional<platform::Alert> InfoOf(const DirListItem &row) const override;
    bool RenamesRows() const override { return true; }
    CopyOut CopyRequest() const override;
    // A copy edited here would not go back to the server: F4 says so.
    std::optional<platform::Alert> EditRefusal() const override;

protected:
    std::unique_ptr<PaneSource> Up() const override;
    std::unique_ptr<PaneSource> StayAt(const std::string &folder) const override;
    TransferPlace::Kind PlaceKind() const override { return TransferPlace::Kind::SftpFolder; }

private:
    std::unique_ptr<PaneSource> Next(SftpRequest step) const;

    std::shared_ptr<SftpConversation> fConversation;
    SftpRequest fStep;
};

} // namespace kestrin
