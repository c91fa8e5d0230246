#include "mainwindow/RowViewCommands.h"

#include "app/SideFile.h"
#include "mainwindow/WindowMessages.h"
#include "panes/DirPane.h"
#include "panes/PaneModel.h"

#include <QAction>
#include <QWidget>

namespace kestrin {

namespace {

constexpr const char *kExtrasFile = "Kestrin.extras";
constexpr const char *kPrefix = "HiddenPane";

std::string KeyOf(size_t pane)
{
    return kPrefix + std::to_string(pane);
}

} // namespace

bool RowViewCommands::Handle(platform::Message &message,
                             DirPane *focused,
                             const std::vector<DirPane *> &panes,
                             QWidget *window)
{
    switch (message.what) {
    case kCmdFilter:
        if (focused != nullptr)
            focused->OpenFilter();
        return true;
    case kCmdHiddenFiles:
        if (focused != nullptr) {
            RowFilter &filter = focused->Model().Filter();
            filter.SetShowDotFiles(!filter.ShowsDotFiles());
            Save(panes);
        }
        ShowChoice(focused, window);
        return true;
    case kMsgViewMenuShowing:
        ShowChoice(focused, window);
        return true;
    default:
        return false;
    }
}

void RowViewCommands::ShowChoice(const DirPane *focused, QWidget *window)
{
    // A checkable item checks itself when chosen; the pane has the last word.
    if (auto *item = window->findChild<QAction *>(kHiddenFilesItem))
        item->setChecked(focused == nullptr || focused->Model().Filter().ShowsDotFiles());
}

void RowViewCommands::Restore(const std::vector<DirPane *> &panes)
{
    const SideFile extras = SideFile::Read(kExtrasFile);
    for (size_t i = 0; i < panes.size(); i++)
        panes[i]->Model().Filter().SetShowDotFiles(extras.Get(KeyOf(i)).empty());
}

void RowViewCommands::Save(const std::vector<DirPane *> &panes)
{
    // Read again each time: other features keep their keys in the file.
    SideFile extras = SideFile::Read(kExtrasFile);
    for (const std::string &key : extras.Keys()) {
        if (key.rfind(kPrefix, 0) == 0)
            extras.Set(key, {});
    }
    for (size_t i = 0; i < panes.size(); i++)
        extras.Set(KeyOf(i), panes[i]->Model().Filter().ShowsDotFiles() ? "" : "hidden");
    extras.Write();
}

} // namespace kestrin
