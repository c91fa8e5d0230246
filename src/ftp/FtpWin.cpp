#include "ftp/FtpWin.h"

#include "app/AppUtils.h"
#include "ftp/FtpMessages.h"
#include "ftp/FtpSecurity.h"
#include "ftp/FtpSession.h"
#include "widgets/PlaceOnScreen.h"
#include "ftp/KeyringOption.h"
#include "widgets/WindowConventions.h"

#include <QComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace kestrin {

namespace {

constexpr int kWidth = 340;

// The choices in the order the list shows them.
constexpr std::pair<FtpTls::Choice, const char *> kTlsChoices[] = {
    {FtpTls::Choice::IfOffered, "TLS if the server offers it"},
    {FtpTls::Choice::Required, "TLS required"},
    {FtpTls::Choice::Off, "no TLS"},
};

} // namespace

FtpWin::FtpWin(const QRect &frame,
               QWidget *owner,
               const std::optional<std::string> &sessionFile,
               FtpSession::Kind kind)
    : QWidget(owner, Qt::Window)
    , fKind(sessionFile ? FtpSession::KindOf(*sessionFile).value_or(kind) : kind)
{
    setWindowTitle("Ftp Connection");
    auto *container = new QWidget(this);
    container->setObjectName("FtpContainer");
    fFields = new QFormLayout(container);
    auto *warning = new QLabel("Warning! storing password is insecure.", container);
    warning->setObjectName("label6");
    fFields->addRow(warning);
    text1 = AddField("Session:", "text1");
    text2 = AddField("Host:", "text2");
    text3 = AddField("Port:", "text3");
    text3->setText(FtpSession::DefaultPort(fKind));
    text4 = AddField("User Name:", "text4");
    // Shown as typed: the user is told above that it is stored so too.
    text5 = AddField("Password:", "text5");
    fKeyring = new KeyringOption(fFields, text5);
    text6 = AddField("Remote Dir:", "text6");
    text7 = AddField("Local Dir:", "text7");
    if (fKind == FtpSession::Kind::Ftp)
        BuildSecurity();
    auto *outer = new QVBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    outer->addWidget(container);
    BuildButtons();
    // As tall as the fields need, whatever the font.
    const QSize size(kWidth, sizeHint().height());
    PlaceOnScreen(this, QRect(frame.center() - QPoint(size.width() / 2, size.height() / 2), size));

    if (sessionFile)
        LoadFtpSettings(*sessionFile);
    WindowConventions::Apply(this,
                             {.firstField = text1,
                              .defaultButton = findChild<QPushButton *>("bOK"),
                              .cancelButton = findChild<QPushButton *>("bCancel")});
    show();
}

QLineEdit *FtpWin::AddField(const char *label, const char *name)
{
    auto *field = new QLineEdit(fFields->parentWidget());
    field->setObjectName(name);
    fFields->addRow(label, field);
    return field;
}

void FtpWin::BuildSecurity()
{
    QWidget *container = fFields->parentWidget();
    fTls = new QComboBox(container);
    fTls->setObjectName("tlsChoice");
    for (const auto &[choice, text] : kTlsChoices)
        fTls->addItem(text);
    fFields->addRow("TLS:", fTls);
    auto *row = new QHBoxLayout;
    fTrusted = new QLabel(container);
    fTrusted->setObjectName("trustedCertificate");
    fTrusted->setWordWrap(true);
    fTrusted->setTextInteractionFlags(Qt::TextSelectableByMouse);
    auto *forget = new QPushButton("Forget", container);
    forget->setObjectName("bForget");
    forget->setAutoDefault(false);
    forget->setAccessibleName("Forget the trusted certificate");
    connect(forget, &QPushButton::clicked, this, [this] { ShowTrusted({}); });
    row->addWidget(fTrusted, 1);
    row->addWidget(forget);
    fFields->addRow("Trusted certificate:", row);
    fTrustedRow = fFields->rowCount() - 1;
    ShowTrusted({});
}

void FtpWin::ShowTrusted(const std::string &fingerprint)
{
    fTrustedCertificate = fingerprint;
    fTrusted->setText(QString::fromStdString(fingerprint));
    // Shown only while there is one to forget.
    fFields->setRowVisible(fTrustedRow, !fingerprint.empty());
}

