#include "store/collections.h"

#include "store/keys.h"

#include <QDir>
#include <QFile>
#include <QSet>

#include <algorithm>

namespace varo {

namespace {

bool sameName(const QString& left, const QString& right) {
    return left.compare(right, Qt::CaseInsensitive) == 0;
}

QString foldedName(const QString& name) {
    return name.toCaseFolded();
}

/// The first record that `matches`; null when there is none.
template <class Collection, class Predicate>
auto firstMatch(const Collection& collection, Predicate matches) -> decltype(&*collection.begin()) {
    for (const auto& record : collection) {
        if (matches(record)) {
            return &record;
        }
    }
    return nullptr;
}

/// The n-th record, from 1, that `matches`; null when there are fewer.
template <class Collection, class Predicate>
auto nthMatch(const Collection& collection, int n, Predicate matches)
    -> decltype(&*collection.begin()) {
    int found = 0;
    return firstMatch(collection,
                      [&](const auto& record) { return matches(record) && ++found == n; });
}

template <class Collection, class Predicate>
int countMatches(const Collection& collection, Predicate matches) {
    int count = 0;
    for (const auto& record : collection) {
        count += matches(record) ? 1 : 0;
    }
    return count;
}

/// Removes every record that `matches`, by its position.
template <class Collection, class Predicate>
void removeMatches(Collection& collection, Predicate matches) {
    for (int position = collection.Count(); position > 0; --position) {
        if (matches(collection.Item(position))) {
            collection.Remove(position);
        }
    }
}

/// Tells which files exist from the entries of their folders, each of which is read once.
class ExistingFiles {
  public:
    bool contains(const QString& path) {
        const qsizetype nameAt =
            std::max(path.lastIndexOf(u'/'), path.lastIndexOf(QDir::separator())) + 1;
        const QString folder = path.first(nameAt);
        auto entries = entries_.find(folder);
        if (entries == entries_.end()) {
            const QStringList names =
                QDir(folder).entryList(QDir::Files | QDir::Hidden | QDir::System, QDir::Unsorted);
            entries = entries_.insert(folder, QSet(names.begin(), names.end()));
        }
        return entries->contains(path.sliced(nameAt));
    }

