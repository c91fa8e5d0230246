#pragma once

#include "fileops/TransferPlace.h"
#include "platform/Alert.h"
#include "platform/Message.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

class QMimeData;

namespace kestrin {

// Entries on the clipboard, in the forms file managers hand each other: the
// paths as plain text (one a line), text/uri-list (file:// addresses,
// percent-encoded byte by byte, each line ended by CRLF), GNOME's
// x-special/gnome-copied-files ("copy" or "cut", then the addresses) and,
// for a cut, KDE's application/x-kde-cutselection, so that Nautilus, Dolphin
// and the others paste what Kestrin copied, moving it after a cut.
//
// Reading takes the richest form another application left: the GNOME list,
// else a uri-list (a cut when KDE's mark says so), else plain text whose
// every line is the absolute path of an existing entry. Addresses that are
// not local files are passed over.
class ClipboardEntries
{
public:
    enum class Action { Copy, Cut };

    Action action = Action::Copy;
    std::vector<std::string> paths;

    // What copying (or cutting) the entries at `paths` of `place` puts on
    // the clipboard, or, in `refusal`, why nothing goes there.
    struct Written
    {
        std::unique_ptr<QMimeData> data;
        std::optional<platform::Alert> refusal;
    };
    static Written ForPlace(const TransferPlace &place,
                            Action action,
                            const std::vector<std::string> &paths);

    // Every form of these entries.
    std::unique_ptr<QMimeData> Mime() const;
    static ClipboardEntries Read(const QMimeData &data);

    // What pasting them into `folder` asks of the transfer planner: a copy
    // (a move for a cut) of their "refs", made as a drop from another
    // application is. Entries already in `folder` are left out (they are
    // where they would go; an empty `folder` leaves none out), and so are
    // entries that are gone; with nothing left, `refusal` says why.
    struct Paste
    {
        platform::Message request{0};
        std::optional<platform::Alert> refusal;
    };
    Paste PasteInto(const std::string &folder) const;

    // A local path as a file:// address, and back ("" when `uri` is not a
    // file on this machine).
    static std::string FileUri(const std::string &path);
    static std::string PathOfUri(const std::string &uri);
};

} // namespace kestrin
