#pragma once

#include "panes/PaneSource.h"
#include "sftp/SftpRequest.h"

#include <memory>

namespace kestrin {

class SftpConversation;
struct FtpSession;

// A folder on an SFTP server, read through the pane's conversation as an
// FtpSource reads an FTP folder: each place is the step that leads to it
// from the folder before (log in, enter, up, make, delete, rename, chmod),
// and lists again without repeating it once reached. Rows are no local
// entries; names holding "/" or made of dots are shown but never acted on.
class SftpSource : public PaneSource
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

    // Moves as an FTP pane's does: the messages know no other server mode.
    int32_t Mode() const override;
    const std::string &Folder() const override { return fLocalFolder; }
    std::string HeaderText() const override;
    // The session's file name: the profile keeps it as it keeps an FTP
    // session's name, and it says which kind of session it is.
    std::string SavedPlace() const override;
    std::string PathText() const override { return RemoteFolder(); }
    // An absolute or relative remote path, or an sftp:// address on the
    // session's server.
    std::unique_ptr<PaneSource> TypedPath(const std::string &typed,
                                          std::optional<platform::Alert> *refusal) const override;
    std::string RecalledPlace() const override;
    std::unique_ptr<PaneSource> Recall(const std::string &recalled) const override;

    FolderLister::Reader Reader(const RowStyle &style) const override;
    std::shared_ptr<FolderLister::Job> StartReading(const RowStyle &style,
                                                    QObject *context,
                                                    FolderLister::Done done) const override;
    // A connection that failed is told in an alert.
    void Listed(const FolderLister::Job &job) override;
    void Follow(QObject *context,
                std::function<void(const std::string &line)> logLine,
                std::function<void()> changed) const override;

    std::string PathOf(const DirListItem &row) const override;
    entry_ref RefOf(const DirListItem &row) const override;
    std::unique_ptr<PaneSource> Parent(std::string *selectAfter) const override;
    // A folder or a link is entered (the server tells where a link leads).
    Opening Open(const DirListItem &row) const override;

    bool HoldsLocalEntries() const override { return false; }
    bool IsRemote() const override { return true; }
    TransferPlace Place() const override;
    bool ListsAgainAfterTransfers() const override { return true; }
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
    // Nothing is downloaded to be viewed or edited yet: both say so.
    std::optional<platform::Message> ViewRequest(const DirListItem &row) const override;
    std::optional<platform::Alert> EditRefusal() const override;
    platform::Message Request(uint32_t what,
                              const std::vector<const DirListItem *> &rows) const override;

    const std::string &RemoteFolder() const;

private:
    struct Reached
    {
        bool done = false;
        std::string folder;
    };

    std::unique_ptr<PaneSource> Next(SftpRequest step) const;
    const FtpSession &Session() const;

    std::shared_ptr<SftpConversation> fConversation;
    std::string fLocalFolder;
    SftpRequest fStep;
    std::shared_ptr<Reached> fReached;
};

} // namespace kestrin
