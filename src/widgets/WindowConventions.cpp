#include "widgets/WindowConventions.h"

#include <QAbstractItemView>
#include <QAction>
#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPushButton>
#include <QShortcut>
#include <algorithm>

namespace kestrin {

namespace {

const QKeySequence kCloseKey(Qt::CTRL | Qt::Key_W);

bool Pressable(const QAbstractButton *button)
{
    return button != nullptr && button->isEnabled() && button->isVisible();
}

} // namespace

WindowConventions *WindowConventions::Apply(QWidget *window, const Roles &roles)
{
    return new WindowConventions(window, roles);
}

WindowConventions::WindowConventions(QWidget *window, const Roles &roles)
    : QObject(window)
    , fWindow(window)
    , fFirstField(roles.firstField)
    , fDefault(roles.defaultButton)
    , fCancel(roles.cancelButton)
    , fClosable(roles.closable)
{
    setObjectName("WindowConventions");
    // Drawn as the default, so the user sees what Return presses.
    if (auto *button = qobject_cast<QPushButton *>(roles.defaultButton))
        button->setDefault(true);
    window->installEventFilter(this);
    if (fClosable && !HasCloseKey()) {
        auto *close = new QShortcut(kCloseKey, window);
        connect(close, &QShortcut::activated, window, &QWidget::close);
    }
    FocusFirstField();
}

// A window whose menus close it with Ctrl+W already: a second shortcut on
// the same keys would make both of them ambiguous, and neither would work.
bool WindowConventions::HasCloseKey() const
{
    const QList<QAction *> actions = fWindow->findChildren<QAction *>();
    return std::any_of(actions.begin(), actions.end(), [](const QAction *action) {
        return action->shortcuts().contains(kCloseKey);
    });
}

void WindowConventions::FocusFirstField()
{
    if (fFirstField == nullptr)
        return;
    // Given before the window is active, the focus waits for it.
    fFirstField->setFocus(Qt::ActiveWindowFocusReason);
    // What the field holds already is selected, so that typing replaces it
    // and the keys move from it, as in any desktop prompt.
    if (auto *field = qobject_cast<QLineEdit *>(fFirstField.data()))
        field->selectAll();
}

// Key presses that the focused control left alone come up to the window, as
// they come to a dialog; so do the window's own events.
bool WindowConventions::eventFilter(QObject *watched, QEvent *event)
{
    if (watched != fWindow)
        return false;
    if (event->type() == QEvent::Show && !event->spontaneous()) {
        // A window shown again (a question asked anew) starts over.
        FocusFirstField();
        return false;
    }
    if (event->type() != QEvent::KeyPress)
        return false;
    const auto *key = static_cast<QKeyEvent *>(event);
    const Qt::KeyboardModifiers modifiers = key->modifiers() & ~Qt::KeypadModifier;
    if (modifiers != Qt::NoModifier)
        return false;
    switch (key->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        return ReturnPressed();
    case Qt::Key_Escape:
        return EscapePressed();
    default:
        return false;
    }
}

bool WindowConventions::ReturnPressed()
{
    QWidget *focus = fWindow->focusWidget();
    // A list has invoked its row on Return already.
    if (qobject_cast<QAbstractItemView *>(focus) != nullptr)
        return true;
    // A focused push button is pressed, as in a dialog; one that opens a
    // menu is a choice like a combo box's, and Return goes past it.
    auto *focusedButton = qobject_cast<QPushButton *>(focus);
    if (focusedButton != nullptr && focusedButton->menu() != nullptr)
        focusedButton = nullptr;
    QAbstractButton *target = Pressable(focusedButton) ? focusedButton : fDefault.data();
    if (!Pressable(target))
        return false;
    target->click();
    return true;
}

bool WindowConventions::EscapePressed()
{
    if (Pressable(fCancel)) {
        fCancel->click();
        return true;
    }
    if (!fClosable)
        return false;
    fWindow->close();
    return true;
}

} // namespace kestrin
