#include "panes/RecentPlaces.h"

#include "app/SideFile.h"

#include <algorithm>

namespace kestrin {

RecentPlaces::RecentPlaces(size_t most)
    : fMost(std::max<size_t>(most, 1))
{}

void RecentPlaces::Add(const std::string &place)
{
    if (place.empty())
        return;
    std::erase(fPlaces, place);
    fPlaces.insert(fPlaces.begin(), place);
    if (fPlaces.size() > fMost)
        fPlaces.resize(fMost);
}

void RecentPlaces::Load(const SideFile &file, const std::string &key)
{
    fPlaces.clear();
    const std::vector<std::string> kept = file.GetAll(key);
    // Added oldest first, so that a file edited by hand still ends up
    // without repeats and within bounds.
    for (auto place = kept.rbegin(); place != kept.rend(); ++place)
        Add(*place);
}

void RecentPlaces::Save(SideFile &file, const std::string &key) const
{
    file.SetAll(key, fPlaces);
}

} // namespace kestrin
