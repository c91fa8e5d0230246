#include "fileops/PermissionsWin.h"

#include "app/EntryTexts.h"
#include "fileops/FileOpsMessages.h"
#include "widgets/PlaceOnScreen.h"
#include "widgets/RgbColor.h"
#include "widgets/WindowConventions.h"

#include <QCheckBox>
#include <QLabel>
#include <QPushButton>

namespace kestrin {

namespace {

constexpr int kWidth = 310;
constexpr int kHeight = 212;
constexpr int kRowLabelLeft = 16;
constexpr int kGridLeft = 80;
constexpr int kGridTop = 40;
constexpr int kCell = 36;
constexpr int kButtonWidth = 80;
constexpr int kButtonHeight = 26;

} // namespace

PermissionsWin::PermissionsWin(const QRect &frame, platform::Handler *target, QWidget *parent)
    : QWidget(parent,
              Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint)
    , fTarget(target)
{
    setWindowTitle("Set File Permissions");
    setFixedSize(kWidth, kHeight);
    PlaceOnScreen(this,
                  QRect(frame.x() + (frame.width() - kWidth) / 2,
                        frame.y() + (frame.height() - kHeight) / 2,
                        kWidth,
                        kHeight));

    auto *background = new QWidget(this);
    background->setGeometry(0, 0, kWidth, kHeight);
    QPalette panel = background->palette();
    panel.setColor(QPalette::Window, kPanelGrey);
    background->setPalette(panel);
    background->setAutoFillBackground(true);

    const char *rows[][2] = {{"bsvOwner", "Owner"}, {"bsvGroup", "Group"}, {"bsvPublic", "Public"}};
    const char *columns[][2] = {{"bsvRead", "R"}, {"bsvWrite", "W"}, {"bsvExecute", "E"}};
    // The boxes have no text of their own: a screen reader says whose bit
    // each one is.
    const char *spokenColumns[] = {"read", "write", "execute"};
    for (int box = 0; box < 9; box++) {
        fBoxes[size_t(box)] = new QCheckBox(background);
        fBoxes[size_t(box)]->setObjectName(QString("CheckBox%1").arg(box + 1));
        fBoxes[size_t(box)]->setGeometry(kGridLeft + (box % 3) * kCell,
                                         kGridTop + (box / 3) * kCell,
                                         20,
                                         20);
        fBoxes[size_t(box)]->setAccessibleName(
            QString("%1 %2").arg(rows[box / 3][1], spokenColumns[box % 3]));
    }
    for (int i = 0; i < 3; i++) {
        auto *row = new QLabel(rows[i][1], background);
        row->setObjectName(rows[i][0]);
        row->setGeometry(kRowLabelLeft, kGridTop + i * kCell, kGridLeft - kRowLabelLeft, 20);
        row->setBuddy(fBoxes[size_t(3 * i)]);
        auto *column = new QLabel(columns[i][1], background);
        column->setObjectName(columns[i][0]);
        column->setGeometry(kGridLeft + i * kCell + 2, kGridTop - 24, kCell, 20);
    }

    const auto addButton = [this,
                            background](const char *name, const char *label, uint32_t code, int y) {
        auto *button = new QPushButton(label, background);
        button->setObjectName(name);
        button->setAutoDefault(false);
        button->setGeometry(kWidth - kButtonWidth - 16, y, kButtonWidth, kButtonHeight);
        connect(button, &QPushButton::clicked, this, [this, code] {
            platform::Message pressed(code);
            Dispatch(pressed);
        });
    };
    addButton("bOK", "OK", kMsgPermissionsOK, kGridTop);
    addButton("bCancel", "Cancel", kMsgPermissionsCancel, kGridTop + kButtonHeight + 10);
    WindowConventions::Apply(this,
                             {.firstField = fBoxes[0],
                              .defaultButton = findChild<QPushButton *>("bOK"),
                              .cancelButton = findChild<QPushButton *>("bCancel")});
    show();
}

PermissionsWin::~PermissionsWin() = default;

int32_t PermissionsWin::GetPermissions() const
{
    int32_t mode = 0;
    for (size_t box = 0; box < fBoxes.size(); box++) {
        if (fBoxes[box]->isChecked())
            mode |= 0400 >> box;
    }
    return mode;
}

std::string PermissionsWin::GetStrPermissions(unsigned int mode)
{
    return EntryTexts::PermissionText(mode_t(mode));
}

void PermissionsWin::MessageReceived(platform::Message &message)
{
    switch (message.what) {
    case kMsgPermissionsOK: {
        platform::Message result(kMsgSetPermissions);
        result.AddInt32("Permissions", GetPermissions());
        if (fTarget != nullptr)
            fTarget->Post(result);
        break;
    }
    case kMsgPermissionsCancel:
        close();
        break;
    default:
        break;
    }
}

} // namespace kestrin
