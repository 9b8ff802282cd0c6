#pragma once

#include <QObject>
#include <QQmlEngine>
#include <QStringList>
#include <QUrl>

#include <functional>

namespace norvella {

// Opens addresses outside the app (web pages, mailto: addresses, saved files)
// and finds out whether anything took them. On a Linux desktop that means
// waiting for xdg-open's exit status: QDesktopServices starts it detached and
// answers "opened" even when xdg-open then finds no program for the address.
// A link nothing could open is reported through `failed`, which the window
// shows with the address to copy.
class LinkOpener : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

public:
    using Done = std::function<void(bool opened)>;

    static LinkOpener *instance();
    static LinkOpener *create(QQmlEngine *, QJSEngine *);

    // The system's way: xdg-open where it is installed, QDesktopServices elsewhere.
    static void openWithSystem(const QUrl &url, Done done);
    // Runs a desktop helper (xdg-open, xdg-email) and reports whether it ended
    // with status 0. A helper still running after `patience` ms has handed the
    // address to a program that keeps it waiting: that counts as opened.
    static void runHelper(const QString &program, const QStringList &arguments, Done done, int patience = 10000);

    // Opens `url` through DesktopMail::platform() (which tests replace); when
    // nothing takes it, emits `failed` with `message` and the address.
    static void openOrReport(const QUrl &url, const QString &message);
    // The same for QML; the message says nothing could open the link.
    Q_INVOKABLE void openLink(const QUrl &url);
    static void copyText(const QString &text);
    Q_INVOKABLE void copyToClipboard(const QString &text) const { copyText(text); }

    // What the user reads when no program could open a web address.
    static QString linkFailedText();

signals:
    void failed(const QString &message, const QString &address);

private:
    explicit LinkOpener(QObject *parent = nullptr) : QObject(parent) {}
};

} // namespace norvella
