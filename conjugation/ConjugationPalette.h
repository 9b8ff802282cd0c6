#pragma once

#include <QColor>
#include <QObject>
#include <QQmlEngine>

namespace norvella {

// Colours of the conjugation screen that the shared Theme does not name.
class ConjugationPalette : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(QColor ringTint READ ringTint CONSTANT)
    Q_PROPERTY(QColor ringTrack READ ringTrack CONSTANT)
    Q_PROPERTY(QColor groupedBackground READ groupedBackground CONSTANT)
    Q_PROPERTY(QColor card READ card CONSTANT)
    Q_PROPERTY(QColor pressed READ pressed CONSTANT)
    Q_PROPERTY(QColor selectVerbBackground READ selectVerbBackground CONSTANT)
    Q_PROPERTY(QColor selectVerbBorder READ selectVerbBorder CONSTANT)
public:
    explicit ConjugationPalette(QObject *parent = nullptr) : QObject(parent) {}

    static QColor ringTint() { return QColor(1, 85, 179); }
    static QColor ringTrack() { return QColor(0xE1, 0xE8, 0xF2); }
    static QColor groupedBackground() { return QColor(0xF2, 0xF2, 0xF7); }
    static QColor card() { return Qt::white; }
    static QColor pressed() { return QColor(0xE5, 0xE5, 0xEA); }
    static QColor selectVerbBackground() { return QColor::fromRgbF(0.99f, 0.99f, 0.99f); }
    static QColor selectVerbBorder() { return QColor::fromRgbF(0.8f, 0.8f, 0.8f); }
};

} // namespace norvella
