#include "library/variable_sources.h"

#include "library/limits.h"
#include "library/stored_values.h"
#include "store/attempt.h"
#include "store/library_connection.h"

#include <vector>

namespace varo {

namespace {

QString notStored(bool isNew) {
    return isNew ? QStringLiteral("无法添加新的变量！")
                 : QStringLiteral("无法编辑变量的来源类型和参数！");
}

}  // namespace

VariableSources::VariableSources(CurrentLibrary& current, qint32 formulaID)
    : current_(current), formulaID_(formulaID) {}

bool VariableSources::connect(const QString& folder, const QString& fileName,
                              const QString& password) {
    return ConnectLibrary(folder, fileName, connection_, password);
}

/// What has been read of the library's values.
colVarInfo& VariableSources::cache() {
    const bool isCurrent = current_.isOpen() && current_.connection().path() == connection_.path();
    return isCurrent ? current_.variables() : ownCache_;
}

clsVarInfo* VariableSources::own(const QString& name) {
    return cache().Find(name, formulaID_);
}

VariableSource VariableSources::stored(const QString& name) {
    const bool isRead = LoadVarCache(name, formulaID_, connection_, cache(), current_.funcs());
    const clsVarInfo* record = own(name);
    if (record == nullptr) {
        return {VarSourceTyped, {}, isRead};
    }
    return {record->VarSourceType, record->VarMemo};
}

QStringList VariableSources::propertyNames() {
    QStringList names;
    data::Recordset rs;
    if (current_.funcs().GetVarMemoBySourceType(VarSourceProperty, rs, connection_)) {
        attempt([&] {
            for (; !rs.atEnd(); rs.moveNext()) {
                names.append(rs.text(0));
            }
        });
    }
    names.removeAll(QString());
    return names;
}

void VariableSources::setType(const QString& name, VarSource type) {
    if (clsVarInfo* change = changes_.Find(name, formulaID_)) {
        change->VarSourceType = type;
        change->VarMemo.clear();
        return;
    }
    bool added = false;
    changes_.Add(name, formulaID_, QString(), type, QString(), QString(), added);
}

void VariableSources::setParameter(const QString& name, VarSource type, const QString& parameter) {
    if (clsVarInfo* change = changes_.Find(name, formulaID_)) {
        change->VarMemo = parameter;
        return;
    }
    bool added = false;
    changes_.Add(name, formulaID_, QString(), type, parameter, QString(), added);
}

VariableSources::Fault VariableSources::fault() const {
    for (const clsVarInfo& change : changes_) {
        if (change.VarSourceType != VarSourceTyped && change.VarMemo.trimmed().isEmpty()) {
            return {change.VarName,
                    QStringLiteral("用户没有为变量“%1”设置参数！").arg(change.VarName)};
        }
        if (change.VarMemo.size() > kTextLimit) {
            return {change.VarName,
                    QStringLiteral("变量“%1”的参数超过255个字符！").arg(change.VarName)};
        }
    }
    return {};
}

QString VariableSources::store() {
    if (changes_.Count() == 0) {
        return {};
    }
    std::vector<StoredChange> done;
    QString failure;
    const bool committed = attempt([&] {
        data::Transaction transaction(connection_);
        for (const clsVarInfo& change : changes_) {
            LoadVarCache(change.VarName, formulaID_, connection_, cache(), current_.funcs());
            const bool isNew = own(change.VarName) == nullptr;
            failure = storeOne(change, isNew);
            if (!failure.isEmpty()) {
                break;
            }
            done.push_back({&change, isNew});
        }
        transaction.commit();
    });
    if (!committed) {
        if (failure.isEmpty()) {
            // The library takes no changes: it is the first step that has failed.
            const QString& name = changes_.Item(1).VarName;
            stored(name);
            failure = notStored(own(name) == nullptr);
        }
        return failure;
    }
    for (const StoredChange& each : done) {
        remember(each);
    }
    return failure;
}

QString VariableSources::storeOne(const clsVarInfo& change, bool isNew) {
    clsDBFuncs& funcs = current_.funcs();
    const QString& name = isNew ? change.VarName : own(change.VarName)->VarName;
    if (isNew && !funcs.AddNewVar(name, formulaID_, kDefaultValue, connection_)) {
        return notStored(true);
    }
    const bool isStored = funcs.EditFormulaVarPara(name, formulaID_, change.VarSourceType,
                                                   change.VarMemo, connection_);
    return isStored ? QString() : notStored(false);
}

void VariableSources::remember(const StoredChange& stored) {
    const clsVarInfo& change = *stored.change;
    if (stored.isNew) {
        bool added = false;
        cache().Add(change.VarName, formulaID_, kDefaultValue, VarSourceTyped, QString(), QString(),
                    added);
    }
    clsVarInfo& record = *own(change.VarName);
    record.VarSourceType = change.VarSourceType;
    record.VarMemo = change.VarMemo;
}

}  // namespace varo
