#include "fileops/GetTextWin.h"
#include "widgets/PlaceOnScreen.h"
#include "widgets/RgbColor.h"
#include "widgets/WindowConventions.h"

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <algorithm>
#include <vector>

namespace kestrin {

namespace {

constexpr int kMargin = 10;
constexpr int kLabelHeight = 20;
constexpr int kFieldHeight = 22;
constexpr int kGap = 6;
constexpr int kButtonWidth = 75;
constexpr int kButtonGap = 8;

} // namespace

GetTextWin::GetTextWin(const QRect &frame,
                       const QString &title,
                       platform::Handler *target,
                       const QString &prompt,
                       const QString &text,
                       int32_t replyCode,
                       const QString &button1,
                       const QString &button2,
                       const QString &button3)
    : QWidget(nullptr, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint)
    , fTitle(title)
    , fTarget(target)
    , fReplyCode(replyCode)
{
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowModality(Qt::ApplicationModal);
    setWindowTitle(title);
    QPalette panel = palette();
    panel.setColor(QPalette::Window, kPanelGrey);
    setPalette(panel);
    setAutoFillBackground(true);

    struct Button
    {
        const QString &label;
        const char *name;
        uint32_t what;
    };
    const Button wanted[] = {{button1, "Button1", kMsgGetTextButton1},
                             {button2, "Button2", kMsgGetTextButton2},
                             {button3, "Button3", kMsgGetTextButton3}};
    std::vector<QPushButton *> buttons;
    for (const Button &button : wanted) {
        if (button.what != kMsgGetTextButton1 && button.label.isEmpty())
            continue;
        auto *pushButton = new QPushButton(button.label, this);
        pushButton->setObjectName(button.name);
        pushButton->setAutoDefault(false);
        const uint32_t what = button.what;
        connect(pushButton, &QPushButton::clicked, this, [this, what] {
            platform::Message message(what);
            Dispatch(message);
        });
        buttons.push_back(pushButton);
    }

    // Buttons sit in a row along the bottom right; the window widens when
    // they need more room than the frame gives.
    const int count = int(buttons.size());
    const int row = count * kButtonWidth + (count - 1) * kButtonGap;
    const int width = std::max(frame.width(), row + 2 * kMargin);
    const int buttonHeight = buttons.front()->sizeHint().height();
    const int buttonTop = kMargin + kLabelHeight + kGap + kFieldHeight + kGap + kMargin;
    const int height = buttonTop + buttonHeight + kMargin;
    setFixedSize(width, height);
    PlaceOnScreen(this, QRect(frame.x(), frame.y(), width, height));

    auto *label = new QLabel(prompt, this);
    label->setObjectName("Label1");
    label->setGeometry(kMargin, kMargin, width - 2 * kMargin, kLabelHeight);

    fText = new QLineEdit(text, this);
    fText->setObjectName("Text1");
    fText->setGeometry(kMargin, kMargin + kLabelHeight + kGap, width - 2 * kMargin, kFieldHeight);

    int left = width - kMargin - row;
    for (QPushButton *button : buttons) {
        button->setGeometry(left, buttonTop, kButtonWidth, buttonHeight);
        left += kButtonWidth + kButtonGap;
    }
    label->setBuddy(fText);
    // Only a button ends the prompt, so that its target always hears. The
    // first reports the text; of the others, which report nothing, Escape
    // presses the last.
    WindowConventions::Apply(this,
                             {.firstField = fText,
                              .defaultButton = buttons.front(),
                              .cancelButton = count > 1 ? buttons.back() : nullptr,
                              .closable = false});
}

GetTextWin::~GetTextWin() = default;

void GetTextWin::AddCheckBox(const QString &label, bool checked)
{
    fCheck = new QCheckBox(label, this);
    fCheck->setObjectName("Check1");
    fCheck->setChecked(checked);
    const int top = fText->geometry().bottom() + 1 + kGap;
    const int height = fCheck->sizeHint().height();
    fCheck->setGeometry(kMargin, top, width() - 2 * kMargin, height);
    // The buttons move down under it, and Tab reaches it before them.
    for (QPushButton *button : findChildren<QPushButton *>())
        button->move(button->x(), button->y() + height + kGap);
    setFixedSize(width(), this->height() + height + kGap);
    setTabOrder(fText, fCheck);
}

void GetTextWin::MessageReceived(platform::Message &message)
{
    int8_t button;
    switch (message.what) {
    case kMsgGetTextButton1:
        button = 0;
        break;
    case kMsgGetTextButton2:
        button = 1;
        break;
    case kMsgGetTextButton3:
        button = 2;
        break;
    default:
        Handler::MessageReceived(message);
        return;
    }

    platform::Message reply{uint32_t(fReplyCode)};
    reply.AddString("title", fTitle.toStdString());
    reply.AddString("text", button == 0 ? fText->text().toStdString() : std::string());
    reply.AddInt8("button", button);
    if (fCheck != nullptr)
        reply.AddBool("checked", button == 0 && fCheck->isChecked());
    // The target may answer by closing this window itself.
    const QPointer<GetTextWin> self(this);
    if (fTarget != nullptr)
        fTarget->Dispatch(reply);
    if (self)
        close();
}

} // namespace kestrin
