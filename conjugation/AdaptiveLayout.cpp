#include "AdaptiveLayout.h"

#include <algorithm>
#include <cmath>

namespace norvella {

int AdaptiveLayout::gridColumns(qreal width)
{
    return std::max(1, int(std::floor((width - Spacing) / (BlockMinimum + Spacing))));
}

bool AdaptiveLayout::usesGrid(qreal width)
{
    return width >= gridMinimumWidth();
}

qreal AdaptiveLayout::blockWidth(qreal width, int columns)
{
    columns = std::max(1, columns);
    return std::max<qreal>(BlockMinimum, std::floor((width - Spacing * (columns + 1)) / columns));
}

bool AdaptiveLayout::splits(qreal windowWidth)
{
    return windowWidth >= ListMinimum + 1 + gridMinimumWidth();
}

qreal AdaptiveLayout::primaryWidth(qreal windowWidth)
{
    if (!splits(windowWidth))
        return windowWidth;
    // The separator takes one pixel; the list gives up room to the grid first.
    return std::clamp<qreal>(windowWidth - 1 - gridMinimumWidth(), ListMinimum, ListMaximum);
}

} // namespace norvella
