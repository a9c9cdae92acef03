#pragma once

#include "platform/data/connection.h"
#include "platform/questions/questions.h"
#include "store/collections.h"
#include "store/db_funcs.h"
#include "store/library_connection.h"

#include <QString>

#include <functional>

namespace varo {

/// The library that the user works on: one of the configured ones, its connection, and the stored
/// values that have been read from it. They change together.
class CurrentLibrary {
  public:
    /// `libraries` and `questions` must outlive this; `questions` shows why the bytes of a picture
    /// could not be moved.
    CurrentLibrary(const colFormulaDB& libraries, Questions& questions);

    /// Makes the configured library with this number the current one; one whose file is open
    /// already stays open, unless another program has put something in the place of that file.
    /// Returns false, with no library open, when there is no such library or it
    /// cannot be opened; shows nothing.
    bool open(int number);

    /// The same, without waiting for a library that is locked at this moment: it fails as if it had
    /// been waited for.
    bool openAtOnce(int number);

    /// Why the last open failed; None when it did not, or there is no such library.
    const OpenResult& openResult() const { return openResult_; }

    /// `tell` is called when a statement is the first to fail because the open file has been
    /// deleted, replaced, overwritten, cut short or given a write-ahead log by another program; it
    /// must not use this. Everything fails then until open() or close().
    void setReplacedNotice(std::function<void()> tell) { tellReplaced_ = std::move(tell); }

    /// Whether the open file is still the one at its path.
    bool isInPlace() const { return connection_.isInPlace(); }

    /// Closes the file. What was read from it is forgotten.
    void close();

    /// The configured libraries.
    const colFormulaDB& libraries() const { return libraries_; }

    bool isOpen() const { return connection_.isOpen(); }
    /// Number of the open library; 0 when none is open.
    int number() const { return isOpen() ? number_ : 0; }
    /// Folder of the open file, with its trailing separator.
    const QString& folder() const { return folder_; }
    /// Name of the open file.
    const QString& fileName() const { return name_; }

    data::Connection& connection() { return connection_; }
    clsDBFuncs& funcs() { return funcs_; }
    /// Stored values that have been read; see StoredValues.
    colVarInfo& variables() { return variables_; }

  private:
    /// The configured library with this number; null when there is none.
    const clsFormulaDB* configured(int number) const;

    const colFormulaDB& libraries_;
    clsDBFuncs funcs_;
    data::Connection connection_;
    colVarInfo variables_;
    std::function<void()> tellReplaced_;
    OpenResult openResult_;
    int number_ = 0;
    QString folder_;
    QString name_;
};

}  // namespace varo
