#pragma once

#include "query/QueryNode.h"

#include <string>
#include <string_view>
#include <sys/stat.h>

namespace kestrin {

// What the matcher asks of one entry. The stat data is asked for only when a
// comparison needs it, so a walk answers it lazily.
class QueryCandidate
{
public:
    virtual ~QueryCandidate() = default;
    // The leaf name.
    virtual std::string_view Name() const = 0;
    virtual std::string Path() const = 0;
    // The entry's own stat data (links not followed); null when it cannot
    // be read.
    virtual const struct stat *Info() = 0;
};

// Whether an entry satisfies a predicate. `name` is the leaf name, `size`
// the size in bytes, `last_modified` the modification time in seconds since
// 1970; any other name is a typed attribute of the entry (Node.h), compared
// by its type: strings as text, integers, times, sizes and booleans as
// integers, floats and doubles as real numbers. An entry without the
// attribute matches no comparison on it, not even !=, as on BFS, where such
// an entry is not in the attribute's index at all. Strings compared with ==
// and != are patterns (`*` any run of characters, `?` one character);
// ordered comparisons of strings are byte-wise.
class QueryMatcher
{
public:
    static bool Matches(const QueryNode &predicate, QueryCandidate &candidate);
    static bool MatchesPattern(std::string_view text, std::string_view pattern);
};

} // namespace kestrin
