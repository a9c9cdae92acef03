#include "library/stored_values.h"

#include "engine/numbers.h"
#include "library/limits.h"
#include "store/attempt.h"

namespace varo {

namespace {

const auto kNotAdded = QStringLiteral("无法添加新的变量！");

bool isZero(const QString& value) {
    const auto number = engine::parseNumber(value.toStdString());
    return number.has_value() && *number == 0;
}

/// Adds the values in the rows, but for those that are known. Returns false when reading fails.
template <class IsKnown>
bool addRows(data::Recordset& rs, colVarInfo& variables, IsKnown isKnown) {
    return attempt([&] {
        const int name = rs.column(u"VarName");
        const int owner = rs.column(u"FormulaID");
        const int value = rs.column(u"Value");
        const int source = rs.column(u"VarSourceType");
        const int memo = rs.column(u"VarMemo");
        for (; !rs.atEnd(); rs.moveNext()) {
            const QString variable = rs.text(name, kShownTextLimit);
            if (!isKnown(variable, rs.integer(owner))) {
                bool added = false;
                variables.Add(variable, rs.integer(owner), rs.text(value, kShownTextLimit),
                              rs.integer(source), rs.text(memo, kShownTextLimit), QString(), added);
            }
        }
    });
}

/// A file without an index is read from its start to its end for each variable.
constexpr qsizetype kReadOneByOne = 64;

}  // namespace

QString valueNotStoredMessage() {
    return QStringLiteral("无法编辑选定变量的值！");
}

bool LoadVarCache(const QString& name, qint32 formulaID, data::Connection& connection,
                  colVarInfo& variables, clsDBFuncs& dbFuncs) {
    if (variables.Find(name, formulaID) != nullptr) {
        return true;
    }
    data::Recordset rs;
    if (!dbFuncs.GetVarInfoOfFormula(name, formulaID, rs, connection)) {
        return false;
    }
    const bool unownedKnown = variables.Find(name, 0) != nullptr;
    return addRows(rs, variables,
                   [&](const QString&, qint32 owner) { return owner == 0 && unownedKnown; });
}

bool StoredValues::load(const QString& name, qint32 formulaID) {
    return LoadVarCache(name, formulaID, library_.connection(), library_.variables(),
                        library_.funcs());
}

bool StoredValues::loadAll(qint32 formulaID) {
    data::Recordset rs;
    colVarInfo& variables = library_.variables();
    return library_.funcs().GetVarInfoByFormulaID(formulaID, rs, library_.connection()) &&
           addRows(rs, variables, [&](const QString& name, qint32 owner) {
               return variables.Find(name, owner) != nullptr;
           });
}

std::vector<StoredValue> StoredValues::valuesOf(const QStringList& names, qint32 formulaID) {
    std::vector<StoredValue> values;
    const bool areMany = names.size() > kReadOneByOne;
    bool readable = !areMany || loadAll(formulaID);
    for (const QString& name : names) {
        readable = readable && (areMany || load(name, formulaID));
        values.push_back(known(name, formulaID, readable));
    }
    return values;
}

/// The value as far as it has been read: whether an unowned value counts is known only when reading
/// has succeeded.
StoredValue StoredValues::known(const QString& name, qint32 formulaID, bool isRead) {
    const clsVarInfo* record = library_.variables().Find(name, formulaID);
    if (record == nullptr && isRead) {
        record = library_.variables().Find(name, 0);
    }
    if (record == nullptr) {
        return {VarSourceTyped, kDefaultValue, {}, isRead};
    }
    return {record->VarSourceType, record->VarValue, record->VarMemo, true};
}

StoredEdit StoredValues::store(const QString& name, qint32 formulaID, const QString& text) {
    const QString typed = text.trimmed();
    if (typed.size() > kTextLimit) {
        return {kDefaultValue, QStringLiteral("给定变量的值超过255个字符")};
    }
    if (!load(name, formulaID)) {
        return {text, kNotAdded};
    }
    clsVarInfo* own = library_.variables().Find(name, formulaID);
    if (own != nullptr && own->VarValue == typed) {
        return {text, {}};
    }
    if (own == nullptr && isZero(typed)) {
        return {text, {}};
    }
    const QString value = typed.isEmpty() ? kDefaultValue : typed;
    const QString shown = typed.isEmpty() ? kDefaultValue : text;
    return {shown, own != nullptr ? changeOwn(*own, value) : addOwn(name, formulaID, value)};
}

std::optional<QString> StoredValues::tableOf(const QString& name, qint32 formulaID) {
    load(name, formulaID);
    const clsVarInfo* own = library_.variables().Find(name, formulaID);
    return own != nullptr && own->VarSourceType == VarSourceTable ? std::optional(own->VarMemo)
                                                                  : std::nullopt;
}

StoredEdit StoredValues::storePicked(const QString& name, qint32 formulaID, const QString& value) {
    load(name, formulaID);
    clsVarInfo* own = library_.variables().Find(name, formulaID);
    return {value, own == nullptr ? QString() : changeOwn(*own, value)};
}

QString StoredValues::changeOwn(clsVarInfo& own, const QString& value) {
    if (!library_.funcs().EditFormulaVarValue(own.VarName, own.FormulaID, value,
                                              library_.connection())) {
        return valueNotStoredMessage();
    }
    own.VarValue = value;
    return {};
}

QString StoredValues::addOwn(const QString& name, qint32 formulaID, const QString& value) {
    clsDBFuncs& funcs = library_.funcs();
    data::Connection& connection = library_.connection();
    if (clsVarInfo* unowned = library_.variables().Find(name, 0)) {
        if (!funcs.ChangeVarBelong(unowned->VarName, 0, formulaID, connection, value)) {
            return kNotAdded;
        }
        unowned->FormulaID = formulaID;
        unowned->VarValue = value;
        return {};
    }
    if (!funcs.AddNewVar(name, formulaID, value, connection)) {
        return kNotAdded;
    }
    bool added = false;
    library_.variables().Add(name, formulaID, value, VarSourceTyped, QString(), QString(), added);
    return {};
}

}  // namespace varo
