#pragma once

#include "platform/data/access/virtual_table.h"
#include "platform/data/driver.h"
#include "platform/data/sqlite_handle.h"
#include "platform/data/statement.h"

#include <sys/stat.h>

namespace varo::access {

/// An open Access file. Its tables are seen through a database of SQLite in memory, which knows
/// nothing of transactions: those are of the pages.
class AccessFile final : public data::DatabaseFile {
  public:
    /// Throws data::Error when the catalog of the file cannot be read.
    AccessFile(const QString& path, const Header& header, data::Access access);

    sqlite3* handle() const noexcept override { return handle_.get(); }
    data::StatementWatch& watch() noexcept override { return *watch_; }
    void setLockWait(int milliseconds) override { pages_.setLockWait(milliseconds); }
    void setCacheLimit(qint64 bytes) override { pages_.setCacheLimit(bytes); }
    void requireInPlace() override;
    qint64 changesOfOthers() override { return static_cast<qint64>(pages_.stateNumber()); }
    bool isInTransaction() const noexcept override { return pages_.isWriting() || isReading_; }
    void begin(int level) override;
    void commit(int level) override;
    void undo(int level) noexcept override;
    void beginReading() override;
    void endReading() noexcept override;
    qint64 execute(const QString& statement, const data::Arguments& arguments) override;
    qint64 lastInsertedId() const override { return tables_.lastAutoNumber; }
    QString lengthOf(const QString& table, const QString& column) const override;
    std::shared_ptr<data::LongBinary> field(const QString& table, const QString& column,
                                            qint32 id) override;
    std::optional<data::TableStructure> structure(const QString& table) override;
    QStringList tables() override;
    QStringList damages() override;

    PageFile& pages() noexcept { return pages_; }

    /// While the result lives, pages may be taken as often as a change needs them.
    [[nodiscard]] ChangingRows changing() { return ChangingRows(tables_); }

    /// Changes the field `column` of the row at `place`, in a transaction.
    void setField(SeenTable& table, std::size_t column, RowPlace place, const LongField& field);

  private:
    SeenTable* table(const QString& name);
    void requireSameTables();
    void takePage();
    QStringList checkedPages();
    QStringList damagesOf(const SeenTable& table);

    QString path_;
    PageFile pages_;
    SeenTables tables_;
    quint64 state_ = 0;            ///< of the file, in which the tables were read
    std::vector<int> savepoints_;  ///< of the levels from 2 on
    bool isReading_ = false;
    bool isChecking_ = false;  ///< which may take any number of pages
    struct stat opened_ {};
    std::unique_ptr<data::StatementWatch> watch_;
    data::TemporaryFileLayer layer_;
    data::DatabaseHandle handle_;
    data::StatementCache statements_;  // behind the others, which outlive it
};

}  // namespace varo::access
