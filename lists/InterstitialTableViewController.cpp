#include "InterstitialTableViewController.h"

namespace norvella {

InterstitialTableViewController::InterstitialTableViewController(QObject *parent) : VerbTableModel(parent) {}

void InterstitialTableViewController::setVisible(bool visible)
{
    if (visible == m_isVisible)
        return;
    m_isVisible = visible;
    emit isVisibleChanged();
}

} // namespace norvella
