#pragma once

// A file of Kestrin's own in its settings folder, beside the profile and the
// session files that keep exactly their historic keys: what Kestrin keeps
// beyond them (a session's TLS choice, a pane's history, the hotlist, ...)
// lives in such a file, in plain key=value lines. A key may stand on several
// lines (a list keeps its order). The file is written whole under a temporary
// name and renamed into place, so a reader never sees half of it, and it is
// removed when nothing is left to keep. Keys a build does not know are kept.

#include <string>
#include <utility>
#include <vector>

namespace kestrin {

class SideFile
{
public:
    // The file `name` of the settings folder; empty when it does not exist
    // or cannot be read.
    static SideFile Read(const std::string &name);
    // Removes the file `name`; true when there is none left.
    static bool Remove(const std::string &name);

    // The first value of `key`, or empty.
    std::string Get(const std::string &key) const;
    // Every value of `key`, in the file's order.
    std::vector<std::string> GetAll(const std::string &key) const;
    // Sets `key` to one value, or removes it when `value` is empty.
    void Set(const std::string &key, const std::string &value);
    // Sets `key` to the list `values` (none removes it). A key keeps its
    // place in the file; a new one goes at the end.
    void SetAll(const std::string &key, const std::vector<std::string> &values);
    // The keys in the file's order, each once.
    std::vector<std::string> Keys() const;
    bool Empty() const { return fValues.empty(); }

    // Writes the file, owner-only, or removes it when nothing is set. False
    // when it could not.
    bool Write() const;

private:
    std::string fName;
    std::vector<std::pair<std::string, std::string>> fValues;
};

} // namespace kestrin
