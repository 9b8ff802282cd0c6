#pragma once

#include "Verb.h"

#include <QJsonObject>
#include <QString>

namespace norvella {

class Settings;

// Renders one loaded verb into an HTML and a plain-text document through the
// bundled Mustache templates. Stateless: every render reads the resources and
// runs mustache.js in a script engine of its own.
class VerbExport
{
public:
    struct Documents
    {
        QString html;
        QString text;
    };
    enum class Status {
        Rendered,
        // Nothing to hand on; the reason is already on the console.
        Nothing,
        // A resource could not be read; `error` says why, for the caller's crash log.
        Failed,
    };
    struct Result
    {
        Status status = Status::Nothing;
        Documents documents;
        QString error;
    };

    static QString defaultResourceDirectory() { return QStringLiteral(":/norvella/export"); }

    explicit VerbExport(const Settings &settings, QString resourceDirectory = defaultResourceDirectory());

    Result render(const Verb &verb) const;

    // What the templates may refer to; key names are part of the template format.
    static QJsonObject viewModel(const Verb &verb, const Settings &settings, bool showTranslated);

    // A render call as handed to the script engine: the template sits in a
    // template literal, the view follows as a JSON object literal.
    static QString renderCall(const QString &templateText, const QString &json);

private:
    const Settings &m_settings;
    QString m_resourceDirectory;
};

} // namespace norvella
