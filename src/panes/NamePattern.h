#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kestrin {

class DirListItem;

// What a user types to pick rows by name: one or more patterns separated by
// ";" (`*.txt;*.md`), where `*` stands for any run of characters and `?` for
// one. Blanks around each pattern are dropped; a pattern with no wildcard
// names one entry exactly. Names are compared byte for byte, as Linux keeps
// them: `*.TXT` does not pick "notes.txt".
class NamePattern
{
public:
    explicit NamePattern(std::string_view text);

    // Whether a leaf name matches one of the patterns.
    bool Matches(std::string_view name) const;
    // Whether a pane's row is picked: its leaf name matches (query results
    // name rows by their whole paths), and it is a file unless `folders`.
    bool Picks(const DirListItem &row, bool folders) const;

private:
    std::vector<std::string> fPatterns;
};

} // namespace kestrin
