#pragma once

#include <QList>
#include <QString>

namespace varo::data {

/// The values that a column keeps as they are given; it may convert others, as a column of numbers
/// makes 7 of the text "007".
enum class ColumnKind { Any, Text, Number };

/// What the values of a column are, by the type that the file declares for it; Any when it declares
/// none that is known. A file may hold other values in the column all the same.
enum class ColumnType { Any, Integer, Floating, Money, Decimal, Text, Guid, Date, YesNo, Binary };

/// What a database does with the rows of a table.
struct TableStructure {
    /// Columns that the file would compute are not among them, and a view or virtual table has
    /// none: what the file says is not run.
    struct Column {
        QString name;
        ColumnKind kind;
        ColumnType type = ColumnType::Any;
    };
    QList<Column> columns;

    /// Name of the column in which the database gives each new row a number that no row of the
    /// table has had before; "" when there is none.
    QString autoNumber;

    /// What a statement calls the number that identifies a row ("rowid"); "" when the rows of the
    /// table have none, or columns have taken all its names.
    QString rowNumber;

    /// A statement that inserts, changes or deletes rows does what it says or fails: it is a table
    /// of the file and no view, nothing stored in the file runs with the statement (a trigger), and
    /// no row is left out or gives way to another without an error.
    bool changesAsTold = true;

    /// Nothing that the file says is evaluated when rows are read or changed, whatever else it does
    /// to them: an ordinary table with row numbers, without triggers, computed columns, CHECK,
    /// defaults other than constants, indexes of expressions or of a part of the rows, or ways of
    /// comparing that SQLite does not have by itself.
    bool runsNothing = true;
};

}  // namespace varo::data
