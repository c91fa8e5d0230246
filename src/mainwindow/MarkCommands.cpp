#include "mainwindow/MarkCommands.h"

#include "fileops/GetTextWin.h"
#include "mainwindow/CompareCommands.h"
#include "mainwindow/WindowMessages.h"
#include "panes/DirPane.h"
#include "panes/MarkedList.h"
#include "panes/NamePattern.h"
#include "panes/PaneModel.h"

#include <QWidget>
#include <string>

namespace kestrin {

namespace {

constexpr int kPromptWidth = 380;

// What was asked last, offered again: marking and then unmarking the same
// rows, or marking a second pattern after a first, is the usual sequence.
struct LastPattern
{
    std::string text = "*";
    bool folders = false;
};

LastPattern &Last()
{
    static LastPattern last;
    return last;
}

} // namespace

bool MarkCommands::Handle(platform::Message &message,
                          DirPane *focused,
                          DirPane *other,
                          QWidget *window,
                          platform::Handler *replies)
{
    switch (message.what) {
    case kCmdMarkByPattern:
    case kCmdUnmarkByPattern:
        if (focused != nullptr)
            AskPattern(message.what == kCmdMarkByPattern, window, replies);
        return true;
    case kMsgMarkPatternText:
    case kMsgUnmarkPatternText:
        if (focused != nullptr)
            MarkByPattern(message, *focused, message.what == kMsgMarkPatternText);
        return true;
    case kCmdCompareFolders:
    case kCmdCompareByContent:
        CompareCommands::Compare(focused,
                                 other,
                                 message.what == kCmdCompareByContent ? FolderComparison::By::Content
                                                                      : FolderComparison::By::SizeAndTime,
                                 window);
        return true;
    default:
        return false;
    }
}

void MarkCommands::AskPattern(bool mark, QWidget *window, platform::Handler *replies)
{
    QRect frame(0, 0, kPromptWidth, 0);
    frame.moveCenter(window->geometry().center());
    const QString verb = mark ? "Mark" : "Unmark";
    // The prompt owns itself and blocks the window until it is answered.
    auto *prompt = new GetTextWin(frame,
                                  verb + " by Pattern",
                                  replies,
                                  verb + " the files whose names match (like *.txt; *.md):",
                                  QString::fromStdString(Last().text),
                                  int32_t(mark ? kMsgMarkPatternText : kMsgUnmarkPatternText),
                                  verb,
                                  "Cancel");
    prompt->AddCheckBox("Folders too", Last().folders);
    prompt->show();
    prompt->activateWindow();
}

void MarkCommands::MarkByPattern(const platform::Message &answer, DirPane &pane, bool mark)
{
    int8_t button = 1;
    std::string text;
    bool folders = false;
    answer.FindInt8("button", &button);
    answer.FindString("text", &text);
    answer.FindBool("checked", &folders);
    if (button != 0)
        return;
    Last() = {text, folders};
    const NamePattern pattern(text);
    pane.Model().Marked().SetWhere(
        [&pattern, folders](const DirListItem &row) { return pattern.Picks(row, folders); },
        mark);
}

} // namespace kestrin
