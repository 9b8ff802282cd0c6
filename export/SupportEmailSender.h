#pragma once

#include "DesktopMail.h"

#include <QObject>
#include <QPointer>
#include <QQmlEngine>

namespace norvella {

// Writes a mail to support: the desktop's mail client gets the support
// address, the app title as subject and a body describing device and app;
// without a client the contact page opens instead. Outcomes the user must see
// come out as alerts (title, message, one OK button) for the presenting screen
// to show, and only while there is a presenting screen (`sender`).
class SupportEmailSender : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QObject *sender READ sender WRITE setSender NOTIFY senderChanged)
    Q_PROPERTY(QString alertTitle READ alertTitle NOTIFY alertChanged)
    Q_PROPERTY(QString alertMessage READ alertMessage NOTIFY alertChanged)
    // An address the alert offers to copy (the support address when no mail
    // could be written); empty for the other alerts.
    Q_PROPERTY(QString alertAddress READ alertAddress NOTIFY alertChanged)
    Q_PROPERTY(QString alertButton READ alertButton CONSTANT)
    Q_PROPERTY(bool composerPresented READ composerPresented NOTIFY composerPresentedChanged)
    // A mail about one thing (a mistake in a table) says so: the topic goes
    // into the subject after the app title, the details above the user's words.
    Q_PROPERTY(QString topic READ topic WRITE setTopic NOTIFY contextChanged)
    Q_PROPERTY(QString details READ details WRITE setDetails NOTIFY contextChanged)

public:
    // What the mail body says about the machine and the build.
    struct Environment
    {
        QString deviceModel;
        // Empty when the machine does not say.
        QString hardwareIdentifier;
        QString systemVersion;
        QString shortVersion;
        QString buildVersion;

        static Environment current();
        // The model read under `systemFolder` (the sysfs root, "/sys"), or
        // `architecture` when the machine names none.
        static QString hardwareIdentifierFrom(const QString &systemFolder, const QString &architecture);
    };

    explicit SupportEmailSender(QObject *parent = nullptr);
    SupportEmailSender(QObject *sender, QObject *parent);

    QObject *sender() const { return m_sender; }
    void setSender(QObject *sender);
    QString alertTitle() const { return m_alertTitle; }
    QString alertMessage() const { return m_alertMessage; }
    QString alertAddress() const { return m_alertAddress; }
    QString alertButton() const;
    bool composerPresented() const { return m_composerPresented; }
    QString topic() const { return m_topic; }
    void setTopic(const QString &topic);
    QString details() const { return m_details; }
    void setDetails(const QString &details);

    Q_INVOKABLE void sendEmail();
    // The mail client's outcome, numbered as DesktopMail::Result.
    Q_INVOKABLE void mailComposeFinished(int result);

    QString subject() const;
    QString recipient() const;
    static QString htmlBody(const QString &appTitle, const Environment &environment);
    // The body with `details` (plain text, one item per line) at its top.
    static QString htmlBody(const QString &appTitle, const Environment &environment, const QString &details);
    // The same lines for clients that take no markup.
    static QString plainTextBody(const QString &html);
    static QString versionText(const Environment &environment);

    // Tests fix what the body reports.
    static void setEnvironmentOverride(const Environment &environment);
    static void clearEnvironmentOverride();

signals:
    void senderChanged();
    void alertChanged();
    void composerPresentedChanged();
    void contextChanged();
    // Shown by the screen as a dialog with `alertButton` as its only button.
    void alertRequested(const QString &title, const QString &message);
    // The contact page was opened instead of a mail.
    void contactPageOpened(const QUrl &url);

private:
    void showAlert(const QString &title, const QString &message, const QString &address = {});
    void showErrorAlert();
    void setComposerPresented(bool presented);
    void openContactPageOrAlert();

    QPointer<QObject> m_sender;
    QString m_alertTitle;
    QString m_alertMessage;
    QString m_alertAddress;
    bool m_composerPresented = false;
    QString m_topic;
    QString m_details;
};

} // namespace norvella
