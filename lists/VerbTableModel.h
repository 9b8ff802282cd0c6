#pragma once

#include "SwipeAction.h"
#include "Verb.h"
#include "VerbRepository.h"

#include <QAbstractListModel>
#include <QPointer>
#include <QQmlEngine>

#include <memory>
#include <vector>

namespace norvella {

class Settings;

// The part every verb list and the search results share: the rows exactly as
// the view last loaded them, shown as subtitle rows, plus the queue and the
// settings they read. The rows are a snapshot separate from each screen's own
// data, so a screen can change its data first and tell the view afterwards,
// and the view never sees a row count it was not told about.
class VerbTableModel : public QAbstractListModel
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("A base of the verb lists")
    // The verb repository, which holds the database queue; without one
    // nothing is read.
    Q_PROPERTY(QObject *queue READ queueObject WRITE setQueueObject NOTIFY queueChanged)
    Q_PROPERTY(int count READ count NOTIFY countChanged)
    // The verb the detail column shows beside the list, -1 for none.
    // (A double for QML, which has no 64-bit integer; ids stay far below 2^53.)
    Q_PROPERTY(double highlightedVerbId READ highlightedVerbIdForQml NOTIFY highlightedVerbIdChanged)

public:
    enum Role {
        ItalianRole = Qt::UserRole + 1,
        TranslationRole,
        IsFavouriteRole,
        SectionRole,
        VerbIdRole,
    };
    Q_ENUM(Role)

    explicit VerbTableModel(QObject *parent = nullptr);

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;
    int count() const { return int(m_rows.size()); }
    qint64 highlightedVerbId() const { return m_highlightedVerbId; }
    double highlightedVerbIdForQml() const { return double(m_highlightedVerbId); }
    void setHighlightedVerbId(qint64 id);

    // The screen reads and writes through the repository, which outlives it.
    VerbRepository *repository() const { return m_repository; }
    void setRepository(VerbRepository *repository);
    std::shared_ptr<DatabaseQueue> queue() const { return m_repository ? m_repository->queue() : nullptr; }
    // A repository of this screen's own over the queue: for a screen used
    // alone, which then shares no index with any other.
    void setQueue(std::shared_ptr<DatabaseQueue> queue);
    QObject *queueObject() const { return m_repository; }
    void setQueueObject(QObject *object) { setRepository(VerbRepository::from(object)); }

    // Null goes back to the app-wide store.
    void setSettings(Settings *settings) { m_settings = settings; }
    Settings &settings() const;

    // The verb shown in a row of the view, or null.
    VerbPtr verbAtRow(int row) const;
    int rowOfVerb(const Verb *verb) const;

    // For a view keeping its place across a reload: the verb at a row (-1 for
    // none), and where that verb is now, trying the old row first because most
    // reloads leave the order as it was.
    Q_INVOKABLE double verbIdAt(int row) const;
    Q_INVOKABLE int rowForVerbId(double id, int hint = -1) const;

    // A tap on a row: the lists open the detail column with its verb.
    Q_INVOKABLE virtual void selectRow(int row);
    // The row's one trailing action, or null when it has none. Building it
    // may already change the list (favourites, history).
    Q_INVOKABLE virtual norvella::SwipeAction *trailingSwipeAction(int row);

signals:
    void queueChanged();
    void countChanged();
    void highlightedVerbIdChanged();
    // A row was chosen: the detail column should show this verb.
    void showDetail(const norvella::VerbPtr &verb);

protected:
    struct Row
    {
        VerbPtr verb;
        QString section;
    };
    // The view forgets its rows and takes these.
    void reloadData(std::vector<Row> rows);
    // The view drops the row of this verb (if it shows one).
    void deleteRow(const Verb *verb);
    // The view redraws the row of this verb.
    void reloadRow(const Verb *verb);

    static std::vector<Row> rowsFor(const QList<VerbPtr> &verbs);
    // The star-or-unstar action of the alphabetical lists: the row shows the
    // new state at once and goes back if the write fails. The toggle is
    // announced with this model as its sender.
    SwipeAction *favouriteSwipeAction(const VerbPtr &verb);
    // Rows reloaded without their verb get it from here the first time it is
    // needed: most of a long result list is never looked at.
    virtual VerbPtr createRowVerb(int) const { return nullptr; }

private:
    const VerbPtr &rowVerb(size_t row) const;

    mutable std::vector<Row> m_rows;
    QPointer<VerbRepository> m_repository;
    QPointer<VerbRepository> m_ownRepository;
    Settings *m_settings = nullptr;
    qint64 m_highlightedVerbId = -1;
};

} // namespace norvella
