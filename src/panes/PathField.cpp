#include "panes/PathField.h"

#include "panes/PathCompletion.h"

#include <QAbstractItemView>
#include <QCompleter>
#include <QKeyEvent>
#include <QStringListModel>
#include <QToolTip>

namespace kestrin {

namespace {

// The part of a path that is not there shows on this colour.
const QColor kMissingColor(230, 60, 50);

} // namespace

PathField::PathField(QWidget *parent)
    : QLineEdit(parent)
    , fPlain(palette())
    , fCompletion(new PathCompletion(this))
    , fNames(new QStringListModel(this))
    , fCompleter(new QCompleter(fNames, this))
{
    setObjectName("PathField");
    setAccessibleName("Path");
    fCompleter->setCompletionMode(QCompleter::PopupCompletion);
    fCompleter->setCaseSensitivity(Qt::CaseSensitive);
    fCompleter->setModelSorting(QCompleter::CaseSensitivelySortedModel);
    setCompleter(fCompleter);
    connect(fCompletion, &PathCompletion::Offered, this, &PathField::Offered);
    connect(this, &QLineEdit::textEdited, this, [this] { fEdited = true; });
    connect(this, &QLineEdit::textChanged, this, [this](const QString &text) {
        if (fMarking) {
            Unmark();
            emit Unmarked();
        }
        if (fComplete)
            fCompletion->Typed(text.toStdString(), fStanding);
    });
}

void PathField::Begin(const QString &text, const std::string &standing, bool complete)
{
    if (isHidden()) {
        fStanding = standing;
        fComplete = complete;
        Unmark();
        setText(text);
        fEdited = false;
    }
    selectAll();
    show();
    raise();
    setFocus(Qt::ShortcutFocusReason);
}

void PathField::MarkMissing(const QString &path, int from, const QString &problem)
{
    setText(path);
    setSelection(from, int(path.size()) - from);
    QPalette colours = palette();
    colours.setColor(QPalette::Highlight, kMissingColor);
    colours.setColor(QPalette::HighlightedText, Qt::white);
    setPalette(colours);
    setToolTip(problem);
    // Said where the eyes are, even with the pane's footer hidden.
    QToolTip::showText(mapToGlobal(QPoint(0, height())), problem, this);
    // Set after the text, whose change unmarks.
    fMarking = true;
}

void PathField::Unmark()
{
    fMarking = false;
    setPalette(fPlain);
    setToolTip({});
    QToolTip::hideText();
}

void PathField::Offered(const QStringList &completions)
{
    fNames->setStringList(completions);
    if (!hasFocus() || !fEdited || completions.isEmpty()) {
        fCompleter->popup()->hide();
        return;
    }
    // The names arrive after the key that asked for them: the pop-up opens
    // for the text as it stands by then.
    fCompleter->setCompletionPrefix(text());
    if (fCompleter->completionCount() > 0 && text() != fCompleter->currentCompletion())
        fCompleter->complete();
    else
        fCompleter->popup()->hide();
}

void PathField::TakeCompletion()
{
    const QModelIndex current = fCompleter->popup()->currentIndex();
    QString taken = current.isValid() ? current.data().toString() : fCompleter->currentCompletion();
    fCompleter->popup()->hide();
    if (!taken.isEmpty() && taken.startsWith(text()))
        setText(taken);
}

bool PathField::event(QEvent *event)
{
    // Tab completes, as in a shell, instead of leaving the field.
    if (event->type() == QEvent::KeyPress) {
        const auto *key = static_cast<QKeyEvent *>(event);
        if (key->key() == Qt::Key_Tab && key->modifiers() == Qt::NoModifier) {
            fCompleter->setCompletionPrefix(text());
            TakeCompletion();
            return true;
        }
    }
    return QLineEdit::event(event);
}

void PathField::keyPressEvent(QKeyEvent *event)
{
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        fCompleter->popup()->hide();
        emit Accepted(text());
        return;
    case Qt::Key_Escape:
        emit Cancelled();
        return;
    default:
        QLineEdit::keyPressEvent(event);
    }
}

void PathField::focusOutEvent(QFocusEvent *event)
{
    QLineEdit::focusOutEvent(event);
    // The completions' pop-up, an alert or another window taking the
    // keyboard for a while leave the field as it is.
    if (event->reason() == Qt::PopupFocusReason || event->reason() == Qt::ActiveWindowFocusReason
        || isHidden())
        return;
    emit Cancelled();
}

} // namespace kestrin
