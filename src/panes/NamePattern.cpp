#include "panes/NamePattern.h"

#include "panes/DirListItem.h"
#include "query/QueryMatcher.h"

#include <algorithm>

namespace kestrin {

namespace {

std::string_view Trimmed(std::string_view text)
{
    const size_t first = text.find_first_not_of(" \t");
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

} // namespace

NamePattern::NamePattern(std::string_view text)
{
    while (!text.empty()) {
        const size_t end = std::min(text.find(';'), text.size());
        const std::string_view pattern = Trimmed(text.substr(0, end));
        if (!pattern.empty())
            fPatterns.emplace_back(pattern);
        text.remove_prefix(std::min(end + 1, text.size()));
    }
}

bool NamePattern::Matches(std::string_view name) const
{
    // The query engine's wildcards, so that `?` in a pattern stands for one
    // character of a UTF-8 name, as it does in a query.
    return std::any_of(fPatterns.begin(), fPatterns.end(), [name](const std::string &pattern) {
        return QueryMatcher::MatchesPattern(name, pattern);
    });
}

bool NamePattern::Picks(const DirListItem &row, bool folders) const
{
    if (row.IsFolder() && !folders)
        return false;
    std::string_view name = row.Name();
    if (row.NamedByPath())
        name.remove_prefix(name.rfind('/') + 1);
    return Matches(name);
}

} // namespace kestrin
