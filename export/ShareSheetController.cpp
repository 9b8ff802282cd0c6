#include "ShareSheetController.h"

#include "CrashLog.h"
#include "LinkOpener.h"
#include "PdfPages.h"
#include "Settings.h"
#include "Strings.h"
#include "VerbExport.h"
#include "VerbRef.h"

#include <QClipboard>
#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QHash>
#include <QPointer>
#include <QSaveFile>
#include <QStandardPaths>
#include <QUrl>

namespace norvella {

namespace {
// Written beside the target and renamed over it once complete: a full disk
// leaves the earlier file, or none, never a cut one.
bool writeWhole(const QString &path, const QByteArray &contents, QString *error = nullptr)
{
    QSaveFile file(path);
    if (file.open(QIODevice::WriteOnly) && file.write(contents) == contents.size() && file.commit())
        return true;
    if (error)
        *error = file.errorString();
    return false;
}
} // namespace

ShareSheetController::ShareSheetController(QObject *parent)
    : QObject(parent), m_saveFolder(QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation))
{
}

QString ShareSheetController::title() const
{
    return Strings::text(QStringLiteral("export.share.title")).arg(m_verbName);
}

QString ShareSheetController::closeText() const
{
    return Strings::text(QStringLiteral("common.close"));
}

QString ShareSheetController::openFileText() const
{
    return Strings::text(QStringLiteral("export.share.open"));
}

QStringList ShareSheetController::offeredActivityTypes() const
{
    QStringList offered;
    for (const QString &type : {CopyText, SaveHtml, SaveText, SavePdf, Mail}) {
        if (!m_excluded.contains(type))
            offered << type;
    }
    return offered;
}

QString ShareSheetController::activityTitle(const QString &type) const
{
    static const QHash<QString, QString> keys{
            {CopyText, QStringLiteral("export.share.copy")}, {SaveHtml, QStringLiteral("export.share.html")},
            {SaveText, QStringLiteral("export.share.text")}, {SavePdf, QStringLiteral("export.share.pdf")},
            {Mail, QStringLiteral("export.share.mail")},
    };
    return keys.contains(type) ? Strings::text(keys.value(type)) : QString();
}

QString ShareSheetController::activityIcon(const QString &type) const
{
    static const QHash<QString, QString> icons{
            {CopyText, QStringLiteral("copy")}, {SaveHtml, QStringLiteral("download")},
            {SaveText, QStringLiteral("file-text")}, {SavePdf, QStringLiteral("file-pdf")},
            {Mail, QStringLiteral("contact")},
    };
    return icons.contains(type) ? QStringLiteral("qrc:/norvella/icons/%1.svg").arg(icons.value(type)) : QString();
}

void ShareSheetController::setExcludedActivityTypes(const QStringList &types)
{
    if (m_excluded == types)
        return;
    m_excluded = types;
    emit activitiesChanged();
}

void ShareSheetController::setSaveFolder(const QString &folder)
{
    if (m_saveFolder == folder)
        return;
    m_saveFolder = folder;
    emit saveFolderChanged();
}

bool ShareSheetController::exportVerb(QObject *verbRef)
{
    const VerbPtr verb = VerbRef::from(verbRef);
    if (verb) {
        const VerbExport exporter(m_settings ? *m_settings : Settings::standard());
        const VerbExport::Result result = exporter.render(*verb);
        if (result.status == VerbExport::Status::Failed) {
            CrashLog::log(QStringLiteral("Unable to export. An error occurred. %1").arg(result.error));
            return false;
        }
        if (result.status == VerbExport::Status::Rendered) {
            setDocuments(verb->italian, result.documents.html, result.documents.text);
            return true;
        }
    }
    qWarning("Unable to export verb. Most likely an issue with the template (or no verb, somehow)");
    return false;
}

void ShareSheetController::setDocuments(const QString &verbName, const QString &html, const QString &text)
{
    m_verbName = verbName;
    m_html = html;
    m_text = text;
    setStatus({});
    emit documentsChanged();
}

QString ShareSheetController::fileName(const QString &extension) const
{
    QString base;
    for (const QChar c : m_verbName.trimmed()) {
        const bool unsafe = c.category() == QChar::Other_Control || QStringLiteral("/\\:*?\"<>|").contains(c);
        base += unsafe ? QLatin1Char('-') : c;
    }
    if (base.isEmpty() || base.startsWith(QLatin1Char('.')))
        base.prepend(QStringLiteral("verb"));
    return base + QLatin1Char('.') + extension;
}

