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
// setRows() compares with what is shown: a list that only grew at its end
// inserts the new rows, so views keep their place and build no delegate
// again; the same list changes nothing; anything else resets the model.
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
        const bool keepsShown = rows.size() >= shown
            && std::equal(m_rows.cbegin(), m_rows.cend(), rows.cbegin(), m_sameRow);
        if (keepsShown && rows.size() == shown)
            return;
        if (keepsShown) {
            beginInsertRows({}, int(shown), int(rows.size() - 1));
            m_rows = std::move(rows);
            endInsertRows();
        } else {
            beginResetModel();
            m_rows = std::move(rows);
            endResetModel();
        }
        if (m_rows.size() != shown)
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
    QList<Column> m_columns;
    SameRow m_sameRow;
    QList<Row> m_rows;
};
