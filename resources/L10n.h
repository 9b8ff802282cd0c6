#pragma once

#include <QObject>
#include <QQmlEngine>

namespace norvella {

// QML's door to the string tables: L10n.text("tabs.list").
class L10n : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
public:
    explicit L10n(QObject *parent = nullptr) : QObject(parent) {}
    Q_INVOKABLE QString text(const QString &key) const;
    // Interface text in capitals, cased by the interface language.
    Q_INVOKABLE QString upper(const QString &text) const;
};

} // namespace norvella