void FtpWin::BuildButtons()
{
    QWidget *container = fFields->parentWidget();
    auto *row = new QHBoxLayout;
    row->addStretch();
    const std::pair<const char *, uint32_t> buttons[] = {{"OK", kMsgFtpConnect},
                                                         {"Cancel", kMsgFtpCancel}};
    for (const auto &[label, code] : buttons) {
        auto *button = new QPushButton(label, container);
        button->setObjectName(code == kMsgFtpConnect ? "bOK" : "bCancel");
        button->setAutoDefault(false);
        connect(button, &QPushButton::clicked, this, [this, code = code] {
            platform::Message message(code);
            MessageReceived(message);
        });
        row->addWidget(button);
    }
    fFields->addRow(row);
}

void FtpWin::LoadFtpSettings(const std::string &sessionFile)
{
    const FtpSession session = FtpSession::Read(sessionFile);
    text1->setText(QString::fromStdString(session.name));
    const std::pair<QLineEdit *, const std::string *> fields[] = {{text2, &session.host},
                                                                  {text3, &session.port},
                                                                  {text4, &session.user},
                                                                  {text5, &session.pass},
                                                                  {text6, &session.remoteDir},
                                                                  {text7, &session.localDir}};
    for (const auto &[field, value] : fields) {
        if (!value->empty())
            field->setText(QString::fromStdString(*value));
    }
    fKeyring->Load(session);
    if (fKind != FtpSession::Kind::Ftp)
        return;
    const FtpSecurity security = FtpSecurity::Read(session.name);
    for (int i = 0; i < fTls->count(); i++) {
        if (kTlsChoices[i].first == security.tls)
            fTls->setCurrentIndex(i);
    }
    ShowTrusted(security.trustedCertificate);
}

bool FtpWin::Validate()
{
    const std::pair<QLineEdit *, const char *> required[] = {
        {text1, "You must assign a session name to this connection."},
        {text2, "You must assign a host to this connection."},
        {text3, "You must assign a port to this connection."},
        {text4, "You must assign a user name to this connection."},
    };
    for (const auto &[field, text] : required) {
        if (field->text().isEmpty()) {
            MessageBox(text, "Info", "OK");
            field->setFocus();
            return false;
        }
    }
    // The name becomes a file name in the settings folder: a "/" would put
    // the session somewhere else, or nowhere.
    if (text1->text().contains('/')) {
        MessageBox("A session name cannot hold a \"/\".", "Info", "OK");
        text1->setFocus();
        return false;
    }
    return true;
}

FtpSession FtpWin::Fields() const
{
    FtpSession session;
    session.name = text1->text().toStdString();
    session.host = text2->text().toStdString();
    session.port = text3->text().toStdString();
    session.user = text4->text().toStdString();
    session.pass = text5->text().toStdString();
    session.passwordInKeyring = fKeyring->Chosen();
    session.kind = fKind;
    session.remoteDir = text6->text().toStdString();
    session.localDir = text7->text().toStdString();
    return session;
}

bool FtpWin::SetFtpSetting()
{
    const FtpSession session = Fields();
    if (!session.Write())
        return false;
    if (fKind == FtpSession::Kind::Sftp)
        return true;
    FtpSecurity security;
    security.tls = kTlsChoices[std::max(fTls->currentIndex(), 0)].first;
    security.trustedCertificate = fTrustedCertificate;
    if (security.Write(session.name))
        return true;
    MessageBox("The TLS choice of this session could not be saved.", "Info", "OK");
    return false;
}

void FtpWin::MessageReceived(platform::Message &message)
{
    switch (message.what) {
    case kMsgFtpConnect:
        if (!Validate())
            break;
        // A file that could not be made has been reported; there is nothing
        // more this window can do about it.
        fKeyring->Keep(Fields(), [this] {
            SetFtpSetting();
            close();
        });
        break;
    case kMsgFtpCancel:
        close();
        break;
    default:
        Handler::MessageReceived(message);
        break;
    }
}

} // namespace kestrin
