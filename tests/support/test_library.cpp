#include "support/test_library.h"

#include "platform/data/access/file_lock.h"
#include "platform/data/access/journal.h"

#include <QBuffer>
#include <QFile>
#include <QImage>
#include <QtEndian>

#include <gtest/gtest.h>

namespace varo::test {

namespace {

using namespace Qt::StringLiterals;

void require(bool done, const char* step) {
    if (!done) {
        throw data::Error(u"the test library failed to "_s + QLatin1StringView(step));
    }
}

}  // namespace

void shareLongText(const QString& path, int rest) {
    constexpr int kPage = 4096;
    constexpr int kLength = 20'000;
    constexpr int kLonger = kLength + 250 * (kPage - 4);  // what is left in the row stays as long
    const auto varint = [](int number) {
        return QByteArray{}
            .append(static_cast<char>(number >> 14 | 0x80))
            .append(static_cast<char>((number >> 7 & 0x7f) | 0x80))
            .append(static_cast<char>(number & 0x7f));
    };
    const auto textType = [&](int length) { return varint(13 + 2 * length); };
    QByteArray bytes = fileContent(path);
    bytes.replace(varint(kLength + rest), varint(kLonger + rest));
    bytes.replace(textType(kLength), textType(kLonger));
    QByteArray shared;
    for (qsizetype page = 0; page < bytes.size(); page += kPage) {
        if (shared.isEmpty() && bytes.sliced(page + 4, 9) == "bbbbbbbbb") {
            shared.resize(4);
            qToBigEndian(static_cast<quint32>(page / kPage + 1), shared.data());
        }
    }
    require(!shared.isEmpty(), "find a longer text");
    for (qsizetype page = 0; page < bytes.size(); page += kPage) {
        if (bytes.sliced(page, 13) == QByteArray(4, '\0') + "aaaaaaaaa") {
            bytes.replace(page, 4, shared);
        }
    }
    QFile file(path);
    require(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size(), "damage a file");
}

LibraryFormat testFormat() {
    const QByteArray format = qgetenv("VARO_TEST_FORMAT");
    return format == "mdb"     ? LibraryFormat::Mdb
           : format == "accdb" ? LibraryFormat::Accdb
                               : LibraryFormat::Sqlite;
}

void requireSqlite() {
    constexpr char kReason[] = "only libraries of SQLite can be treated so";
    if (isAccessTested()) {
        [&] { GTEST_SKIP() << kReason; }();
        using testing::TestPartResult;
        throw testing::AssertionException(
            TestPartResult(TestPartResult::kSkip, __FILE__, __LINE__, kReason));
    }
}

QString journalOf(const QString& path) {
    return isAccessTested() ? access::Journal::pathOf(path) : path + u"-journal"_s;
}

LibraryLock::LibraryLock(const QString& path, Kind kind) {
    const bool isAll = kind == Kind::All;
    if (!isAccessTested()) {
        connection_.open(path);
        connection_.execute(isAll ? u"Begin Exclusive"_s : u"Begin Immediate"_s);
        return;
    }
    file_.setFileName(path);
    require(file_.open(QIODevice::ReadWrite), "open a file to be locked");
    access::lock(file_.handle(), isAll ? access::LockByte::Readers : access::LockByte::Writer,
                 access::LockKind::Alone, 0);
}

LibraryLock::~LibraryLock() {
    if (connection_.isOpen()) {
        connection_.execute(u"Rollback"_s);
    }
}

TestLibrary::TestLibrary(const QString& fileName) : fileName_(fileName) {
    createEmptyLibrary(path(), testFormat());
    connection_.open(path());
}

QString TestLibrary::addFile(const QString& name, const QByteArray& content) const {
    QFile file(pathOf(name));
    require(
        file.open(QIODevice::WriteOnly) && file.write(content) == content.size() && file.flush(),
        "write a file");
    return file.fileName();
}

qint32 TestLibrary::addFolder(qint32 parent, const QString& name) {
    qint32 id = 0;
    require(funcs_.AddNewFolder(parent, name, id, connection_), "add a folder");
    return id;
}

qint32 TestLibrary::addFormula(qint32 folder, const QString& name, const QString& expression,
                               const QString& memo) {
    qint32 id = 0;
    require(funcs_.AddNewFormula(folder, name, expression, memo, 0, id, connection_),
            "add a formula");
    return id;
}

void TestLibrary::addValue(const QString& variable, qint32 formula, const QString& value) {
    require(funcs_.AddNewVar(variable, formula, value, connection_), "add a value");
}

void TestLibrary::setSource(const QString& variable, qint32 formula, VarSource source,
                            const QString& parameter) {
    require(funcs_.EditFormulaVarPara(variable, formula, source, parameter, connection_),
            "set a source");
}

void TestLibrary::addProperty(qint32 property, const QString& name, qint32 filter, qint32 node,
                              NodeType nodeType) {
    require(funcs_.AddProperty(property, name, filter, node, nodeType, connection_),
            "add a property");
}

void TestLibrary::addPicture(qint32 formula, const QByteArray& bytes) {
    const QString file = addFile(u"picture to add"_s, bytes);
    require(funcs_.AddNewPicture(formula, file, connection_), "add a picture");
    QFile::remove(file);
}

void TestLibrary::lock(LibraryLock::Kind kind) {
    lock_ = std::make_unique<LibraryLock>(path(), kind);
}

void TestLibrary::refuse(const char* step, const char* table, const QString& when) {
    allow();
    refusal_ = std::make_unique<Refusal>(
        path(), u"Before %1 On %2 When %3 Begin Select Raise(Abort, 'refused'); End"_s.arg(
                    QLatin1StringView(step), QLatin1StringView(table), when));
}

void MissingColumn::rename(const char* from, const char* to) {
    requireSqlite();
    library_.connection().execute(u"Alter Table %1 Rename Column %2 To %3"_s.arg(
        QLatin1StringView(table_), QLatin1StringView(from), QLatin1StringView(to)));
}

QStringList TestLibrary::content() {
    QStringList lines = rows(u"Select * From Tree"_s) + rows(u"Select * From RecentVar"_s) +
                        rows(u"Select * From Property"_s) + rows(u"Select * From FilterCond"_s) +
                        rows(u"Select * From FilterExpressions"_s) +
                        rows(u"Select ID,Name,Formula,Memo,PicType,PID,OrderID From Formula"_s);
    for (const QString& picture : rows(u"Select hex(Pic) From Formula"_s)) {
        lines.append(QString::number(qHash(picture)));
    }
    return lines;
}

QStringList remainingRows(data::Recordset& recordset) {
    QStringList rows;
    for (; !recordset.atEnd(); recordset.moveNext()) {
        QStringList fields;
        for (int column = 0; column < recordset.columnCount(); ++column) {
            fields.append(recordset.text(column));
        }
        rows.append(fields.join(QLatin1Char('|')));
    }
    return rows;
}

QByteArray pictureBytes(qsizetype size) {
    QByteArray bytes(size, Qt::Uninitialized);
    quint32 state = 1;
    for (char& byte : bytes) {
        state = state * 1664525 + 1013904223;
        byte = static_cast<char>(state >> 24);
    }
    return bytes;
}

QByteArray imageBytes(QSize size, const QColor& color, const char* format) {
    QImage image(size, QImage::Format_RGB32);
    image.fill(color);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    require(image.save(&buffer, format), "write a picture");
    return bytes;
}

QByteArray fileContent(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        throw data::Error(path + QLatin1StringView(": ") + file.errorString());
    }
    return file.readAll();
}

}  // namespace varo::test
