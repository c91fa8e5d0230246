#include "widgets/StatusLog.h"

#include <QScrollBar>
#include <QTextCursor>

namespace kestrin {

StatusLog::StatusLog(QWidget *parent)
    : QPlainTextEdit(parent)
{
    setReadOnly(true);
    setLineWrapMode(QPlainTextEdit::WidgetWidth);
    setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
}

void StatusLog::Append(QPlainTextEdit *view, std::string_view text)
{
    // The log's own insertion point, after the last line it wrote: a click or
    // a selection in the view must not split an earlier line.
    // Commands are reported as they were sent, with their line end.
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r'))
        text.remove_suffix(1);
    QTextCursor end(view->document());
    end.movePosition(QTextCursor::End);
    end.insertText(QString('\n') + QString::fromUtf8(text.data(), qsizetype(text.size())));
    QScrollBar *bar = view->verticalScrollBar();
    bar->setValue(bar->maximum());
}

} // namespace kestrin