bool ShareSheetController::perform(const QString &type)
{
    if (m_excluded.contains(type) || m_html.isNull())
        return false;
    bool ok = false;
    if (type == CopyText) {
        QGuiApplication::clipboard()->setText(m_text);
        ok = QGuiApplication::clipboard()->text() == m_text;
        setStatus(Strings::text(ok ? QStringLiteral("export.share.copied") : QStringLiteral("export.share.copy_failed")));
    } else if (type == SaveHtml) {
        ok = saveFile(QStringLiteral("html"), m_html.toUtf8());
    } else if (type == SaveText) {
        ok = saveFile(QStringLiteral("txt"), m_text.toUtf8());
    } else if (type == SavePdf) {
        // Empty when the pages could not be drawn, which saveFile reports.
        ok = saveFile(QStringLiteral("pdf"), PdfPages::render(m_html, paperFor(QLocale::system())));
    } else if (type == Mail) {
        // The outcome arrives later, through finished().
        return sendMail();
    } else {
        return false;
    }
    emit finished(type, ok);
    return ok;
}

bool ShareSheetController::saveFile(const QString &extension, const QByteArray &contents)
{
    const QString path = QDir(m_saveFolder).filePath(fileName(extension));
    QDir().mkpath(m_saveFolder);
    QString error = contents.isEmpty() ? QStringLiteral("there was nothing to write") : QString();
    if (!error.isEmpty() || !writeWhole(path, contents, &error)) {
        CrashLog::log(QStringLiteral("Unable to save the export to %1: %2").arg(path, error));
        setStatus(Strings::text(QStringLiteral("export.share.save_failed")).arg(QDir::toNativeSeparators(path)));
        return false;
    }
    setStatus(Strings::text(QStringLiteral("export.share.saved")).arg(QDir::toNativeSeparators(path)), path);
    return true;
}

bool ShareSheetController::writePdf(const QString &html, const QString &path, const QPageSize &paper, QString *error)
{
    const QByteArray pdf = PdfPages::render(html, paper);
    if (pdf.isEmpty()) {
        if (error)
            *error = QStringLiteral("the pages could not be drawn");
        return false;
    }
    return writeWhole(path, pdf, error);
}

QPageSize ShareSheetController::paperFor(const QLocale &locale)
{
    static const QList<QLocale::Territory> letter{
            QLocale::UnitedStates, QLocale::Canada, QLocale::Mexico, QLocale::Chile, QLocale::Colombia,
            QLocale::Venezuela, QLocale::Philippines, QLocale::PuertoRico, QLocale::CostaRica,
            QLocale::Guatemala, QLocale::Panama, QLocale::DominicanRepublic, QLocale::ElSalvador, QLocale::Nicaragua,
    };
    return QPageSize(letter.contains(locale.territory()) ? QPageSize::Letter : QPageSize::A4);
}


bool ShareSheetController::sendMail()
{
    // Mail clients take the page as an attachment next to the text.
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::CacheLocation) + QStringLiteral("/export");
    QDir().mkpath(folder);
    const QString attachment = QDir(folder).filePath(fileName(QStringLiteral("html")));
    QStringList attachments;
    if (writeWhole(attachment, m_html.toUtf8()))
        attachments << attachment;

    QPointer<ShareSheetController> self(this);
    DesktopMail::compose({{}, m_verbName, m_text, attachments}, [self](DesktopMail::Result result) {
        if (!self)
            return;
        const bool ok = result != DesktopMail::Result::Failed;
        if (ok)
            self->setStatus(Strings::text(QStringLiteral("export.share.mail_opened")));
        else
            self->setStatus(Strings::text(QStringLiteral("export.share.mail_unavailable")), {}, self->m_text);
        emit self->finished(Mail, ok);
    });
    return true;
}

void ShareSheetController::openLastSavedFile()
{
    if (!m_lastSavedPath.isEmpty())
        LinkOpener::openOrReport(QUrl::fromLocalFile(m_lastSavedPath), Strings::text(QStringLiteral("export.share.open_failed")));
}

void ShareSheetController::copyStatusText() const
{
    if (!m_statusCopyText.isEmpty())
        LinkOpener::copyText(m_statusCopyText);
}

QString ShareSheetController::copyText() const
{
    return Strings::text(QStringLiteral("common.copy"));
}

void ShareSheetController::setStatus(const QString &message, const QString &savedPath, const QString &copyText)
{
    m_statusMessage = message;
    m_lastSavedPath = savedPath;
    m_statusCopyText = copyText;
    emit statusChanged();
}

} // namespace norvella
