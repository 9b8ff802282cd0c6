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

QVariantMap InterstitialTableViewController::verbUserInfo(const VerbPtr &verb)
{
    return {{QStringLiteral("verb"), QVariant::fromValue<VerbPtr>(verb)}};
}

} // namespace norvella
