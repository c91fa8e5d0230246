#include "panes/PathJump.h"

#include "panes/PaneSource.h"
#include "panes/TypedPlace.h"
#include "platform/Alerts.h"

namespace kestrin {

PathJump::PathJump(std::function<const PaneSource &()> current, Show show, QObject *parent)
    : QObject(parent)
    , fCurrent(std::move(current))
    , fShow(std::move(show))
{}

PathJump::~PathJump()
{
    fTask.Stop();
}

std::string PathJump::StartOf(const PaneSource &place)
{
    // The place the field showed, when that is a local path (a folder
    // inside an archive leads on inside it), else the folder the pane
    // stands in.
    const std::string shown = place.PathText();
    return !shown.empty() && shown[0] == '/' && !place.IsRemote() ? shown : place.Folder();
}

void PathJump::Go(const std::string &typed)
{
    Cancel();
    const PaneSource &place = fCurrent();
    std::optional<platform::Alert> refusal;
    if (std::unique_ptr<PaneSource> own = place.TypedPath(typed, &refusal)) {
        fShow(std::move(own), {}, false);
        emit Went();
        return;
    }
    if (refusal) {
        platform::Alerts::Go(*refusal);
        return;
    }
    const std::string start = StartOf(place);
    const std::string standing = place.Folder();
    fReading = true;
    fTask = platform::Background::Run(
        this,
        [typed, start](const std::atomic<bool> &) { return TypedPlace::Read(typed, start); },
        [this, standing](const TypedPlace &found) {
            fReading = false;
            Arrived(found, standing);
        },
        platform::Background::Thread::Own);
}

void PathJump::Cancel()
{
    fTask.Stop();
    fReading = false;
}

void PathJump::Arrived(const TypedPlace &found, const std::string &standing)
{
    if (found.kind == TypedPlace::Kind::Missing) {
        const QString path = QString::fromStdString(found.path);
        const int from = int(QString::fromStdString(found.path.substr(0, found.MissingAt())).size());
        emit Missing(path, from, QString::fromStdString(found.Problem()));
        return;
    }
    std::string select;
    if (std::unique_ptr<PaneSource> place = found.Source(standing, &select))
        fShow(std::move(place), select, true);
    emit Went();
}

} // namespace kestrin
