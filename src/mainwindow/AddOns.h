#pragma once

#include "platform/EntryRef.h"

#include <functional>
#include <string>
#include <vector>

// The add-ons of the Add-Ons menu: every entry of the "Tracker" sub-folder of
// the system add-on folder, then of the user's (see include/kestrin/addon.h).
class AddOns
{
public:
    struct Item
    {
        std::string label; // the entry's name
        std::string path;  // <add-on folder>/Tracker/<label>
        bool shortcutA;    // the add-on named exactly "MakeArchive"
    };

    // Every add-on, folder by folder, in directory order. Whatever is in a
    // Tracker folder counts, as the folder lists it; a missing folder adds
    // nothing.
    static std::vector<Item> Find();

    // The add-on with this label: the first add-on folder whose Tracker
    // folder holds an entry of that name that exists, links followed. Empty
    // when there is none.
    static std::string FindAddOnPath(const std::string &label);

    // Runs the add-on on `entries`, selected in `folder`, in a process of its
    // own, and returns at once. `done` is called once, from the GUI thread's
    // event loop, when the run is over: with an empty string when the add-on
    // did its work, else with one line that tells the user what went wrong.
    // (Without a QCoreApplication nothing can run, and `done` hears so at once.)
    static void Run(const std::string &label,
                    const entry_ref &folder,
                    const std::vector<entry_ref> &entries,
                    std::function<void(const std::string &problem)> done);
};
