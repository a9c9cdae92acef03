#include "platform/data/connection.h"
#include "support/access_files.h"

#include <QFile>
#include <QProcess>
#include <QSet>
#include <QTemporaryDir>

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <random>

namespace varo::data {
namespace {

using namespace Qt::StringLiterals;
using test::accessFile;
using test::accessFiles;

constexpr char kField = '\x1F';
constexpr char kRow = '\x1E';

/// What an independent reader of such files prints.
QByteArray printed(const QString& program, const QStringList& arguments) {
    QProcess process;
    process.start(program, arguments);
    return process.waitForFinished() && process.exitCode() == 0 ? process.readAllStandardOutput()
                                                                : QByteArray("failed");
}

QList<QByteArray> exportedRows(const QString& path, const QString& table) {
    const QString date = u"%Y-%m-%d %H:%M:%S"_s;
    QList<QByteArray> rows =
        printed(u"mdb-export"_s,
                {u"-Q"_s, u"-b"_s, u"hex"_s, u"-d"_s, QString(QChar(kField)), u"-R"_s,
                 QString(QChar(kRow)), u"-D"_s, date, u"-T"_s, date, path, table})
            .split(kRow);
    rows.removeFirst();
    return rows;
}

/// Whether the other reader has printed the value of a field; true where it is known to be wrong.
bool isPrinted(const Recordset& row, int column, ColumnType type, const QByteArray& printed) {
    const QByteArray text = row.text(column).toUtf8();
    switch (type) {
        case ColumnType::Floating:  // it prints 8 or 16 digits
            return row.isNull(column) ? printed.isEmpty()
                                      : printed == QByteArray::number(row.real(column), 'g', 16) ||
                                            std::abs(printed.toDouble() - row.real(column)) <=
                                                1e-6 * std::abs(row.real(column)) + 1e-44;
        case ColumnType::Decimal:
        case ColumnType::Money: {  // it prints zeros behind the point
            QByteArray shortest = printed;
            while (shortest.contains('.') && (shortest.endsWith('0') || shortest.endsWith('.'))) {
                const bool isPoint = shortest.endsWith('.');
                shortest.chop(1);
                if (isPoint) {
                    break;
                }
            }
            return text == shortest || (!text.isEmpty() && text.contains('e') &&
                                        text.toDouble() == shortest.toDouble());
        }
        case ColumnType::Date:  // it knows only dates since 1900
            return text.left(4).toInt() < 1900 || text.left(4).toInt() > 9000 || text == printed;
        case ColumnType::Guid:  // it prints the text in hex, with one hyphen less
            return QByteArray::fromHex(printed).replace('-', "") ==
                   QByteArray(text).replace('-', "");
        case ColumnType::Binary:  // it prints nothing of a short binary field
            return printed.isEmpty() || printed.toUpper() == text;
        default:
            return text == printed;
    }
}

/// The columns that can be compared: what is computed the other reader takes for something else.
QList<int> comparedColumns(const TableStructure& structure) {
    QList<int> columns;
    for (int i = 0; i < structure.columns.size(); ++i) {
        if (structure.columns[i].name != u"体积"_s) {
            columns.append(i);
        }
    }
    return columns;
}

void expectSameRows(Connection& connection, const QString& path, const QString& table) {
    const auto structure = connection.structure(table);
    ASSERT_TRUE(structure);
    QStringList columns;
    for (const auto& column : structure->columns) {
        columns.append(
            (column.type == ColumnType::Binary ? u"hex(\"%1\")"_s : u"\"%1\""_s).arg(column.name));
    }
    const QList<int> compared = comparedColumns(*structure);
    // It gives rows that have moved where they are now.
    QList<QByteArray> expected = exportedRows(path, table);
    expected.removeAll(QByteArray());
    for (auto rows = connection.query(u"Select %1 From \"%2\""_s.arg(columns.join(u','), table));
         !rows.atEnd(); rows.moveNext()) {
        const auto isSame = [&](const QByteArray& row) {
            const QList<QByteArray> fields = row.split(kField);
            return fields.size() == columns.size() &&
                   std::all_of(compared.begin(), compared.end(), [&](int i) {
                       return isPrinted(rows, i, structure->columns[i].type, fields[i]);
                   });
        };
        const auto found = std::find_if(expected.cbegin(), expected.cend(), isSame);
        ASSERT_TRUE(found != expected.cend()) << path.toStdString() << " " << table.toStdString()
                                              << ": " << rows.text(0).toStdString();
        expected.erase(found);
    }
    EXPECT_EQ(expected, QList<QByteArray>()) << table.toStdString();
}

TEST(AccessRead, GivesEveryFieldThatAnotherReaderGives) {
    for (const QString& path : accessFiles()) {
        Connection connection;
        connection.open(path, Access::Read);
        QStringList tables =
            QString::fromUtf8(printed(u"mdb-tables"_s, {u"-1"_s, path})).split(u'\n');
        tables.removeLast();
        const QStringList own = connection.tables();
        EXPECT_EQ(QSet(tables.begin(), tables.end()), QSet(own.begin(), own.end()));
        EXPECT_EQ(connection.damages(), QStringList()) << path.toStdString();
        for (const QString& table : connection.tables()) {
            expectSameRows(connection, path, table);
        }
    }
    if (accessFiles().isEmpty()) {
        GTEST_SKIP() << "VARO_ACCESS_FILES names no folder with Access files";
    }
}

TEST(AccessRead, FindsTheRowsThatAScanFinds) {
    const QString path = accessFile(u"indexed.mdb"_s);
    if (path.isEmpty()) {
        GTEST_SKIP() << "VARO_ACCESS_FILES names no folder with Access files";
    }
    Connection connection;
    connection.open(path, Access::Read);
    // A unary plus keeps a condition from an index.
    for (const QString& condition :
         {u"%1ID = 17"_s, u"%1PID = 8"_s, u"%1PID = 8.5"_s, u"%1PID In (3,5,8)"_s, u"%1ID > 250"_s,
          u"%1ID >= 250.5 And ID < 260"_s, u"%1ID < -5"_s, u"%1ID < 3000000000"_s,
          u"%1ID > 3000000000"_s, u"%1ID < 'x'"_s, u"%1PID Is Null"_s, u"%1PID = Null"_s,
          u"%1PID Between 8 And 9"_s}) {
        const auto idsWhere = [&](const QString& where) {
            QStringList ids;
            for (auto rows =
                     connection.query(u"Select ID From Formula Where %1 Order By %2ID"_s.arg(
                         where, where.startsWith(u'+') ? u"+"_s : QString()));
                 !rows.atEnd(); rows.moveNext()) {
                ids.append(rows.text(0));
            }
            return ids;
        };
        EXPECT_EQ(idsWhere(condition.arg(QString())), idsWhere(condition.arg(u"+"_s)))
            << condition.toStdString();
    }
    auto row = connection.query(
        u"Select Name,length(Memo),length(Pic),\"Pic#length\",rowid From Formula Where ID = 50"_s);
    ASSERT_FALSE(row.atEnd());
    EXPECT_EQ(row.integer(1), 6190);
    EXPECT_EQ(row.integer(2), row.integer(3));
    auto again = connection.query(u"Select ID From Formula Where rowid = ?"_s, {row.integer64(4)});
    EXPECT_EQ(again.integer(0), 50);
    for (const char* change : {"Delete From Formula", "Drop Table Formula", "Create Table X(y)"}) {
        EXPECT_THROW(connection.execute(QString::fromLatin1(change)), Error) << change;
    }
}

/// What reading the whole file gives: nothing, or what the Error says.
QString readWhole(const QString& path) {
    try {
        Connection connection;
        connection.open(path, Access::Read);
        connection.damages();
        for (const QString& table : connection.tables()) {
            try {
                for (auto rows = connection.query(u"Select * From \"%1\""_s.arg(table));
                     !rows.atEnd(); rows.moveNext()) {
                    for (int i = 0; i < rows.columnCount(); ++i) {
                        rows.text(i);
                    }
                }
            } catch (const Error&) {
                // the other tables may still be read
            }
        }
    } catch (const Error& error) {
        return error.description();
    }
    return {};
}

QString written(const QTemporaryDir& folder, const QByteArray& content) {
    const QString path = folder.filePath(u"file.mdb"_s);
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size() ? path
                                                                                    : QString();
}

TEST(AccessRead, EndsWithAnErrorAtWhatIsDamaged) {
    const QTemporaryDir folder;
    QByteArray head("\0\1\0\0Standard Jet DB\0\1\0\0\0", 24);
    head.resize(0x1000);
    for (const qsizetype size : {24, 0x100, 0x1000}) {
        EXPECT_NE(readWhole(written(folder, head.left(size))), QString());
    }
    head[0x14] = 9;
    EXPECT_TRUE(readWhole(written(folder, head)).contains(u"version 9"_s));
    std::minstd_rand random(20040506);
    for (const QString& path : accessFiles()) {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        const QByteArray whole = file.readAll();
        for (int i = 0; i < test::damagedCopies(); ++i) {
            QByteArray damaged = whole;
            for (int flips = 1 + static_cast<int>(random() % 20); flips > 0; --flips) {
                const auto at = static_cast<qsizetype>(random() % whole.size());
                damaged[at] = static_cast<char>(damaged[at] ^ (1 << random() % 8));
            }
            if (i % 10 == 0) {
                damaged.truncate(static_cast<qsizetype>(random() % whole.size()));
            }
            readWhole(written(folder, damaged));  // it neither crashes nor goes on for ever
        }
    }
}

TEST(AccessRead, SaysWhyAnEncodedOrProtectedFileIsNotRead) {
    const QString path = accessFile(u"materials.mdb"_s);
    if (path.isEmpty()) {
        GTEST_SKIP() << "VARO_ACCESS_FILES names no folder with Access files";
    }
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray whole = file.readAll();
    const QTemporaryDir folder;
    const struct {
        int at;
        const char* reason;
    } cases[] = {{0x3E, "encoded or encrypted"}, {0x44, "protected with a password"}};
    for (const auto& each : cases) {
        QByteArray changed = whole;
        changed[each.at] = static_cast<char>(changed[each.at] ^ 0x5A);
        EXPECT_TRUE(readWhole(written(folder, changed)).contains(QLatin1StringView(each.reason)));
    }
}

}  // namespace
}  // namespace varo::data
