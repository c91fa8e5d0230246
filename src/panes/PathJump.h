#pragma once

#include "platform/Background.h"

#include <QObject>
#include <QString>
#include <functional>
#include <memory>
#include <string>

namespace kestrin {

class PaneSource;
struct TypedPlace;

// Goes where a path typed (or pasted) into a pane's path field leads. The
// place the pane shows reads it first where it has paths of its own (a
// folder on the same server, or why not); anything else is a path of this
// computer, read on a worker (TypedPlace), so a hanging mount never holds
// the window. What is there is handed to `show`; what is not comes back for
// the field to mark. A newer path, or Cancel, drops the answer of an older.
//
// GUI thread only.
class PathJump : public QObject
{
    Q_OBJECT

public:
    // The place to show, the row to select once it is listed, and whether
    // it is a place of its own, with a log to follow (a new session), or
    // one step from the place shown (a folder on the same server).
    using Show = std::function<
        void(std::unique_ptr<PaneSource> place, const std::string &select, bool fresh)>;

    // `current` gives the place the pane shows now.
    PathJump(std::function<const PaneSource &()> current, Show show, QObject *parent = nullptr);
    ~PathJump() override;

    void Go(const std::string &typed);
    // Where a relative path typed over `place` starts.
    static std::string StartOf(const PaneSource &place);
    void Cancel();
    bool IsReading() const { return fReading; }

signals:
    // The pane is on its way to the place (or, for blank text, stays).
    void Went();
    // Nothing is there: `path` is the text as read, of which the part from
    // `from` on is missing, and `problem` says so. A refusal of the place
    // (an alert) leaves the field as it is and says nothing here.
    void Missing(const QString &path, int from, const QString &problem);

private:
    void Arrived(const TypedPlace &place, const std::string &standing);

    std::function<const PaneSource &()> fCurrent;
    Show fShow;
    platform::Background::Task fTask;
    bool fReading = false;
};

} // namespace kestrin
