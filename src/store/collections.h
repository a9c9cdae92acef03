#pragma once

#include "store/keyed_collection.h"
#include "store/records.h"

#include <QList>

namespace varo {

/// The configured libraries. Keys: "DBNode" and a counter that runs from 1 for the collection's
/// life.
class colFormulaDB final : public KeyedCollection<clsFormulaDB, &clsFormulaDB::NodeKey> {
  public:
    /// Appends a library; `NodeKey` receives its key, `success` is set to true.
    void Add(const QString& FormulaDBName, const QString& FormulaDBPath,
             const QString& FormulaNodeText, QString& NodeKey, const QString& Tag, bool& success);

    /// True when a library has exactly this name and path, letter case included.
    bool FindDB(const QString& name, const QString& path) const;

    /// The first library whose file name equals `name`, letter case ignored; null when there is
    /// none.
    const clsFormulaDB* GetVarValue(const QString& name) const;

  private:
    int counter_ = 1;
};

/// Formulas, as listed or as copied. Keys: "LvFormulaKey" and the FormulaID. Remove() by key and
/// Clear() delete the record's picture file if it exists; Remove() by position leaves it.
class colFormulaInfo final : public KeyedCollection<clsFormulaInfo, &clsFormulaInfo::NodeKey> {
  public:
    /// Throws CollectionError when a formula with this identifier is there already.
    void Add(qint32 FormulaID, const QString& FormulaName, const QString& FormulaExpression,
             const QString& FormulaMemo, const QString& FormulaPicPath, qint32 FormulaPicType,
             qint32 FormulaPID, const QString& Tag);
    /// The same for a copy of `formula`, with a key of its own.
    void Add(const clsFormulaInfo& formula);

    void Clear();

    /// The formula with this identifier; null when there is none.
    const clsFormulaInfo* Find(qint32 FormulaID) const;

    /// How many formulas have this parent.
    int FindFormulaCountByPID(qint32 PID) const;

    /// Identifier of the n-th formula (from 1) with this parent, in `FormulaID`; false when there
    /// are fewer.
    bool FindFormulaIDByPID(qint32 PID, int n, qint32& FormulaID) const;

  private:
    void onRemoveByKey(clsFormulaInfo& formula) override;
};

/// Folders. Keys: "FormulaNode", NodeID, "->", RootNodeKey.
class ColNodeInfo final : public KeyedCollection<clsNodeInfo, &clsNodeInfo::TheKey> {
  public:
    void Add(qint32 NodeID, const QString& NodeName, const QString& FilePath,
             const QString& FileName, const QString& RootNodeKey, qint32 FartherNodeID,
             const QString& TheTag, bool& success);

    /// Removes every record with this identifier, whatever its library.
    void RemoveByNodeID(qint32 NodeID);
    bool FindByRootKey(const QString& RootNodeKey) const;
    /// The record with both values; null when there is none.
    const clsNodeInfo* FindNode(qint32 NodeID, const QString& RootNodeKey) const;
};

/// Properties of one folder or formula. Keys: "LvPropertyKey" and the PropID.
class colProperty final : public KeyedCollection<clsProperty, &clsProperty::NodeKey> {
  public:
    void Add(qint32 PropID, const QString& PropName, qint32 FilterID, qint32 OptType,
             const QString& Tag);
    void Clear() = delete;  // the component's vocabulary has none

    /// The record with this identifier and kind; null when there is none.
    const clsProperty* CanFindPropID(qint32 PropID, qint32 OptType) const;
    void DelByPropID(qint32 PropID);
    int FindItemCount(qint32 OptType) const;
    /// The n-th record (from 1) of this kind; false, with the outputs as they were, when there are
    /// fewer.
    bool GetItemByOptType(qint32 OptType, int n, qint32& PropID, QString& PropName,
                          qint32& FilterID) const;
};

/// Variables with their stored values. Keys: "TheVar" and a counter that runs from 0 for the
/// collection's life. Variable names compare without regard to letter case; searches by name give
/// the first match in insertion order and look only at the records of that name.
class colVarInfo final : public KeyedCollection<clsVarInfo, &clsVarInfo::Key> {
  public:
    void Add(const QString& VarName, qint32 FormulaID, const QString& VarValue,
             qint32 VarSourceType, const QString& VarMemo, const QString& Tag, bool& success);

    /// The record of this variable of this formula; null when there is none. The record may be
    /// changed through the pointer.
    clsVarInfo* Find(const QString& VarName, qint32 FormulaID);
    int FindVarCount(const QString& VarName) const;
    /// Sets the value of every record with this name.
    void ChangeVarValue(const QString& VarName, const QString& VarValue);
    /// The value of the last record with this name; `VarValue` stays as it was when there is none.
    void GetVarValueByVarName(const QString& VarName, QString& VarValue) const;

  private:
    void onRemove(clsVarInfo& variable) override;

    int counter_ = 0;
    QHash<QString, QList<clsVarInfo*>> byName_;
};

/// Located folders and formulas. Keys: FilterID, "->", NodeID, "->", NodeType, "->", RootKey.
class colLocateProp final : public KeyedCollection<clsLocateProp, &clsLocateProp::Key> {
  public:
    void Add(qint32 FilterID, qint32 NodeID, qint32 NodeType, qint32 PID, const QString& RootKey,
             const QString& Tag, bool& success);

    /// The record with all four values; null when there is none.
    const clsLocateProp* Find(qint32 FilterID, qint32 NodeID, qint32 NodeType,
                              const QString& RootKey) const;
};

}  // namespace varo
