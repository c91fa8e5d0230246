#include "mainwindow/AddOns.h"

#include "platform/AddOnRunner.h"
#include "platform/Directory.h"
#include "platform/Entry.h"
#include "platform/Paths.h"

#include <QCoreApplication>
#include <QTimer>

#include <algorithm>
#include <memory>
#include <utility>

using platform::AddOnOutcome;
using platform::DirectoryWhich;

namespace {

constexpr const char *kShortcutLabel = "MakeArchive";

// The add-on folders in the order they are searched. The user's folder is
// asked for twice, as it always has been; like any folder already seen, the
// second answer adds nothing.
std::vector<std::string> AddOnFolders()
{
    const DirectoryWhich asked[] = {DirectoryWhich::SystemAddOns,
                                    DirectoryWhich::UserAddOns,
                                    DirectoryWhich::UserAddOns};
    std::vector<std::string> folders;
    for (const DirectoryWhich which : asked) {
        std::string folder;
        if (platform::FindDirectory(which, &folder) != B_OK)
            continue;
        if (std::find(folders.begin(), folders.end(), folder) == folders.end())
            folders.push_back(folder);
    }
    return folders;
}

std::string TrackerFolder(const std::string &folder)
{
    return folder + "/Tracker";
}

// A label names an entry of a Tracker folder, nothing above or below it.
bool IsPlainName(const std::string &label)
{
    return !label.empty() && label != "." && label != ".." && label.find('/') == std::string::npos;
}

std::string Quoted(const std::string &label)
{
    return "The add-on \"" + label + "\"";
}

std::string Problem(const std::string &label, const AddOnOutcome &outcome)
{
    const std::string &said = outcome.message;
    switch (outcome.kind) {
    case AddOnOutcome::Kind::Done:
        return std::string();
    case AddOnOutcome::Kind::Failed:
        if (said.empty())
            return Quoted(label) + " failed (error " + std::to_string(outcome.result) + ").";
        return Quoted(label) + " failed: " + said;
    case AddOnOutcome::Kind::CannotLoad:
        return Quoted(label) + " could not be loaded" + (said.empty() ? "." : ": " + said);
    case AddOnOutcome::Kind::NoEntryPoint:
        return Quoted(label) + " has no process_refs entry point.";
    case AddOnOutcome::Kind::Crashed:
        return Quoted(label) + " stopped unexpectedly (signal " + std::to_string(outcome.signal)
               + ").";
    case AddOnOutcome::Kind::HostMissing:
        return Quoted(label)
               + " could not be run: Kestrin's helper program kestrin-addon-host is missing.";
    }
    return Quoted(label) + " failed.";
}

// Answers that are known before anything runs still come from the event
// loop, as every other answer does.
void Later(std::function<void(const std::string &)> done, std::string problem)
{
    QCoreApplication *app = QCoreApplication::instance();
    if (!app) {
        done(problem);
        return;
    }
    QTimer::singleShot(0, app, [done = std::move(done), problem = std::move(problem)] {
        done(problem);
    });
}

} // namespace

std::vector<AddOns::Item> AddOns::Find()
{
    std::vector<Item> items;
    for (const std::string &folder : AddOnFolders()) {
        platform::Directory tracker(TrackerFolder(folder));
        if (tracker.InitCheck() != B_OK)
            continue;
        platform::Entry entry;
        while (tracker.GetNextEntry(&entry) == B_OK) {
            Item item;
            entry.GetName(&item.label);
            item.path = TrackerFolder(folder) + "/" + item.label;
            item.shortcutA = item.label == kShortcutLabel;
            items.push_back(std::move(item));
        }
    }
    return items;
}

std::string AddOns::FindAddOnPath(const std::string &label)
{
    if (!IsPlainName(label))
        return std::string();
    for (const std::string &folder : AddOnFolders()) {
        const std::string path = TrackerFolder(folder) + "/" + label;
        if (platform::Entry(path, true).Exists())
            return path;
    }
    return std::string();
}

void AddOns::Run(const std::string &label,
                 const entry_ref &folder,
                 const std::vector<entry_ref> &entries,
                 std::function<void(const std::string &problem)> done)
{
    const std::string path = FindAddOnPath(label);
    if (path.empty()) {
        Later(std::move(done), Quoted(label) + " was not found.");
        return;
    }
    // Shared by the completion and the refusal below: only one of them runs.
    auto report = std::make_shared<std::function<void(const std::string &)>>(std::move(done));
    const status_t status = platform::AddOnRunner::Run(path,
                                                       folder,
                                                       entries,
                                                       [label, report](const AddOnOutcome &outcome) {
                                                           (*report)(Problem(label, outcome));
                                                       });
    if (status != B_OK)
        Later(std::move(*report), Quoted(label) + " could not be started.");
}
