#pragma once

#include "library/current_library.h"

#include <QString>
#include <QStringList>

namespace varo {

/// Where the value of a variable comes from.
struct VariableSource {
    qint32 type = VarSourceTyped;  ///< a VarSource, or a number that has no meaning
    QString parameter;             ///< property name, or database->table
    bool isRead = true;            ///< false: the library could not be read
};

/// The sources of the variables of one formula, and the changes that the user makes to them, which
/// are stored together. Works through a connection of its own: the library stays the formula's,
/// whichever is the current one meanwhile.
class VariableSources {
  public:
    /// `current` must outlive this.
    VariableSources(CurrentLibrary& current, qint32 formulaID);

    /// Opens the library `fileName` in `folder`; see ConnectLibrary().
    bool connect(const QString& folder, const QString& fileName, const QString& password);

    /// The stored source of a variable: that of the formula's own value, none of an unowned one.
    VariableSource stored(const QString& name);

    /// Names of the properties that feed variables of the library, in alphabetical order; empty
    /// when they cannot be read.
    QStringList propertyNames();

    /// Notes a change: the variable gets this source, without a parameter.
    void setType(const QString& name, VarSource type);
    /// Notes a change of the parameter; the source is the one that was noted before, else `type`.
    void setParameter(const QString& name, VarSource type, const QString& parameter);

    /// The first variable whose change cannot be stored and why, for the user; "" when all can.
    struct Fault {
        QString variable;
        QString text;
    };
    Fault fault() const;

    /// Stores the changes in the order in which they were begun, a value "0" first where the
    /// formula has none. Returns why a step failed, for the user, or "". What was stored before
    /// that step stays.
    QString store();

  private:
    struct StoredChange {
        const clsVarInfo* change;
        bool isNew;  ///< the formula had no value of its own
    };

    colVarInfo& cache();
    clsVarInfo* own(const QString& name);
    /// Returns why a step failed.
    QString storeOne(const clsVarInfo& change, bool isNew);
    void remember(const StoredChange& stored);

    CurrentLibrary& current_;
    const qint32 formulaID_;
    data::Connection connection_;
    colVarInfo ownCache_;  ///< in place of the current library's, when that is another one
    colVarInfo changes_;
};

}  // namespace varo
