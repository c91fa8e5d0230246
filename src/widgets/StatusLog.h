#pragma once

#include <QPlainTextEdit>
#include <string_view>

namespace kestrin {

// A read-only, word-wrapping view of an FTP conversation's log lines: the
// status window's and an FTP pane's. Lines only ever come in; the log grows
// for the life of the view.
class StatusLog : public QPlainTextEdit
{
public:
    explicit StatusLog(QWidget *parent = nullptr);

    void Append(std::string_view text) { Append(this, text); }

    // Puts a line feed and `text` after the last line of the log and scrolls
    // to the end, so the newest line is in sight. What the user selected to
    // copy stays selected.
    static void Append(QPlainTextEdit *view, std::string_view text);
};

} // namespace kestrin
