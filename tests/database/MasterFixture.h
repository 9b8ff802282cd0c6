#pragma once

// Read access to the built master database and to the text sources it was built from.

#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <sqlite3.h>

struct Form
{
    qint64 id = 0;
    qint64 verbId = 0;
    int pronoun = 0; // 0 = NULL
    QString text;
    int type = 0;
    int order = 0;
};

struct MasterVerb
{
    qint64 id = 0;
    QString italian;
    QList<Form> forms; // by conj_order
    bool isPronominal() const;

    QList<Form> ofType(int type) const;
    QString form(int type, int pronoun) const;
};

class MasterDb
{
public:
    explicit MasterDb(const QString &path);
    ~MasterDb();
    MasterDb(const MasterDb &) = delete;
    MasterDb &operator=(const MasterDb &) = delete;

    bool isOpen() const { return m_db != nullptr; }
    QList<QVariantList> rows(const QString &sql) const;
    // Every verb with its forms, in verb id order.
    QList<MasterVerb> verbs() const;

private:
    sqlite3 *m_db = nullptr;
};

// Tab-separated source lines without comments, split into cells.
QList<QStringList> readSourceRows(const QString &path);

QString fold(const QString &text);

// Failure text listing the first problems and how many there are.
QByteArray describe(const QStringList &problems);
