#pragma once

#include "fileops/TransferPlace.h"
#include "panes/FolderLister.h"
#include "platform/Alert.h"
#include "platform/EntryRef.h"
#include "platform/Message.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace kestrin {

class DirListItem;
class PaneSource;

// What opening a row leads to: another place in the pane (a folder, an
// archive, a folder inside an archive or on a server), with the row to
// select once it is listed, or nothing. Launching a document is done by the
// source itself.
struct Opening
{
    std::unique_ptr<PaneSource> place;
    std::string selectAfter;
};

// The F5 request of a kind of place: its code and its "TypeOfCopy".
struct CopyOut
{
    uint32_t what;
    const char *typeOfCopy;
};

// The place a pane shows: a local folder, query results, an FTP folder or an
// archive's contents. Everything that differs between those kinds lives
// here, so the pane's core, its keys, commands and drag and drop ask the source and
// never the mode: how the place is read (on a worker), which folder node
// monitoring watches, where "up" goes, what opening a row does, what kind
// of place a transfer plans on and how a request of rows is built.
//
// A source belongs to its pane's core, on the GUI thread. What it hands to a
// worker (its reader) carries copies, never the source itself.
class PaneSource
{
public:
    virtual ~PaneSource() = default;

    // The value the messages and the profile carry for this kind of place.
    virtual int32_t Mode() const = 0;
    // The local folder the pane stands in: what "From" names, where copies
    // land, what the pane falls back to.
    virtual const std::string &Folder() const = 0;
    // The header's text.
    virtual std::string HeaderText() const { return Folder(); }
    // A warning the header shows after its text, where the place has one.
    virtual std::string HeaderNote() const { return {}; }
    // What the profile keeps to show this place again.
    virtual std::string SavedPlace() const { return Folder(); }
    // What the path field offers to edit: text that, typed, leads back here.
    virtual std::string PathText() const { return Folder(); }
    // A path typed into the path field that the place reads itself (a
    // folder on its server): the place it leads to, or, in `refusal`, why
    // the pane cannot go there. Null without a refusal: a path of this
    // computer, for TypedPlace to read.
    virtual std::unique_ptr<PaneSource> TypedPath(const std::string &,
                                                  std::optional<platform::Alert> *) const
    {
        return nullptr;
    }
    // What the history and the hotlist keep to show this place again: what
    // the profile keeps, or more where that says less than the pane shows
    // (a folder inside an archive, a server's folder); empty for a place
    // that cannot be shown again (query results). SavedPlace::Read reads it.
    virtual std::string RecalledPlace() const { return SavedPlace(); }
    // The place `recalled` (a RecalledPlace) reached from this one where
    // that is better than making it anew: a server's folder through the
    // connection already open. Null otherwise.
    virtual std::unique_ptr<PaneSource> Recall(const std::string &) const { return nullptr; }

    // What reads the place on a worker.
    virtual FolderLister::Reader Reader(const RowStyle &style) const = 0;
    // Starts reading the place: its reader on a worker of the pool, or, for
    // a place with a conversation of its own (a server), through that;
    // `done` follows on the GUI thread as FolderLister::Start says.
    virtual std::shared_ptr<FolderLister::Job> StartReading(const RowStyle &style,
                                                            QObject *context,
                                                            FolderLister::Done done) const;
    // The listing arrived (GUI thread), opened or not.
    virtual void Listed(const FolderLister::Job &) {}
    // The place the pane shows instead when this one cannot be opened (an
    // archive that is none: the folder it was opened from), and in
    // `selectAfter` the row to select there; null where the pane stays, empty.
    virtual std::unique_ptr<PaneSource> Fallback(std::string *) const { return nullptr; }
    // Hands what the place has to tell besides its rows to the pane, for as
    // long as `context` lives: the lines of a server's conversation, and
    // that the header's text changed. Nothing for places without either.
    virtual void Follow(QObject *,
                        std::function<void(const std::string &line)>,
                        std::function<void()>) const
    {}
    // What tells apart the places of one connection to a server from
    // another's (the same for every folder it reaches); null for places on
    // no server.
    virtual const void *Connection() const { return nullptr; }
    // The folder whose changes node monitoring reports to the pane; empty
    // for a place that changes only when it is listed again.
    virtual std::string WatchedFolder() const { return {}; }
    // The device the place was listed from; 0 when not a local volume.
    virtual dev_t Device() const { return 0; }

    // A row's entry: its full path, and its reference.
    virtual std::string PathOf(const DirListItem &row) const = 0;
    virtual entry_ref RefOf(const DirListItem &row) const;
    // What a neighbouring pane shows for a selected folder row.
    virtual std::string FolderShownFor(const DirListItem &) const { return Folder(); }

    // The place one level up, and in `selectAfter` the row to select there;
    // null when there is nothing above.
    virtual std::unique_ptr<PaneSource> Parent(std::string *selectAfter) const = 0;
    virtual Opening Open(const DirListItem &row) const = 0;

    // Rows named by their whole paths (query results, whose entries come
    // from anywhere) rather than by their names in the place.
    virtual bool NamesArePaths() const { return false; }
    // Rows that are local entries: they can be viewed, edited, identified,
    // measured and dragged out.
    virtual bool HoldsLocalEntries() const { return true; }
    // Entries can be renamed and made here, drops go into folder rows, and
    // the folder tree follows the place.
    virtual bool IsLocalFolder() const { return false; }
    // On a server: the pane keeps a conversation and shows its log.
    virtual bool IsRemote() const { return false; }
    // What a transfer to or from this place is planned on.
    virtual TransferPlace Place() const { return TransferPlace::LocalFolder(Folder()); }
    // The place shows what a transfer changed only once it is listed again
    // (nothing reports changes on a server).
    virtual bool ListsAgainAfterTransfers() const { return false; }
    // Where the place makes and deletes entries itself (on a server): the
    // same place once the folder `name` is made, or once `rows` are
    // deleted; null where the pane does it on disk.
    virtual std::unique_ptr<PaneSource> WithNewFolder(const std::string &) const { return nullptr; }
    virtual std::unique_ptr<PaneSource> WithoutRows(const std::vector<const DirListItem *> &) const
    {
        return nullptr;
    }
    // Likewise the same place once `row` is renamed to `name`, or once
    // `rows` are given the permissions `mode`; null where the pane does it
    // on disk, or where it cannot be done.
    virtual std::unique_ptr<PaneSource> WithRenamed(const DirListItem &, const std::string &) const
    {
        return nullptr;
    }
    virtual std::unique_ptr<PaneSource> WithMode(const std::vector<const DirListItem *> &,
                                                 mode_t) const
    {
        return nullptr;
    }
    // What Get Info shows of a row the place knows itself (an entry on a
    // server, which no information window can read): its facts in an
    // alert. Nothing for local entries.
    virtual std::optional<platform::Alert> InfoOf(const DirListItem &) const
    {
        return std::nullopt;
    }
    // Rows can be renamed in place: on disk, or by the place itself.
    virtual bool RenamesRows() const { return IsLocalFolder(); }
    virtual CopyOut CopyRequest() const;
    // What F3 asks of the main window to show a file row in the viewer;
    // nothing where there is no way to.
    virtual std::optional<platform::Message> ViewRequest(const DirListItem &row) const;
    // The alert F4 answers with where rows cannot be opened in an editor.
    virtual std::optional<platform::Alert> EditRefusal() const { return std::nullopt; }
    // A request of these rows: their "refs" and "From".
    virtual platform::Message Request(uint32_t what,
                                      const std::vector<const DirListItem *> &rows) const;
};

} // namespace kestrin
