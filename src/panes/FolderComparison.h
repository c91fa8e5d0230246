#pragma once

#include <cstdint>
#include <ctime>
#include <string>
#include <vector>

namespace kestrin {

// What two panes' rows differ in, by name: the entries to mark on each side
// so that a copy of the marked rows brings the other side up to date.
//
// An entry is marked where its name is only on its own side, or where the
// two sides hold different things under the name: a folder and a file, or
// two files that differ in size or, when both sides know it, in modification
// time by more than a second (servers and archives keep no finer times, zip
// archives only even seconds; a server that sends no exact time leaves the
// size alone to decide). Folders on both
// sides are not looked into. Names are compared byte for byte.
//
// By content, times do not count: files of the same size on both sides are
// left for their bytes to decide (ContentComparison) and marked only once
// those differ.
class FolderComparison
{
public:
    struct Entry
    {
        std::string name;
        bool folder = false;
        int64_t size = 0;
        time_t modified = 0; // 0 where the place does not know it
    };

    enum class By { SizeAndTime, Content };

    struct Result
    {
        std::vector<std::string> left;  // the names to mark on each side
        std::vector<std::string> right;
        std::vector<Entry> sameSize;    // by content: the files whose bytes decide
    };

    static Result Compare(const std::vector<Entry> &left, const std::vector<Entry> &right, By by);

private:
    static bool Differ(const Entry &left, const Entry &right, By by);
};

} // namespace kestrin
