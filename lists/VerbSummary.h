#pragma once

#include <QObject>
#include <QPointer>
#include <QQmlEngine>

namespace norvella {

class Settings;

// A chosen verb's title and translation for a screen that shows one verb,
// read from the VerbRef it was handed.
class VerbSummary : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    // A VerbRef, or null.
    Q_PROPERTY(QObject *verb READ verb WRITE setVerb NOTIFY verbChanged)
    Q_PROPERTY(bool hasVerb READ hasVerb NOTIFY verbChanged)
    Q_PROPERTY(QString italian READ italian NOTIFY verbChanged)
    Q_PROPERTY(QString translation READ translation NOTIFY verbChanged)
    Q_PROPERTY(bool isFavourite READ isFavourite NOTIFY verbChanged)

public:
    explicit VerbSummary(QObject *parent = nullptr);

    QObject *verb() const { return m_verb; }
    void setVerb(QObject *verb);
    bool hasVerb() const;
    QString italian() const;
    QString translation() const;
    bool isFavourite() const;

    void setSettings(Settings *settings) { m_settings = settings; }

signals:
    void verbChanged();

private:
    QPointer<QObject> m_verb;
    Settings *m_settings = nullptr;
};

} // namespace norvella
