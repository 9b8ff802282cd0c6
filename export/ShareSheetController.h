#pragma once

#include "DesktopMail.h"

#include <QLocale>
#include <QObject>
#include <QPageSize>
#include <QQmlEngine>
#include <QStringList>

namespace norvella {

class Settings;

// The share sheet for an export: renders the verb, then offers the text and
// the HTML page by copy, as files (HTML, text, PDF made from the HTML) and by
// mail. Activity types in `excludedActivityTypes` are neither listed nor run.
class ShareSheetController : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QString verbName READ verbName NOTIFY documentsChanged)
    Q_PROPERTY(QString html READ html NOTIFY documentsChanged)
    Q_PROPERTY(QString text READ text NOTIFY documentsChanged)
    Q_PROPERTY(QString title READ title NOTIFY documentsChanged)
    Q_PROPERTY(QStringList offeredActivityTypes READ offeredActivityTypes NOTIFY activitiesChanged)
    Q_PROPERTY(QStringList excludedActivityTypes READ excludedActivityTypes WRITE setExcludedActivityTypes NOTIFY activitiesChanged)
    Q_PROPERTY(QString saveFolder READ saveFolder WRITE setSaveFolder NOTIFY saveFolderChanged)
    Q_PROPERTY(QString statusMessage READ statusMessage NOTIFY statusChanged)
    Q_PROPERTY(QString lastSavedPath READ lastSavedPath NOTIFY statusChanged)
    // What the status offers to copy: the conjugation when no mail app took it.
    Q_PROPERTY(QString statusCopyText READ statusCopyText NOTIFY statusChanged)
    Q_PROPERTY(QString copyText READ copyText CONSTANT)
    Q_PROPERTY(QString closeText READ closeText CONSTANT)
    Q_PROPERTY(QString openFileText READ openFileText CONSTANT)

public:
    // Activity types, in the order the sheet lists them.
    static inline const QString CopyText = QStringLiteral("copyText");
    static inline const QString SaveHtml = QStringLiteral("saveHtml");
    static inline const QString SaveText = QStringLiteral("saveText");
    static inline const QString SavePdf = QStringLiteral("savePdf");
    static inline const QString Mail = QStringLiteral("mail");
    // Never offered; excluded by default like any social-network post.
    static inline const QString PostToSocialNetwork = QStringLiteral("postToSocialNetwork");

    explicit ShareSheetController(QObject *parent = nullptr);

    QString verbName() const { return m_verbName; }
    QString html() const { return m_html; }
    QString text() const { return m_text; }
    QString title() const;
    // Every activity type not excluded, in the sheet's order.
    QStringList offeredActivityTypes() const;
    Q_INVOKABLE bool isOffered(const QString &type) const { return offeredActivityTypes().contains(type); }
    Q_INVOKABLE QString activityTitle(const QString &type) const;
    Q_INVOKABLE QString activityIcon(const QString &type) const;
    QStringList excludedActivityTypes() const { return m_excluded; }
    void setExcludedActivityTypes(const QStringList &types);
    QString saveFolder() const { return m_saveFolder; }
    void setSaveFolder(const QString &folder);
    QString statusMessage() const { return m_statusMessage; }
    QString lastSavedPath() const { return m_lastSavedPath; }
    QString statusCopyText() const { return m_statusCopyText; }
    QString copyText() const;
    QString closeText() const;
    QString openFileText() const;

    // Renders the verb behind a VerbRef; true when there is something to share.
    Q_INVOKABLE bool exportVerb(QObject *verbRef);
    // Tests and callers holding documents already rendered.
    void setDocuments(const QString &verbName, const QString &html, const QString &text);
    void setSettings(const Settings *settings) { m_settings = settings; }

    // Runs one activity; false when it is excluded, unknown or failed.
    Q_INVOKABLE bool perform(const QString &type);
    Q_INVOKABLE void openLastSavedFile();
    Q_INVOKABLE void copyStatusText() const;

    // "essere.html": the verb's name made safe for any file system.
    QString fileName(const QString &extension) const;
    // The HTML as a PDF on `paper`; on failure nothing new is left at `path` and `error` says why.
    static bool writePdf(const QString &html, const QString &path, const QPageSize &paper, QString *error = nullptr);
    // The paper people in the locale's region print on: Letter in the Americas that use it, else A4.
    static QPageSize paperFor(const QLocale &locale);

signals:
    void documentsChanged();
    void activitiesChanged();
    void saveFolderChanged();
    void statusChanged();
    void finished(const QString &type, bool ok);

private:
    bool saveFile(const QString &extension, const QByteArray &contents);
    bool sendMail();
    void setStatus(const QString &message, const QString &savedPath = {}, const QString &copyText = {});

    const Settings *m_settings = nullptr;
    QString m_verbName;
    QString m_html;
    QString m_text;
    QStringList m_excluded{PostToSocialNetwork};
    QString m_saveFolder;
    QString m_statusMessage;
    QString m_lastSavedPath;
    QString m_statusCopyText;
};

} // namespace norvella
