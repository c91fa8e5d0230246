#pragma once

#include "panes/RecentPlaces.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kestrin {

class SideFile;

// The places one pane showed, as a browser keeps them: Back and Forward walk
// the list, and a new place shown after going back drops the places ahead.
// Places are texts (PaneSource::RecalledPlace); an empty one (query results)
// is not kept. Besides the list, the pane's recent places (newest first, each
// once), and the session's, which the panes of a window share.
//
// GUI thread only.
class PlaceHistory
{
public:
    static constexpr size_t kMostPlaces = 50;

    explicit PlaceHistory(size_t most = kMostPlaces);

    // The recent places of the session that this pane's visits join.
    void ShareSession(std::shared_ptr<RecentPlaces> session);
    const std::shared_ptr<RecentPlaces> &Session() const { return fSession; }

    // The pane shows `place`, by whatever way it got there.
    void Visit(const std::string &place);
    // Where Back and Forward lead from the place `shown` now (moving along
    // the list); nothing at either end. A place shown that the list does
    // not hold (query results) goes back to the list's current place first.
    std::optional<std::string> Back(const std::string &shown);
    std::optional<std::string> Forward();

    const std::vector<std::string> &Places() const { return fPlaces; }
    // The index in Places() of the current place (0 when there is none).
    size_t Current() const { return fCurrent; }
    // The pane's recent places, newest first.
    const std::vector<std::string> &Recent() const { return fRecent.Places(); }

    // Kept under `key` and keys beginning with it, in Kestrin's own file.
    void Load(const SideFile &file, const std::string &key);
    void Save(SideFile &file, const std::string &key) const;

private:
    size_t fMost;
    std::vector<std::string> fPlaces;
    size_t fCurrent = 0;
    RecentPlaces fRecent;
    std::shared_ptr<RecentPlaces> fSession;
};

} // namespace kestrin
