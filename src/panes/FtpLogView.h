#pragma once

#include <QPlainTextEdit>
#include <string>

namespace kestrin {

// The log of a pane's FTP conversation: every line the client reports, for
// the life of the pane.
class FtpLogView : public QPlainTextEdit
{
    Q_OBJECT

public:
    explicit FtpLogView(QWidget *parent = nullptr);

    // Puts a line feed and `text` at the insertion point and scrolls to the
    // end. The line end a command was sent with is left out.
    void Append(const std::string &text);
};

} // namespace kestrin
