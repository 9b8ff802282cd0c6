#pragma once

#include "FormAnalysis.h"
#include "VerbRef.h"

#include <QAbstractListModel>
#include <QQmlEngine>

namespace norvella {

// The "Forms" section above the search results: one row per reading of a
// typed conjugated form ("andare · Indicative · Imperfect · noi").
class SearchFormsModel : public QAbstractListModel
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by the search results")
    Q_PROPERTY(int count READ count NOTIFY countChanged)

public:
    enum Role {
        ItalianRole = Qt::UserRole + 1, // the infinitive
        DetailRole,                     // "Indicative · Imperfect · noi"
        TextRole,                       // both, as one line
        AccessibleNameRole,             // the same, with pauses a screen reader speaks
    };
    Q_ENUM(Role)

    explicit SearchFormsModel(QObject *parent = nullptr);

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;
    int count() const { return int(m_rows.size()); }

    // Replaces the rows, keeping the readings the conjugation screen shows;
    // tense names in Italian when `italianTenseNames`. No reset when nothing changed.
    void setReadings(const QList<FormReading> &readings, bool italianTenseNames);
    const FormReading *readingAt(int row) const;
    // The cells of the verb of a row that are this same form, the row's own first.
    QList<FormCell> cellsFor(int row) const;

    // A reading the conjugation screen has a cell for: not the infinitive,
    // which is the verb itself and listed among the results.
    static bool isShown(const FormReading &reading);
    // "Indicative · Imperfect · noi", by the string tables of the UI language.
    static QStringList describe(const FormReading &reading, bool italianTenseNames);

    // A row chosen (tap, Enter, screen reader): the search opens its verb.
    Q_INVOKABLE void select(int row) { emit selected(row); }

signals:
    void countChanged();
    void selected(int row);

private:
    struct Row
    {
        FormReading reading;
        QStringList detail;
    };
    QList<Row> m_rows;
};

} // namespace norvella
