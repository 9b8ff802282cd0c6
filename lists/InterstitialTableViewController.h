#pragma once

#include "NotificationCenter.h"
#include "SwipeAction.h"
#include "VerbTableModel.h"

namespace norvella {

// The base of the three home-screen lists (alphabetical, favourites, history).
class InterstitialTableViewController : public VerbTableModel
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("A base of the verb lists")
    Q_PROPERTY(bool isVisible READ isVisible NOTIFY isVisibleChanged)

public:
    explicit InterstitialTableViewController(QObject *parent = nullptr);

    bool isVisible() const { return m_isVisible; }

    // Registers the observers and runs the first reload; the home screen
    // calls it once, after handing over the queue.
    virtual void viewDidLoad() {}
    Q_INVOKABLE virtual void viewDidAppear() {}
    Q_INVOKABLE virtual void viewDidDisappear() {}
    virtual void reload() = 0;

signals:
    void isVisibleChanged();
    // A screen event for the analytics log.
    void analyticsEvent(const QString &name);

protected:
    void setVisible(bool visible);

    ObserverSet m_observers;

private:
    bool m_isVisible = false;
};

} // namespace norvella
