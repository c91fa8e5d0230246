#include "panes/PathCompletion.h"

#include "panes/TypedPlace.h"

namespace kestrin {

PathCompletion::PathCompletion(QObject *parent)
    : QObject(parent)
{}

PathCompletion::~PathCompletion()
{
    fTask.Stop();
}

void PathCompletion::Typed(const std::string &text, const std::string &standing)
{
    const size_t slash = text.rfind('/');
    const std::string stem = slash == std::string::npos ? std::string() : text.substr(0, slash + 1);
    const bool dotted = text.size() > stem.size() && text[stem.size()] == '.';
    if (fRead && stem == fStem && standing == fStanding) {
        if (dotted != fDotted) {
            fDotted = dotted;
            Offer();
        }
        return;
    }
    fTask.Stop();
    fStem = stem;
    fStanding = standing;
    fDotted = dotted;
    fRead = true;
    fNames.clear();
    emit Offered({});
    // Text only: the folder is asked on the worker.
    const std::string folder = stem.empty() ? standing : TypedPlace::Expand(stem, standing);
    if (folder.empty() || folder[0] != '/')
        return;
    fTask = platform::Background::Run(
        this,
        [folder](const std::atomic<bool> &stop) { return TypedPlace::FolderNames(folder, stop); },
        [this, stem](std::vector<std::string> names) {
            if (stem != fStem)
                return;
            fNames = std::move(names);
            Offer();
        });
}

void PathCompletion::Offer()
{
    QStringList completions;
    const QString stem = QString::fromStdString(fStem);
    for (const std::string &name : fNames) {
        if (fDotted || name[0] != '.')
            completions.append(stem + QString::fromStdString(name) + '/');
    }
    emit Offered(completions);
}

} // namespace kestrin
