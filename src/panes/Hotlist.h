#pragma once

#include <string>
#include <vector>

namespace kestrin {

class SideFile;

// One place of the hotlist: the name the menu shows and the place
// (PaneSource::RecalledPlace).
struct HotlistEntry
{
    std::string name;
    std::string place;

    bool operator==(const HotlistEntry &) const = default;
};

// The places the user keeps at hand, in the user's order, each place once.
// Kept in Kestrin's own file as lines "Hotlist=<name><tab><place>": a name
// never holds a tab, so the place may.
class Hotlist
{
public:
    static constexpr size_t kMostEntries = 100;

    // The hotlist kept in Kestrin's own file (empty when there is none).
    static Hotlist Read();
    // Keeps it there, leaving the other keys of the file as they are; false
    // when the file could not be written.
    bool Write() const;

    void Load(const SideFile &file);
    void Save(SideFile &file) const;

    const std::vector<HotlistEntry> &Entries() const { return fEntries; }
    // Adds `place` at the end under `name`; false when the place is there
    // already (or the list is full).
    bool Add(const std::string &name, const std::string &place);
    // Replaces the entries (the edit window's result), tidied as Add would.
    void SetEntries(const std::vector<HotlistEntry> &entries);

private:
    std::vector<HotlistEntry> fEntries;
};

} // namespace kestrin
