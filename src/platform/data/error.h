#pragma once

#include <QString>

#include <stdexcept>

namespace varo::data {

/// The one exception of the data layer: a file that is no library, a statement that fails, a lock
/// that is not released in time, a full disk. description() is the database's own text, for the log
/// or for the message box of a routine that shows it.
class Error : public std::runtime_error {
  public:
    enum class Cause {
        Other,
        Locked,
        Interrupted,
        Replaced,
        // Why a file does not open, beside which something lies that stays as it is:
        NoRegularFile,     ///< in the place of a journal or log is a link, a folder or a device
        ForeignJournal,    ///< a journal that is none, is of another file or names one
        UncertainJournal,  ///< a journal that may be of another file
        ForeignLog,        ///< like ForeignJournal, of a write-ahead log
        UncertainLog,      ///< a write-ahead log that may be of another file
        NeedsRecovery,     ///< a journal or log of a file that cannot be written
        ReadOnlyFolder,    ///< a log in a folder that cannot be written, of a file that can
        NotCopied,         ///< for Access::Glance; there is nothing against the file so far
    };

    explicit Error(const QString& description, Cause cause = Cause::Other)
        : std::runtime_error(description.toStdString()), description_(description), cause_(cause) {}

    const QString& description() const noexcept { return description_; }
    Cause cause() const noexcept { return cause_; }

    /// Whether it was a lock of another program or connection.
    bool isLocked() const noexcept { return cause_ == Cause::Locked; }

    /// Whether the statement was ended by Connection::setInterrupt().
    bool isInterrupted() const noexcept { return cause_ == Cause::Interrupted; }

    /// Whether the open file is no longer the one at its path: it was replaced, deleted,
    /// overwritten, cut short or given a write-ahead log. Opening it again reads what is there.
    bool isReplaced() const noexcept { return cause_ == Cause::Replaced; }

  private:
    QString description_;
    Cause cause_;
};

}  // namespace varo::data
