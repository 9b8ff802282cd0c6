#pragma once

#include "Verb.h"

#include <QColor>
#include <QObject>
#include <QQmlEngine>
#include <QUrl>

#include <functional>

namespace norvella {

// The one trailing action a list offers for a row, built when the row starts
// to be swiped. It keeps the verb it was built for, so a tap acts on that verb
// even if the rows have moved meanwhile.
class SwipeAction : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Built by the lists")
    Q_PROPERTY(QString title READ title CONSTANT)
    Q_PROPERTY(QUrl iconSource READ iconSource CONSTANT)
    Q_PROPERTY(bool destructive READ destructive CONSTANT)
    Q_PROPERTY(QColor backgroundColor READ backgroundColor CONSTANT)
    Q_PROPERTY(QColor foregroundColor READ foregroundColor CONSTANT)

public:
    enum class Style { Normal, Destructive };
    // Returns whether the action completed.
    using Handler = std::function<bool(const VerbPtr &)>;

    SwipeAction(Style style, const QString &titleKey, const QString &iconName, QColor background, VerbPtr verb,
                Handler handler);

    QString title() const { return m_title; }
    const QString &titleKey() const { return m_titleKey; }
    const QString &iconName() const { return m_iconName; }
    QUrl iconSource() const;
    bool destructive() const { return m_style == Style::Destructive; }
    QColor backgroundColor() const { return m_background; }
    // White on the strong colours, dark on the light grey, for contrast.
    QColor foregroundColor() const;
    const VerbPtr &verb() const { return m_verb; }

    // Runs the action once; later calls do nothing and answer false.
    Q_INVOKABLE bool trigger();

signals:
    // After the action has run; completed is what the action reported.
    void performed(bool completed);

public:
    static QColor destructiveColor() { return QColor(0xC6, 0x28, 0x28); }
    static QColor neutralColor() { return QColor(0xD1, 0xD1, 0xD6); }

    // Hands the action to QML, which deletes it when no longer used.
    static SwipeAction *forQml(SwipeAction *action);

private:
    Style m_style;
    QString m_titleKey;
    QString m_title;
    QString m_iconName;
    QColor m_background;
    VerbPtr m_verb;
    Handler m_handler;
};

} // namespace norvella
