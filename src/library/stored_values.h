#pragma once

#include "library/current_library.h"

#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace varo {

/// Makes sure that `variables` holds what formula `formulaID` can see of the stored values of
/// `name`: its own and the unowned ones. Returns false when reading fails.
bool LoadVarCache(const QString& name, qint32 formulaID, data::Connection& connection,
                  colVarInfo& variables, clsDBFuncs& dbFuncs);

/// What the user is told when a value that a formula has already cannot be changed.
QString valueNotStoredMessage();

/// The value of a variable for which nothing is stored.
inline const QString kDefaultValue = QStringLiteral("0");

/// What a library holds for a variable of a formula.
struct StoredValue {
    qint32 source = VarSourceTyped;  ///< a VarSource, or a number that has no meaning
    QString value;                   ///< kDefaultValue when nothing is stored
    QString parameter;               ///< of the source: property name, or database->table
    bool isRead = true;              ///< false: the library could not be read, and "0" is assumed
};

/// What became of a value that the user typed for a variable.
struct StoredEdit {
    QString shown;    ///< what the variable's value is now, as text
    QString failure;  ///< why it is not stored, for the user; "" when there is nothing to tell
};

/// The stored values of the current library. A formula's own value of a variable comes before one
/// that belongs to no formula; a variable without either has the value "0". Names compare without
/// regard to letter case. What has been read is not read again until the library changes.
class StoredValues {
  public:
    /// `library` must outlive this.
    explicit StoredValues(CurrentLibrary& library) : library_(library) {}

    /// The value of each variable in `names` of formula `formulaID`, in order. A library that is
    /// locked is waited for once, not for each variable.
    std::vector<StoredValue> valuesOf(const QStringList& names, qint32 formulaID);

    /// Stores `text`, without the blanks around it, as the formula's own value. An empty text
    /// counts as "0"; a number equal to 0 is not stored where the formula has no value of its own;
    /// an unowned value becomes the formula's own; more than kTextLimit characters are refused, and
    /// the value is shown as "0".
    StoredEdit store(const QString& name, qint32 formulaID, const QString& text);

    /// The data table from which the formula's own value of a variable is picked, as a parameter of
    /// its source; nothing when its value comes from elsewhere.
    std::optional<QString> tableOf(const QString& name, qint32 formulaID);

    /// Stores a value that was picked for a variable which has a value of its own, as it is.
    StoredEdit storePicked(const QString& name, qint32 formulaID, const QString& value);

  private:
    StoredValue known(const QString& name, qint32 formulaID, bool isRead);
    bool load(const QString& name, qint32 formulaID);
    bool loadAll(qint32 formulaID);
    QString changeOwn(clsVarInfo& own, const QString& value);
    QString addOwn(const QString& name, qint32 formulaID, const QString& value);

    CurrentLibrary& library_;
};

}  // namespace varo