  private:
    QHash<QString, QSet<QString>> entries_;
};

}  // namespace

// colFormulaDB

void colFormulaDB::Add(const QString& FormulaDBName, const QString& FormulaDBPath,
                       const QString& FormulaNodeText, QString& NodeKey, const QString& Tag,
                       bool& success) {
    const QString key = libraryKey(counter_);
    append({.FormulaNodeText = FormulaNodeText,
            .Tag = Tag,
            .NodeKey = key,
            .FormulaDBPath = FormulaDBPath,
            .FormulaDBName = FormulaDBName});
    ++counter_;
    NodeKey = key;
    success = true;
}

bool colFormulaDB::FindDB(const QString& name, const QString& path) const {
    return firstMatch(*this, [&](const clsFormulaDB& library) {
               return library.FormulaDBName == name && library.FormulaDBPath == path;
           }) != nullptr;
}

const clsFormulaDB* colFormulaDB::GetVarValue(const QString& name) const {
    return firstMatch(
        *this, [&](const clsFormulaDB& library) { return sameName(library.FormulaDBName, name); });
}

// colFormulaInfo

void colFormulaInfo::Add(qint32 FormulaID, const QString& FormulaName,
                         const QString& FormulaExpression, const QString& FormulaMemo,
                         const QString& FormulaPicPath, qint32 FormulaPicType, qint32 FormulaPID,
                         const QString& Tag) {
    append({.FormulaID = FormulaID,
            .FormulaName = FormulaName,
            .FormulaExpression = FormulaExpression,
            .FormulaMemo = FormulaMemo,
            .FormulaPicPath = FormulaPicPath,
            .FormulaPicType = FormulaPicType,
            .FormulaPID = FormulaPID,
            .NodeKey = formulaKey(FormulaID),
            .Tag = Tag});
}

void colFormulaInfo::Add(const clsFormulaInfo& formula) {
    Add(formula.FormulaID, formula.FormulaName, formula.FormulaExpression, formula.FormulaMemo,
        formula.FormulaPicPath, formula.FormulaPicType, formula.FormulaPID, formula.Tag);
}

void colFormulaInfo::Clear() {
    // Most pictures have never been written out: looking for each file would take longer than the
    // rest.
    ExistingFiles existing;
    for (int position = Count(); position > 0; --position) {
        clsFormulaInfo& formula = Item(position);
        if (!formula.FormulaPicPath.isEmpty() && existing.contains(formula.FormulaPicPath)) {
            onRemoveByKey(formula);
        }
        Remove(position);
    }
}

void colFormulaInfo::onRemoveByKey(clsFormulaInfo& formula) {
    if (!formula.FormulaPicPath.isEmpty()) {
        QFile::remove(formula.FormulaPicPath);
    }
}

const clsFormulaInfo* colFormulaInfo::Find(qint32 FormulaID) const {
    return firstMatch(
        *this, [&](const clsFormulaInfo& formula) { return formula.FormulaID == FormulaID; });
}

int colFormulaInfo::FindFormulaCountByPID(qint32 PID) const {
    return countMatches(*this,
                        [&](const clsFormulaInfo& formula) { return formula.FormulaPID == PID; });
}

bool colFormulaInfo::FindFormulaIDByPID(qint32 PID, int n, qint32& FormulaID) const {
    const clsFormulaInfo* formula = nthMatch(
        *this, n, [&](const clsFormulaInfo& candidate) { return candidate.FormulaPID == PID; });
    if (formula == nullptr) {
        return false;
    }
    FormulaID = formula->FormulaID;
    return true;
}

// ColNodeInfo

void ColNodeInfo::Add(qint32 NodeID, const QString& NodeName, const QString& FilePath,
                      const QString& FileName, const QString& RootNodeKey, qint32 FartherNodeID,
                      const QString& TheTag, bool& success) {
    const QString key = folderKey(NodeID, RootNodeKey);
    append({.TheTag = TheTag,
            .FartherNodeID = FartherNodeID,
            .RootNodeKey = RootNodeKey,
            .FileName = FileName,
            .FilePath = FilePath,
            .TheKey = key,
            .NodeName = NodeName,
            .NodeID = NodeID});
    success = true;
}

void ColNodeInfo::RemoveByNodeID(qint32 NodeID) {
    removeMatches(*this, [&](const clsNodeInfo& node) { return node.NodeID == NodeID; });
}

bool ColNodeInfo::FindByRootKey(const QString& RootNodeKey) const {
    return firstMatch(*this, [&](const clsNodeInfo& node) {
               return node.RootNodeKey == RootNodeKey;
           }) != nullptr;
}

const clsNodeInfo* ColNodeInfo::FindNode(qint32 NodeID, const QString& RootNodeKey) const {
    return firstMatch(*this, [&](const clsNodeInfo& node) {
        return node.NodeID == NodeID && node.RootNodeKey == RootNodeKey;
    });
}

// colProperty

void colProperty::Add(qint32 PropID, const QString& PropName, qint32 FilterID, qint32 OptType,
                      const QString& Tag) {
    const QString key = propertyKey(PropID);
    append({.Tag = Tag,
            .OptType = OptType,
            .NodeKey = key,
            .FilterID = FilterID,
            .PropName = PropName,
            .PropID = PropID});
}

const clsProperty* colProperty::CanFindPropID(qint32 PropID, qint32 OptType) const {
    return firstMatch(*this, [&](const clsProperty& property) {
        return property.PropID == PropID && property.OptType == OptType;
    });
}

void colProperty::DelByPropID(qint32 PropID) {
    removeMatches(*this, [&](const clsProperty& property) { return property.PropID == PropID; });
}

int colProperty::FindItemCount(qint32 OptType) const {
    return countMatches(*this,
                        [&](const clsProperty& property) { return property.OptType == OptType; });
}

bool colProperty::GetItemByOptType(qint32 OptType, int n, qint32& PropID, QString& PropName,
                                   qint32& FilterID) const {
    const clsProperty* property = nthMatch(
        *this, n, [&](const clsProperty& candidate) { return candidate.OptType == OptType; });
    if (property == nullptr) {
        return false;
    }
    PropID = property->PropID;
    PropName = property->PropName;
    FilterID = property->FilterID;
    return true;
}

// colVarInfo

void colVarInfo::Add(const QString& VarName, qint32 FormulaID, const QString& VarValue,
                     qint32 VarSourceType, const QString& VarMemo, const QString& Tag,
                     bool& success) {
    const QString key = variableKey(counter_);
    clsVarInfo& variable = append({.FormulaID = FormulaID,
                                   .Key = key,
                                   .Tag = Tag,
                                   .VarMemo = VarMemo,
                                   .VarSourceType = VarSourceType,
                                   .VarValue = VarValue,
                                   .VarName = VarName});
    byName_[foldedName(VarName)].append(&variable);
    ++counter_;
    success = true;
}

void colVarInfo::onRemove(clsVarInfo& variable) {
    const auto sameNamed = byName_.find(foldedName(variable.VarName));
    // A collection is emptied from its end: there the record is the last of its name.
    sameNamed->removeAt(sameNamed->lastIndexOf(&variable));
    if (sameNamed->isEmpty()) {
        byName_.erase(sameNamed);
    }
}

clsVarInfo* colVarInfo::Find(const QString& VarName, qint32 FormulaID) {
    for (clsVarInfo* variable : byName_.value(foldedName(VarName))) {
        if (variable->FormulaID == FormulaID) {
            return variable;
        }
    }
    return nullptr;
}

int colVarInfo::FindVarCount(const QString& VarName) const {
    return static_cast<int>(byName_.value(foldedName(VarName)).size());
}

void colVarInfo::ChangeVarValue(const QString& VarName, const QString& VarValue) {
    for (clsVarInfo* variable : byName_.value(foldedName(VarName))) {
        variable->VarValue = VarValue;
    }
}

void colVarInfo::GetVarValueByVarName(const QString& VarName, QString& VarValue) const {
    const QList<clsVarInfo*> sameNamed = byName_.value(foldedName(VarName));
    if (!sameNamed.isEmpty()) {
        VarValue = sameNamed.last()->VarValue;
    }
}

// colLocateProp

void colLocateProp::Add(qint32 FilterID, qint32 NodeID, qint32 NodeType, qint32 PID,
                        const QString& RootKey, const QString& Tag, bool& success) {
    const QString key = locatedKey(FilterID, NodeID, NodeType, RootKey);
    append({.Tag = Tag,
            .RootKey = RootKey,
            .Key = key,
            .PID = PID,
            .NodeType = NodeType,
            .NodeID = NodeID,
            .FilterID = FilterID});
    success = true;
}

const clsLocateProp* colLocateProp::Find(qint32 FilterID, qint32 NodeID, qint32 NodeType,
                                         const QString& RootKey) const {
    const QString key = locatedKey(FilterID, NodeID, NodeType, RootKey);
    return contains(key) ? &Item(key) : nullptr;
}

}  // namespace varo
