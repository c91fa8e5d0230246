#include "panes/FtpLogView.h"

#include <QScrollBar>
#include <QTextCursor>

namespace kestrin {

FtpLogView::FtpLogView(QWidget *parent)
    : QPlainTextEdit(parent)
{
    setObjectName("FtpLog");
    setReadOnly(true);
    setLineWrapMode(QPlainTextEdit::WidgetWidth);
}

void FtpLogView::Append(const std::string &text)
{
    std::string line = text;
    while (!line.empty() && (line.back() == '\n' || line.back() == '\r'))
        line.pop_back();
    QTextCursor cursor = textCursor();
    cursor.insertText("\n" + QString::fromStdString(line));
    setTextCursor(cursor);
    verticalScrollBar()->setValue(verticalScrollBar()->maximum());
}

} // namespace kestrin
