#include "panes/PlaceHistory.h"

#include "app/NumberText.h"
#include "app/SideFile.h"

#include <algorithm>

namespace kestrin {

PlaceHistory::PlaceHistory(size_t most)
    : fMost(std::max<size_t>(most, 1))
{}

void PlaceHistory::ShareSession(std::shared_ptr<RecentPlaces> session)
{
    fSession = std::move(session);
}

void PlaceHistory::Visit(const std::string &place)
{
    if (place.empty())
        return;
    fRecent.Add(place);
    if (fSession)
        fSession->Add(place);
    // Listed again, or arrived where Back or Forward led.
    if (!fPlaces.empty() && fPlaces[fCurrent] == place)
        return;
    if (!fPlaces.empty())
        fPlaces.resize(fCurrent + 1);
    fPlaces.push_back(place);
    if (fPlaces.size() > fMost)
        fPlaces.erase(fPlaces.begin(), fPlaces.end() - std::ptrdiff_t(fMost));
    fCurrent = fPlaces.size() - 1;
}

std::optional<std::string> PlaceHistory::Back(const std::string &shown)
{
    if (fPlaces.empty())
        return std::nullopt;
    if (shown != fPlaces[fCurrent])
        return fPlaces[fCurrent];
    if (fCurrent == 0)
        return std::nullopt;
    return fPlaces[--fCurrent];
}

std::optional<std::string> PlaceHistory::Forward()
{
    // From a place the list does not hold (query results), forward is still
    // the place after the list's current one.
    if (fPlaces.empty() || fCurrent + 1 >= fPlaces.size())
        return std::nullopt;
    return fPlaces[++fCurrent];
}

void PlaceHistory::Load(const SideFile &file, const std::string &key)
{
    fPlaces = file.GetAll(key);
    std::erase(fPlaces, std::string());
    if (fPlaces.size() > fMost)
        fPlaces.erase(fPlaces.begin(), fPlaces.end() - std::ptrdiff_t(fMost));
    const long at = kestrin::atoi(file.Get(key + "At").c_str());
    fCurrent = fPlaces.empty() ? 0
                               : size_t(std::clamp<long>(long(at), 0, long(fPlaces.size()) - 1));
    fRecent.Load(file, key + "Recent");
}

void PlaceHistory::Save(SideFile &file, const std::string &key) const
{
    file.SetAll(key, fPlaces);
    file.Set(key + "At", fPlaces.empty() ? "" : std::to_string(fCurrent));
    fRecent.Save(file, key + "Recent");
}

} // namespace kestrin
