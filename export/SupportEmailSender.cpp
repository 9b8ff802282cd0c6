#include "SupportEmailSender.h"

#include "BuildInfo.h"
#include "Strings.h"

#include <QFile>
#include <QSysInfo>

#include <optional>

namespace norvella {

namespace {

std::optional<SupportEmailSender::Environment> &environmentOverride()
{
    static std::optional<SupportEmailSender::Environment> value;
    return value;
}

QString firstLine(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    // Device-tree strings end in NUL, DMI ones in a newline.
    QByteArray bytes = file.read(256);
    const qsizetype end = bytes.indexOf('\0');
    if (end >= 0)
        bytes.truncate(end);
    return QString::fromUtf8(bytes).section(QLatin1Char('\n'), 0, 0).trimmed();
}

// The generic kind of machine, as the firmware's chassis type tells it.
QString machineKind()
{
#if defined(Q_OS_ANDROID) || defined(Q_OS_IOS)
    return QSysInfo::productType();
#else
    bool ok = false;
    const int chassis = firstLine(QStringLiteral("/sys/class/dmi/id/chassis_type")).toInt(&ok);
    if (ok) {
        switch (chassis) {
        case 8: case 9: case 10: case 14:
            return QStringLiteral("Laptop");
        case 11:
            return QStringLiteral("Handheld");
        case 30:
            return QStringLiteral("Tablet");
        case 31: case 32:
            return QStringLiteral("Convertible");
        default:
            break;
        }
    }
    if (!firstLine(QStringLiteral("/sys/firmware/devicetree/base/model")).isEmpty())
        return QStringLiteral("Device");
    return QStringLiteral("Computer");
#endif
}

// Firmware fills these fields with such words when the maker left them blank.
bool isPlaceholder(const QString &value)
{
    static const QStringList placeholders{
            QStringLiteral("To Be Filled By O.E.M."), QStringLiteral("To be filled by O.E.M."),
            QStringLiteral("System Product Name"), QStringLiteral("Default string"), QStringLiteral("Not Applicable"),
            QStringLiteral("Not Specified"), QStringLiteral("None"), QStringLiteral("O.E.M."), QStringLiteral("0123456789")};
    return value.isEmpty() || placeholders.contains(value, Qt::CaseInsensitive);
}

} // namespace

// The machine's model as its maker names it, as hw.machine names a phone's:
// the firmware's product name, the board's name, or a phone's device-tree
// model. The host name is the user's, not the hardware's; without any model
// (a container, a virtual machine without firmware tables) the processor
// architecture is what the system still knows about the hardware.
QString SupportEmailSender::Environment::hardwareIdentifierFrom(const QString &systemFolder,
                                                                const QString &architecture)
{
    for (const char *path : {"/class/dmi/id/product_name", "/class/dmi/id/board_name", "/firmware/devicetree/base/model"}) {
        const QString value = firstLine(systemFolder + QString::fromLatin1(path));
        if (!isPlaceholder(value))
            return value;
    }
    return architecture;
}

namespace {
QString machineIdentifier()
{
    return SupportEmailSender::Environment::hardwareIdentifierFrom(QStringLiteral("/sys"),
                                                                  QSysInfo::currentCpuArchitecture());
}

} // namespace

SupportEmailSender::Environment SupportEmailSender::Environment::current()
{
    if (environmentOverride())
        return *environmentOverride();
    Environment environment;
    environment.deviceModel = machineKind();
    environment.hardwareIdentifier = machineIdentifier();
    environment.systemVersion = QSysInfo::prettyProductName();
    environment.shortVersion = BuildInfo::shortVersion();
    environment.buildVersion = BuildInfo::buildNumber();
    return environment;
}

void SupportEmailSender::setEnvironmentOverride(const Environment &environment)
{
    environmentOverride() = environment;
}

void SupportEmailSender::clearEnvironmentOverride()
{
    environmentOverride().reset();
}

SupportEmailSender::SupportEmailSender(QObject *parent) : QObject(parent) {}

SupportEmailSender::SupportEmailSender(QObject *sender, QObject *parent) : QObject(parent), m_sender(sender) {}

void SupportEmailSender::setSender(QObject *sender)
{
    if (m_sender == sender)
        return;
    m_sender = sender;
    emit senderChanged();
}

QString SupportEmailSender::alertButton() const
{
    return Strings::text(QStringLiteral("common.ok"));
}

void SupportEmailSender::setTopic(const QString &topic)
{
    if (m_topic == topic)
        return;
    m_topic = topic;
    emit contextChanged();
}

void SupportEmailSender::setDetails(const QString &details)
{
    if (m_details == details)
        return;
    m_details = details;
    emit contextChanged();
}

QString SupportEmailSender::subject() const
{
    const QString title = Strings::text(QStringLiteral("app.title"));
    const QString topic = m_topic.simplified();
    return topic.isEmpty() ? title : title + QStringLiteral(": ") + topic;
}

QString SupportEmailSender::recipient() const
{
    return Strings::text(QStringLiteral("support.email"));
}

QString SupportEmailSender::versionText(const Environment &environment)
{
    if (environment.shortVersion.isEmpty() || environment.buildVersion.isEmpty())
        return {};
    return environment.shortVersion + QStringLiteral(" (") + environment.buildVersion + QLatin1Char(')');
}

QString SupportEmailSender::htmlBody(const QString &appTitle, const Environment &environment)
{
    const QString hardware = environment.hardwareIdentifier.isEmpty() ? QStringLiteral("Unknown Platform")
                                                                      : environment.hardwareIdentifier;
    // Room for the user's words above the rule; "App: " twice is the format support reads.
    return QStringLiteral("<br /><br /><br /><hr />App: ") + appTitle
            + QStringLiteral("<br />Device: ") + environment.deviceModel
            + QStringLiteral(" (") + hardware + QStringLiteral(")<br />iOS: ") + environment.systemVersion
            + QStringLiteral("<br />App: ") + versionText(environment);
}

QString SupportEmailSender::htmlBody(const QString &appTitle, const Environment &environment,
                                     const QString &details)
{
    const QString trimmed = details.trimmed();
    if (trimmed.isEmpty())
        return htmlBody(appTitle, environment);
    // Not escaped, like the machine lines below: the body only ever reaches
    // the mail client through plainTextBody.
    QString lines = trimmed;
    lines.replace(QLatin1Char('\n'), QStringLiteral("<br />"));
    return lines + htmlBody(appTitle, environment);
}

QString SupportEmailSender::plainTextBody(const QString &html)
{
    QString text = html;
    text.replace(QStringLiteral("<hr />"), QStringLiteral("----------\n"));
    text.replace(QStringLiteral("<br />"), QStringLiteral("\n"));
    return text;
}

void SupportEmailSender::sendEmail()
{
    const QString title = Strings::text(QStringLiteral("app.title"));
    const QString body = htmlBody(title, Environment::current(), m_details);
    // Without a presenting screen nothing may appear, not even a mail window.
    if (!m_sender)
        return;
    setComposerPresented(true);
    DesktopMail::Message message{{recipient()}, subject(), plainTextBody(body), {}};
    QPointer<SupportEmailSender> self(this);
    DesktopMail::compose(message, [self](DesktopMail::Result result) {
        if (!self)
            return;
        if (result == DesktopMail::Result::Failed) {
            // No mail client took it: this machine cannot send mail.
            self->setComposerPresented(false);
            self->openContactPageOrAlert();
            return;
        }
        self->mailComposeFinished(int(result));
    });
}

void SupportEmailSender::openContactPageOrAlert()
{
    const QUrl url(BuildInfo::contactUrl(), QUrl::StrictMode);
    if (!url.isValid() || url.scheme().isEmpty()) {
        showErrorAlert();
        return;
    }
    QPointer<SupportEmailSender> self(this);
    DesktopMail::platform().openUrl(url, [self, url](bool opened) {
        if (!self)
            return;
        if (opened)
            emit self->contactPageOpened(url);
        else
            self->showErrorAlert();
    });
}

void SupportEmailSender::mailComposeFinished(int result)
{
    const auto outcome = DesktopMail::Result(result);
    // Asked for while the composer is still up, so it is refused; the request
    // after the dismissal is the one the user sees.
    if (outcome == DesktopMail::Result::Failed)
        showErrorAlert();
    if (!m_sender)
        return;
    setComposerPresented(false);
    if (outcome == DesktopMail::Result::Sent)
        showAlert(Strings::text(QStringLiteral("support.emailsuccess.title")),
                  Strings::text(QStringLiteral("support.emailsuccess.subject")));
    else if (outcome == DesktopMail::Result::Failed)
        showErrorAlert();
}

void SupportEmailSender::showErrorAlert()
{
    // The address goes with the alert, so the user can write from elsewhere.
    showAlert(Strings::text(QStringLiteral("export.email.error")), Strings::text(QStringLiteral("export.email.message")),
              recipient());
}

void SupportEmailSender::showAlert(const QString &title, const QString &message, const QString &address)
{
    if (!m_sender || m_composerPresented)
        return;
    m_alertTitle = title;
    m_alertMessage = message;
    m_alertAddress = address;
    emit alertChanged();
    emit alertRequested(title, message);
}

void SupportEmailSender::setComposerPresented(bool presented)
{
    if (m_composerPresented == presented)
        return;
    m_composerPresented = presented;
    emit composerPresentedChanged();
}

} // namespace norvella
