#include "fileops/mdlGetTextDlg.h"
#include "widgets/RgbColor.h"
#include "widgets/WindowConventions.h"

#include <QFontMetrics>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <cstring>

namespace kestrin {

namespace {

// The frames are given as left, top, right, bottom, both edges inclusive.
QRect Frame(int left, int top, int right, int bottom)
{
    return QRect(QPoint(left, top), QPoint(right, bottom));
}

} // namespace

mdlGetTextDlg::mdlGetTextDlg(const QString &prompt, char *buffer, int32_t capacity, QWidget *parent)
    : ModalDlg(parent)
    , fBuffer(buffer)
    , fCapacity(capacity)
{
    auto *background = new QWidget(this);
    background->setObjectName("Background");
    background->setGeometry(rect());
    QPalette panel = background->palette();
    panel.setColor(QPalette::Window, kPanelGrey);
    background->setPalette(panel);
    background->setAutoFillBackground(true);

    auto *ok = new QPushButton("OK", background);
    ok->setObjectName("OK Button");
    ok->setGeometry(Frame(170, 10, 240, 10 + ok->sizeHint().height() - 1));
    ok->setDefault(true);
    connect(ok, &QPushButton::clicked, this, [this] {
        platform::Message message(kMsgModalOk);
        Dispatch(message);
    });

    auto *cancel = new QPushButton("Cancel", background);
    cancel->setObjectName("Cancel Button");
    cancel->setAutoDefault(false);
    cancel->setGeometry(Frame(170, 45, 240, 45 + cancel->sizeHint().height() - 1));
    connect(cancel, &QPushButton::clicked, this, [this] {
        platform::Message message(kMsgModalCancel);
        Dispatch(message);
    });

    fLabel = new QLabel(prompt, background);
    fLabel->setObjectName("Label1");
    fLabel->setGeometry(Frame(0, 0, fLabel->fontMetrics().horizontalAdvance(prompt), 20));

    // The buffer need not be terminated within its capacity: this very
    // dialog may have filled it.
    const size_t initial = buffer != nullptr && capacity > 0 ? strnlen(buffer, size_t(capacity))
                                                             : 0;
    fText = new QLineEdit(QString::fromUtf8(buffer, qsizetype(initial)), background);
    fText->setObjectName("Text1");
    fText->setGeometry(Frame(0, 22, 150, 42));
    fLabel->setBuddy(fText);
    // The dialog has no title: the prompt is what it is called.
    setAccessibleName(prompt);
    WindowConventions::Apply(this,
                             {.firstField = fText, .defaultButton = ok, .cancelButton = cancel});
}

mdlGetTextDlg::~mdlGetTextDlg() = default;

bool mdlGetTextDlg::ValidateData()
{
    if (fBuffer != nullptr && fCapacity > 0)
        strncpy(fBuffer, fText->text().toUtf8().constData(), size_t(fCapacity));
    return true;
}

} // namespace kestrin
