#include "panes/Hotlist.h"

#include "app/SideFile.h"

#include <algorithm>

namespace kestrin {

namespace {

constexpr char kFileName[] = "Kestrin.extras";
constexpr char kKey[] = "Hotlist";
constexpr char kApart = '\t';

// A tab would end the name early when the entry is read back.
std::string Tidy(std::string name)
{
    std::replace(name.begin(), name.end(), kApart, ' ');
    return name;
}

} // namespace

Hotlist Hotlist::Read()
{
    Hotlist hotlist;
    hotlist.Load(SideFile::Read(kFileName));
    return hotlist;
}

bool Hotlist::Write() const
{
    // Read again just before writing: the file holds other features' keys.
    SideFile file = SideFile::Read(kFileName);
    Save(file);
    return file.Write();
}

void Hotlist::Load(const SideFile &file)
{
    fEntries.clear();
    for (const std::string &line : file.GetAll(kKey)) {
        const size_t apart = line.find(kApart);
        if (apart != std::string::npos)
            Add(line.substr(0, apart), line.substr(apart + 1));
    }
}

void Hotlist::Save(SideFile &file) const
{
    std::vector<std::string> lines;
    for (const HotlistEntry &entry : fEntries)
        lines.push_back(entry.name + kApart + entry.place);
    file.SetAll(kKey, lines);
}

bool Hotlist::Add(const std::string &name, const std::string &place)
{
    if (place.empty() || fEntries.size() >= kMostEntries
        || std::any_of(fEntries.begin(), fEntries.end(), [&place](const HotlistEntry &entry) {
               return entry.place == place;
           }))
        return false;
    // A name left empty would show as an empty menu item.
    fEntries.push_back({name.empty() ? place : Tidy(name), place});
    return true;
}

void Hotlist::SetEntries(const std::vector<HotlistEntry> &entries)
{
    fEntries.clear();
    for (const HotlistEntry &entry : entries)
        Add(entry.name, entry.place);
}

} // namespace kestrin
