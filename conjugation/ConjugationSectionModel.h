#pragma once

#include <QAbstractListModel>
#include <QList>

namespace norvella {

class VerbDetailTableViewController;

// One presentation of the selected mood, fed by the screen controller: the
// table (the verb row, then one titled section per tense) or the grid (one
// block per tense). Each row carries its forms with their speech keys.
class ConjugationSectionModel : public QAbstractListModel
{
    Q_OBJECT
public:
    enum class Presentation { Table, Grid };
    enum Role {
        KindRole = Qt::UserRole + 1, // "verb" or "tense"
        TitleRole,
        FormsRole,     // list of ConjugationFormItem
        FormCountRole,
        SectionRole,   // the table section this row shows
        EmptyNoteRole, // for a tense without forms: why it is empty; otherwise ""
        HeadingRole,   // the title in capitals, as its language writes them
        NotesRole,     // for the verb row: how the verb is used, one note per line
        PatternRole,   // for the verb row: how it conjugates, {before, model, after, sentence}
    };
    Q_ENUM(Role)

    ConjugationSectionModel(VerbDetailTableViewController &controller, Presentation presentation,
                            QObject *parent = nullptr);

    Presentation presentation() const { return m_presentation; }
    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    // Re-reads the controller; titles are looked up afresh.
    void reload();

private:
    int sectionForRow(int row) const;
    QVariantList buildForms(int section);

    VerbDetailTableViewController &m_controller;
    QList<QVariantList> m_forms; // per row, made at each reload
    QObject *m_itemOwner = nullptr;
    Presentation m_presentation;
};

} // namespace norvella
