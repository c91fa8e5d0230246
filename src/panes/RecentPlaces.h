#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace kestrin {

class SideFile;

// The places shown lately, newest first, each once, at most `most` of them:
// what the menu of recent places lists, for one pane or for the whole
// session.
class RecentPlaces
{
public:
    static constexpr size_t kMostPlaces = 30;

    explicit RecentPlaces(size_t most = kMostPlaces);

    // `place` was shown: it moves to the front (empty: nothing is kept).
    void Add(const std::string &place);
    const std::vector<std::string> &Places() const { return fPlaces; }

    // Kept under `key` of Kestrin's own file, newest first.
    void Load(const SideFile &file, const std::string &key);
    void Save(SideFile &file, const std::string &key) const;

private:
    size_t fMost;
    std::vector<std::string> fPlaces;
};

} // namespace kestrin
