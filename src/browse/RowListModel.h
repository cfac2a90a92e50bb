// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAbstractListModel>
#include <QByteArray>
#include <QList>

#include <functional>
#include <utility>

// What QML sees of every list model here: the rows and their number.
class RowListModelBase : public QAbstractListModel
{
    Q_OBJECT
    Q_PROPERTY(int count READ count NOTIFY countChanged)

public:
    using QAbstractListModel::QAbstractListModel;

    int count() const { return rowCount(); }

Q_SIGNALS:
    void countChanged();
};

// A list model over value rows: each role is a column, read from a row by a
// function, with role numbers from Qt::UserRole + 1 in column order. The first
// column is also the display role.
//
// setRows() compares with what is shown: a list that holds every shown row in
// the same order inserts the new rows where they belong, so views keep their
// place and build no delegate again; the same list changes nothing; anything
// else resets the model.
template<typename Row>
class RowListModel : public RowListModelBase
{
public:
    struct Column
    {
        QByteArray name;
        std::function<QVariant(const Row &)> value;
    };
    // Whether two rows show the same thing; a model whose rows are never the
    // same always resets.
    using SameRow = std::function<bool(const Row &, const Row &)>;

    static constexpr int firstRole = Qt::UserRole + 1;

    RowListModel(QList<Column> columns, SameRow sameRow, QObject *parent = nullptr)
        : RowListModelBase(parent)
        , m_columns(std::move(columns))
        , m_sameRow(std::move(sameRow))
    {
    }

    const QList<Row> &rows() const { return m_rows; }

    void setRows(QList<Row> rows)
    {
        const qsizetype shown = m_rows.size();
        const qsizetype runs = insertedRuns(rows);
        if (runs < 0 || runs > maxInsertedRuns) {
            beginResetModel();
            m_rows = std::move(rows);
            endResetModel();
        } else {
            insertRuns(std::move(rows));
        }
        if (m_rows.size() != shown)
            Q_EMIT countChanged();
    }

    // Rows that join at the end: views keep what they show.
    void appendRows(QList<Row> rows)
    {
        if (rows.isEmpty())
            return;
        const qsizetype first = m_rows.size();
        beginInsertRows({}, int(first), int(first + rows.size() - 1));
        m_rows.append(std::move(rows));
        endInsertRows();
        Q_EMIT countChanged();
    }

    // Tells the views to read `roles` again in the rows that `changed` picks,
    // one signal per run of neighbouring rows.
    template<typename Predicate>
    void rowsChanged(Predicate changed, const QList<int> &roles)
    {
        for (qsizetype row = 0; row < m_rows.size(); ++row) {
            if (!changed(m_rows.at(row)))
                continue;
            const qsizetype first = row;
            while (row + 1 < m_rows.size() && changed(m_rows.at(row + 1)))
                ++row;
            Q_EMIT dataChanged(index(int(first)), index(int(row)), roles);
        }
    }

    int rowCount(const QModelIndex &parent = {}) const override { return parent.isValid() ? 0 : int(m_rows.size()); }

    QVariant data(const QModelIndex &index, int role) const override
    {
        if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
            return {};
        const int column = role == Qt::DisplayRole ? 0 : role - firstRole;
        if (column < 0 || column >= m_columns.size())
            return {};
        return m_columns.at(column).value(m_rows.at(index.row()));
    }

    QHash<int, QByteArray> roleNames() const override
    {
        QHash<int, QByteArray> names;
        for (qsizetype i = 0; i < m_columns.size(); ++i)
            names.insert(firstRole + int(i), m_columns.at(i).name);
        return names;
    }

private:
    // Beyond this many separate insertions one reset is cheaper for the views.
    static constexpr qsizetype maxInsertedRuns = 256;

    // How many runs of new rows `rows` adds around the shown ones, or -1 when
    // it does not hold every shown row in the same order.
    qsizetype insertedRuns(const QList<Row> &rows) const
    {
        qsizetype runs = 0;
        qsizetype next = 0;
        for (const Row &row : m_rows) {
            const qsizetype from = next;
            while (next < rows.size() && !m_sameRow(row, rows.at(next)))
                ++next;
            if (next == rows.size())
                return -1;
            runs += next > from;
            ++next;
        }
        return runs + (next < rows.size());
    }

    // Takes `rows`, which insertedRuns() accepted: shown rows are replaced in
    // place, new ones inserted where they belong.
    void insertRuns(QList<Row> rows)
    {
        qsizetype at = 0;
        for (qsizetype next = 0; next < rows.size();) {
            if (at < m_rows.size() && m_sameRow(m_rows.at(at), rows.at(next))) {
                m_rows[at++] = std::move(rows[next++]);
                continue;
            }
            qsizetype end = next + 1;
            while (end < rows.size() && !(at < m_rows.size() && m_sameRow(m_rows.at(at), rows.at(end))))
                ++end;
            beginInsertRows({}, int(at), int(at + end - next - 1));
            m_rows.insert(at, end - next, Row{});
            for (; next < end; ++next)
                m_rows[at++] = std::move(rows[next]);
            endInsertRows();
        }
    }

    QList<Column> m_columns;
    SameRow m_sameRow;
    QList<Row> m_rows;
};
