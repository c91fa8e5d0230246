#include "fileops/OverWin.h"

#include "fileops/FileOpsMessages.h"
#include "widgets/PlaceOnScreen.h"
#include "widgets/RgbColor.h"
#include "widgets/WindowConventions.h"

#include <QCloseEvent>
#include <QLabel>
#include <QPushButton>

namespace kestrin {

namespace {

constexpr int kWidth = 450;
constexpr int kHeight = 162;
constexpr int kMargin = 10;
constexpr int kLineHeight = 17;
constexpr int kButtonHeight = 26;
constexpr int kButtonGap = 8;

} // namespace

OverWin::OverWin(const QRect &frame, const QString &title, QWidget *parent)
    : QWidget(parent, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint)
{
    setWindowTitle(title);
    setFixedSize(kWidth, kHeight);
    PlaceOnScreen(this,
                  QRect(frame.x() + (frame.width() - kWidth) / 2,
                        frame.y() + (frame.height() - kHeight) / 2,
                        kWidth,
                        kHeight));

    QPalette panel = palette();
    panel.setColor(QPalette::Window, kPanelGrey);
    setPalette(panel);
    setAutoFillBackground(true);

    const char *names[] = {"OverwriteFile", "OverwriteWith", "OverwriteInfo1", "OverwriteInfo2"};
    for (size_t i = 0; i < fLines.size(); i++) {
        fLines[i] = new QLabel(this);
        fLines[i]->setObjectName(names[i]);
        fLines[i]->setGeometry(kMargin,
                               kMargin + int(i) * kLineHeight,
                               kWidth - 2 * kMargin,
                               kLineHeight);
    }

    struct Answer
    {
        const char *label;
        const char *name;
        int32_t code;
    };
    const Answer answers[] = {{"Overwrite", "Overwrite", kOverwrite},
                              {"Overwrite All", "OverwriteAll", kOverwriteAll},
                              {"Overwrite All Older", "OverwriteOlder", kOverwriteAllOlder},
                              {"Skip", "Skip", kSkip},
                              {"Skip All", "SkipAll", kSkipAll},
                              {"Cancel", "Cancel", kCancelBatch}};
    const int buttonWidth = (kWidth - 2 * kMargin - 2 * kButtonGap) / 3;
    const int firstRow = kHeight - kMargin - 2 * kButtonHeight - kButtonGap;
    QPushButton *buttons[6] = {};
    for (int i = 0; i < 6; i++) {
        buttons[i] = AddButton(answers[i].label, answers[i].name, answers[i].code);
        buttons[i]->setGeometry(kMargin + (i % 3) * (buttonWidth + kButtonGap),
                                firstRow + (i / 3) * (kButtonHeight + kButtonGap),
                                buttonWidth,
                                kButtonHeight);
    }
    // Return keeps the target, the answer that loses nothing; Escape ends
    // the batch. Only an answer closes the question.
    QPushButton *skip = buttons[3];
    WindowConventions::Apply(this,
                             {.firstField = skip,
                              .defaultButton = skip,
                              .cancelButton = buttons[5],
                              .closable = false});
}

OverWin::~OverWin() = default;

QPushButton *OverWin::AddButton(const QString &label, const QString &name, int32_t code)
{
    auto *button = new QPushButton(label, this);
    button->setObjectName(name);
    button->setAutoDefault(false);
    connect(button, &QPushButton::clicked, this, [this, code] {
        platform::Message answer{uint32_t(code)};
        Dispatch(answer);
    });
    return button;
}

void OverWin::SetPaths(const QString &line1,
                       const QString &line2,
                       const QString &line3,
                       const QString &line4)
{
    fLines[0]->setText("Overwrite: " + line1);
    fLines[1]->setText("With file: " + line2);
    fLines[2]->setText(line3);
    fLines[3]->setText(line4);
}

void OverWin::DoDisplay()
{
    fDecision = kNoDecision;
    fShown = true;
    show();
    raise();
    activateWindow();
}

void OverWin::HideDisplay()
{
    hide();
    fShown = false;
}

void OverWin::MessageReceived(platform::Message &message)
{
    const int32_t code = int32_t(message.what);
    if (code < kOverwrite || code > kCancelBatch)
        return;
    HideDisplay();
    fDecision = code;
    emit Answered(code);
}

void OverWin::closeEvent(QCloseEvent *event)
{
    event->ignore();
}

} // namespace kestrin
