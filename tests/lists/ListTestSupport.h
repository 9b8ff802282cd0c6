#pragma once

#include "CrashLog.h"
#include "DatabaseQueue.h"
#include "NotificationCenter.h"
#include "Settings.h"
#include "Verb.h"

#include <QAbstractItemModel>
#include <QAbstractItemModelTester>
#include <QStringList>
#include <QTemporaryDir>

#include <memory>

namespace norvella::test {

// A fixture database, a private settings file and log, and a queue on the database.
struct ListFixture
{
    QTemporaryDir dir;
    QString databasePath;
    std::unique_ptr<Settings> settings;
    std::shared_ptr<DatabaseQueue> queue;

    bool create(const QString &extraSql = {});
    QString log() const;
    // Changes the schema behind the queue's back and makes its connection
    // reopen, so the next statement fails when it is prepared.
    bool breakSchema(const QString &sql);

    // A list screen on the fixture as its view loads it, its model checked at every change.
    template<typename List> std::unique_ptr<List> makeList() const
    {
        auto list = std::make_unique<List>();
        new QAbstractItemModelTester(list.get(), QAbstractItemModelTester::FailureReportingMode::QtTest, list.get());
        list->setSettings(settings.get());
        list->setQueue(queue);
        list->viewDidLoad();
        return list;
    }
};

// Extra rows the list tests rely on, on top of the shared fixture.
QString listFixtureSql();

// The infinitives of a model's rows, top to bottom.
QStringList italianColumn(const QAbstractItemModel &model);
QStringList roleColumn(const QAbstractItemModel &model, const QByteArray &role);

// Collects the VerbFavouriteToggled notifications posted while it lives.
struct FavouriteNotifications
{
    FavouriteNotifications();
    QList<Notification> posted;
    ObserverSet observers;
};

} // namespace norvella::test
