#pragma once

#include <QObject>
#include <QQmlEngine>

namespace norvella {

// Which layout a given amount of room gets. Decided by the room itself, not by
// the kind of device: a tablet in either orientation, a phone on its side and a
// resized desktop window all follow the same few numbers.
class AdaptiveLayout : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(int blockMinimum READ blockMinimum CONSTANT)
    Q_PROPERTY(int spacing READ spacing CONSTANT)

public:
    static constexpr int BlockMinimum = 300;
    static constexpr int Spacing = 20;
    static constexpr int ListMinimum = 320;
    static constexpr int ListMaximum = 420;
    // Below this height the bars shrink and the mood control joins the title bar.
    static constexpr int CompactHeight = 500;

    using QObject::QObject;

    int blockMinimum() const { return BlockMinimum; }
    int spacing() const { return Spacing; }

    // Blocks of at least the minimum width that fit side by side, with the
    // spacing between and around them; at least one.
    Q_INVOKABLE static int gridColumns(qreal width);
    // The grid once two blocks fit; a single column of blocks would only be a
    // table with more chrome.
    Q_INVOKABLE static bool usesGrid(qreal width);
    // The room a two-column grid needs.
    static int gridMinimumWidth() { return 2 * BlockMinimum + 3 * Spacing; }
    // The width of each block when `columns` of them share `width`.
    Q_INVOKABLE static qreal blockWidth(qreal width, int columns);
    // Side by side only when the list and a two-column grid both fit; otherwise
    // the verb gets the whole window and with it the grid where there is room.
    Q_INVOKABLE static bool splits(qreal windowWidth);
    Q_INVOKABLE static qreal primaryWidth(qreal windowWidth);
    Q_INVOKABLE static bool compact(qreal height) { return height > 0 && height < CompactHeight; }
};

} // namespace norvella
