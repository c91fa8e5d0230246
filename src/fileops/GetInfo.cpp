#include "fileops/GetInfo.h"

#include "app/PaneSettings.h"
#include "fileops/AttributeView.h"
#include "fileops/KestrinEntry.h"
#include "widgets/PlaceOnScreen.h"
#include "widgets/WindowConventions.h"

#include <QFileIconProvider>
#include <QLabel>

namespace kestrin {

namespace {

constexpr int kWidth = 340;
constexpr int kHeight = 380;
constexpr int kBandWidth = 32;
constexpr int kLabelLeft = 40;
constexpr int kLabelWidth = 70;
constexpr int kValueLeft = kLabelLeft + kLabelWidth + 8;
constexpr int kLineHeight = 20;
constexpr int kFirstLine = 50;
const QColor kBandColor(152, 168, 200);

} // namespace

GetInfo::GetInfo(const std::string &path, const QRect &near, QWidget *parent)
    : QWidget(parent, Qt::Window)
    , fFacts(EntryFacts::Read(path, PaneSettings::Load().dateFormat))
{
    setWindowTitle(QString::fromStdString(fFacts.name) + " Info");
    PlaceOnScreen(this,
                  QRect(near.center() - QPoint(kWidth / 2, kHeight / 2), QSize(kWidth, kHeight)));

    auto *band = new QWidget(this);
    band->setObjectName("LeftView");
    band->setGeometry(0, 0, kBandWidth, kHeight);
    QPalette bandColors = band->palette();
    bandColors.setColor(QPalette::Window, kBandColor);
    band->setPalette(bandColors);
    band->setAutoFillBackground(true);

    auto *picture = new QLabel(this);
    picture->setObjectName("PicView");
    picture->setGeometry(12, 8, 32, 32);
    const QFileIconProvider icons;
    const QIcon icon = fFacts.kind == EntryFacts::Kind::Volume
                           ? icons.icon(QFileIconProvider::Drive)
                           : icons.icon(QFileInfo(QString::fromStdString(path)));
    picture->setPixmap(icon.pixmap(32, 32));

    auto *name = new QLabel(QString::fromStdString(fFacts.name), this);
    name->setObjectName("name");
    QFont bold = name->font();
    bold.setBold(true);
    name->setFont(bold);
    name->setGeometry(kValueLeft - 60, 14, kWidth - kValueLeft + 50, kLineHeight);

    int y = kFirstLine;
    const auto pair =
        [this,
         &y](const char *label, const char *labelText, const char *value, const std::string &text) {
            AddLabel(label, labelText, y);
            QLabel *shown = AddValue(value, text, y);
            y += kLineHeight;
            return shown;
        };
    fSize = pair("lblSize", "Size", "size", fFacts.sizeText);
    pair("lblCreated", "Created", "Created", fFacts.created);
    pair("lblModified", "Modified", "Modified", fFacts.modified);
    pair("lblKind", "Kind", "kind", fFacts.kindText);
    pair("lblPath", "Path", "path", fFacts.path);
    if (fFacts.kind == EntryFacts::Kind::Link)
        pair("lbllinkto", "Link To", "linkto", fFacts.linkTo);
    QLabel *attributesLabel = AddLabel("lblAttributes", "Attributes", y);
    y += kLineHeight;
    fAttributes = new AttributeView(this);
    fAttributes->setObjectName("AttributeView");
    fAttributes->setGeometry(kLabelLeft, y, kWidth - kLabelLeft - 8, kHeight - y - 8);
    fAttributes->SetRows(fFacts.attributes);
    attributesLabel->setBuddy(fAttributes);
    // A list is not named by its label's buddy link alone.
    fAttributes->setAccessibleName(attributesLabel->text());
    // Nothing to fill in: the window is read, from its list of attributes.
    WindowConventions::Apply(this, {.firstField = fAttributes});

    if (fFacts.kind == EntryFacts::Kind::Folder)
        CountFolder();
}

GetInfo::~GetInfo()
{
    fCount.Stop();
}

QLabel *GetInfo::AddLabel(const QString &name, const QString &text, int y)
{
    auto *label = new QLabel(text, this);
    label->setObjectName(name);
    label->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    label->setGeometry(kLabelLeft, y, kLabelWidth, kLineHeight);
    return label;
}

QLabel *GetInfo::AddValue(const QString &name, const std::string &text, int y)
{
    auto *value = new QLabel(QString::fromStdString(text), this);
    value->setObjectName(name);
    value->setGeometry(kValueLeft, y, kWidth - kValueLeft - 8, kLineHeight);
    value->setTextInteractionFlags(Qt::TextSelectableByMouse);
    return value;
}

void GetInfo::CountFolder()
{
    fCounting = true;
    fCount = platform::Background::Run(
        this,
        [path = fFacts.path](const std::atomic<bool> &stop) {
            KestrinEntry folder(path);
            folder.SetStopFlag(&stop);
            const double size = folder.CopySize();
            return std::pair{size, folder.EntryCount()};
        },
        [this](std::pair<double, int32_t> counted) {
            FolderCounted(counted.first, counted.second);
        });
}

void GetInfo::FolderCounted(double size, int32_t count)
{
    fCounting = false;
    fFacts.sizeText = EntryFacts::FolderSizeText(size, count);
    fSize->setText(QString::fromStdString(fFacts.sizeText));
    emit SizeArrived();
}

} // namespace kestrin
