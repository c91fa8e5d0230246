#pragma once

#include "panes/FolderComparison.h"

#include <string>
#include <vector>

class QWidget;

namespace kestrin {

class DirPane;
class PaneModel;

// "Compare Folders" and "Compare Folders by Content": the marks of the
// focused pane and of the pane its copies go to are set to what differs
// between them (FolderComparison), so that a copy of the marked rows brings
// the other side up to date. By content, the files of equal size are read
// on a worker behind a progress window (CompareWin); only local folders can
// be read that way. Whatever cannot be compared is said in an alert.
class CompareCommands
{
public:
    static void Compare(DirPane *focused, DirPane *other, FolderComparison::By by, QWidget *window);

private:
    // Why the two panes cannot be compared that way; empty when they can.
    static std::string Refusal(const DirPane *focused, const DirPane *other, FolderComparison::By by);
    static std::vector<FolderComparison::Entry> EntriesOf(const PaneModel &model);
    // Clears the pane's marks and marks the rows of those names.
    static void MarkOnly(PaneModel &model, const std::vector<std::string> &names);
    static void MarkToo(PaneModel &model, const std::vector<std::string> &names);
    static void SayWhenSame(const PaneModel &left, const PaneModel &right);
};

} // namespace kestrin
