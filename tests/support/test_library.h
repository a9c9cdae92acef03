#pragma once

#include "platform/data/connection.h"
#include "store/collections.h"
#include "store/db_funcs.h"
#include "store/template.h"
#include "support/printers.h"
#include "support/recording_questions.h"
#include "support/refusal.h"

#include <QByteArray>
#include <QColor>
#include <QFile>
#include <QSize>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <memory>

namespace varo::test {

/// The rows of a record set from the current one on, their fields joined by "|".
QStringList remainingRows(data::Recordset& recordset);

/// Damages a database that is not open: each text of 20,000 "a", whose row holds `rest` bytes
/// beside it, goes on for a million characters in the pages of a longer text of "b".
void shareLongText(const QString& path, int rest);

/// The format of a TestLibrary: SQLite's, unless the environment's VARO_TEST_FORMAT says "mdb" or
/// "accdb".
LibraryFormat testFormat();
inline bool isAccessTested() {
    return testFormat() != LibraryFormat::Sqlite;
}

/// Ends the test when libraries are Access files: it does to them what only SQLite can.
void requireSqlite();

/// Path of the journal beside the library at `path`.
QString journalOf(const QString& path);

/// While it lives, other connections cannot write to a library, or not use it at all.
class LibraryLock {
  public:
    enum class Kind { Writing, All };

    explicit LibraryLock(const QString& path, Kind kind = Kind::All);
    Q_DISABLE_COPY_MOVE(LibraryLock)
    ~LibraryLock();

  private:
    data::Connection connection_;  ///< to a library of SQLite
    QFile file_;                   ///< another one
};

/// A library in a folder of its own that goes away with it, filled through the data operations. A
/// step that fails throws data::Error, which fails the test.
class TestLibrary {
  public:
    explicit TestLibrary(const QString& fileName = QStringLiteral("library.vdb"));

    QString path() const { return folder() + fileName_; }
    QString folder() const { return directory_.path() + QLatin1Char('/'); }  ///< with a separator
    QString fileName() const { return fileName_; }

    /// Path of a file called `name` in the library's folder.
    QString pathOf(const QString& name) const { return folder() + name; }

    /// Writes such a file and returns its path.
    QString addFile(const QString& name, const QByteArray& content) const;

    data::Connection& connection() { return connection_; }
    clsDBFuncs& funcs() { return funcs_; }
    RecordingQuestions& questions() { return questions_; }

    /// Each returns the identifier of what it added.
    qint32 addFolder(qint32 parent, const QString& name);
    qint32 addFormula(qint32 folder, const QString& name, const QString& expression = {},
                      const QString& memo = {});

    void addValue(const QString& variable, qint32 formula, const QString& value);
    /// Lets a stored value come from a property or a data table.
    void setSource(const QString& variable, qint32 formula, VarSource source,
                   const QString& parameter);
    void addProperty(qint32 property, const QString& name, qint32 filter, qint32 node,
                     NodeType nodeType);
    void addPicture(qint32 formula, const QByteArray& bytes);

    /// Lets a step ("Insert") on a table fail, for rows of which `when` is true, until allow().
    void refuse(const char* step, const char* table, const QString& when = QStringLiteral("1"));
    void allow() { refusal_.reset(); }

    /// Keeps other connections from writing to the library, or from using it, until unlock().
    void lock(LibraryLock::Kind kind = LibraryLock::Kind::All);
    void unlock() { lock_.reset(); }

    /// Everything that is stored.
    QStringList content();

    /// One string for each row of a query made of the test's own text: its fields, joined by "|".
    QStringList rows(const QString& query) {
        data::Recordset recordset = connection_.query(query);
        return remainingRows(recordset);
    }

  private:
    QTemporaryDir directory_;
    QString fileName_;
    RecordingQuestions questions_;
    clsDBFuncs funcs_{questions_};
    data::Connection connection_;
    std::unique_ptr<Refusal> refusal_;
    std::unique_ptr<LibraryLock> lock_;
};

/// While it lives, a table of a library lacks one of its columns.
class MissingColumn {
  public:
    MissingColumn(TestLibrary& library, const char* table, const char* column)
        : library_(library), table_(table), column_(column) {
        rename(column, "Away");
    }
    ~MissingColumn() { rename("Away", column_); }
    Q_DISABLE_COPY_MOVE(MissingColumn)

  private:
    void rename(const char* from, const char* to);

    TestLibrary& library_;
    const char* table_;
    const char* column_;
};

/// Adds a record to a list of libraries and returns its key.
inline QString addTo(colFormulaDB& libraries, const QString& folder, const QString& fileName,
                     const QString& text = {}, const QString& tag = {}) {
    QString key;
    bool added = false;
    libraries.Add(fileName, folder, text, key, tag, added);
    return key;
}

/// `size` bytes in which every chunk differs from every other.
QByteArray pictureBytes(qsizetype size);

/// A picture of one colour.
QByteArray imageBytes(QSize size, const QColor& color, const char* format);

QByteArray fileContent(const QString& path);

}  // namespace varo::test
