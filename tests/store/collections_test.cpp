#include "store/collections.h"

#include "support/printers.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace varo {
namespace {

using namespace Qt::StringLiterals;

QString addLibrary(colFormulaDB& libraries, const QString& name, const QString& path) {
    QString key;
    bool success = false;
    libraries.Add(name, path, u"text of "_s + name, key, u"tag"_s, success);
    EXPECT_TRUE(success);
    return key;
}

void addVariable(colVarInfo& variables, const QString& name, qint32 formula, const QString& value) {
    bool success = false;
    variables.Add(name, formula, value, VarSourceTyped, u"memo"_s, u"tag"_s, success);
    EXPECT_TRUE(success);
}

void addNode(ColNodeInfo& nodes, qint32 id, const QString& root) {
    bool success = false;
    nodes.Add(id, u"name"_s, u"/folder/"_s, u"file.db"_s, root, 0, u"tag"_s, success);
    EXPECT_TRUE(success);
}

void addFormula(colFormulaInfo& formulas, qint32 id, qint32 parent, const QString& picture = {}) {
    formulas.Add(id, u"name"_s, u"a+b"_s, u"memo"_s, picture, picture.isEmpty() ? 0 : 2, parent,
                 u"tag"_s);
}

TEST(LibraryCollection, AreKeyedByACounterThatClearDoesNotReset) {
    colFormulaDB libraries;
    for (const int first : {1, 4}) {
        for (int number = first; number < first + 3; ++number) {
            EXPECT_EQ(addLibrary(libraries, u"a.db"_s, u"/p/"_s), u"DBNode%1"_s.arg(number));
        }
        EXPECT_EQ(libraries.Count(), 3);
        EXPECT_EQ(libraries.Item(2).NodeKey, u"DBNode%1"_s.arg(first + 1));
        libraries.Clear();
        EXPECT_EQ(libraries.Count(), 0);
    }
}

TEST(LibraryCollection, AreFoundByExactNameAndPath) {
    colFormulaDB libraries;
    addLibrary(libraries, u"Steel.db"_s, u"/p/"_s);
    EXPECT_TRUE(libraries.FindDB(u"Steel.db"_s, u"/p/"_s));
    EXPECT_FALSE(libraries.FindDB(u"steel.db"_s, u"/p/"_s));
    EXPECT_FALSE(libraries.FindDB(u"Steel.db"_s, u"/P/"_s));
}

TEST(LibraryCollection, AreFoundByFileNameInAnyLetterCase) {
    colFormulaDB libraries;
    addLibrary(libraries, u"Steel.db"_s, u"/p/"_s);
    addLibrary(libraries, u"STEEL.db"_s, u"/q/"_s);
    ASSERT_NE(libraries.GetVarValue(u"steel.DB"_s), nullptr);
    EXPECT_EQ(libraries.GetVarValue(u"steel.DB"_s)->NodeKey, u"DBNode1"_s);
    EXPECT_EQ(libraries.GetVarValue(u"wood.db"_s), nullptr);
}

TEST(Collections, AddressRecordsByPositionAndKeyInInsertionOrder) {
    colFormulaDB libraries;
    addLibrary(libraries, u"a"_s, u"/"_s);
    addLibrary(libraries, u"b"_s, u"/"_s);
    addLibrary(libraries, u"c"_s, u"/"_s);
    libraries.Remove(2);
    EXPECT_EQ(libraries.Item(2).FormulaDBName, u"c"_s);
    EXPECT_EQ(libraries.Item(u"DBNode1"_s).FormulaDBName, u"a"_s);
    libraries.Remove(u"DBNode1"_s);
    QStringList names;
    for (const clsFormulaDB& library : libraries) {
        names.append(library.FormulaDBName);
    }
    EXPECT_EQ(names, QStringList{u"c"_s});
}

TEST(Collections, FailOnPositionsAndKeysThatTheyDoNotHold) {
    colFormulaDB libraries;
    addLibrary(libraries, u"a"_s, u"/"_s);
    EXPECT_THROW(libraries.Item(0), CollectionError);
    EXPECT_THROW(libraries.Item(2), CollectionError);
    EXPECT_THROW(libraries.Item(u"DBNode2"_s), CollectionError);
    EXPECT_THROW(libraries.Remove(2), CollectionError);
    EXPECT_THROW(libraries.Remove(u"dbnode1"_s), CollectionError);
    EXPECT_EQ(libraries.Count(), 1);
}

TEST(Collections, RefuseAKeyThatIsTaken) {
    colFormulaInfo formulas;
    addFormula(formulas, 7, 1);
    EXPECT_THROW(addFormula(formulas, 7, 2), CollectionError);
    EXPECT_EQ(formulas.Count(), 1);
    EXPECT_EQ(formulas.Item(u"LvFormulaKey7"_s).FormulaPID, 1);

    ColNodeInfo nodes;
    addNode(nodes, 7, u"DBNode1"_s);
    addNode(nodes, 7, u"DBNode2"_s);
    EXPECT_THROW(addNode(nodes, 7, u"DBNode1"_s), CollectionError);
    EXPECT_EQ(nodes.Item(2).TheKey, u"FormulaNode7->DBNode2"_s);
}

TEST(FormulaCollection, TakeTheirPictureFilesWithThemExceptByPosition) {
    const QTemporaryDir directory;
    const auto picture = [&](int number) {
        QFile file(directory.filePath(u"%1.bmp"_s.arg(number)));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        return file.fileName();
    };
    colFormulaInfo formulas;
    for (int id = 1; id <= 4; ++id) {
        addFormula(formulas, id, 1, picture(id));
    }
    addFormula(formulas, 5, 1, directory.filePath(u"missing.bmp"_s));
    addFormula(formulas, 6, 1);

    formulas.Remove(1);
    EXPECT_TRUE(QFile::exists(directory.filePath(u"1.bmp"_s)));
    formulas.Remove(u"LvFormulaKey2"_s);
    EXPECT_FALSE(QFile::exists(directory.filePath(u"2.bmp"_s)));
    formulas.Clear();
    EXPECT_EQ(formulas.Count(), 0);
    EXPECT_FALSE(QFile::exists(directory.filePath(u"3.bmp"_s)));
    EXPECT_FALSE(QFile::exists(directory.filePath(u"4.bmp"_s)));
}

TEST(FormulaCollection, AreFoundByIdentifierAndCountedByParent) {
    colFormulaInfo formulas;
    addFormula(formulas, 11, 1);
    addFormula(formulas, 12, 2);
    addFormula(formulas, 13, 1);
    ASSERT_NE(formulas.Find(12), nullptr);
    EXPECT_EQ(formulas.Find(12)->FormulaPID, 2);
    EXPECT_EQ(formulas.Find(14), nullptr);
    EXPECT_EQ(formulas.FindFormulaCountByPID(1), 2);
    EXPECT_EQ(formulas.FindFormulaCountByPID(3), 0);
    qint32 id = -1;
    EXPECT_TRUE(formulas.FindFormulaIDByPID(1, 2, id));
    EXPECT_EQ(id, 13);
    EXPECT_FALSE(formulas.FindFormulaIDByPID(1, 3, id));
    EXPECT_FALSE(formulas.FindFormulaIDByPID(1, 0, id));
    EXPECT_EQ(id, 13);
}

TEST(FolderCollection, AreFoundAndRemovedByIdentifierAndLibrary) {
    ColNodeInfo nodes;
    addNode(nodes, 1, u"DBNode1"_s);
    addNode(nodes, 2, u"DBNode1"_s);
    addNode(nodes, 1, u"DBNode2"_s);
    EXPECT_NE(nodes.FindNode(1, u"DBNode2"_s), nullptr);
    EXPECT_EQ(nodes.FindNode(2, u"DBNode2"_s), nullptr);
    nodes.RemoveByNodeID(1);
    EXPECT_EQ(nodes.Count(), 1);
    EXPECT_EQ(nodes.FindNode(1, u"DBNode1"_s), nullptr);
    EXPECT_TRUE(nodes.FindByRootKey(u"DBNode1"_s));
    EXPECT_FALSE(nodes.FindByRootKey(u"DBNode2"_s));
}

TEST(PropertyCollection, AreFoundAndRemovedByIdentifierAndKind) {
    colProperty properties;
    properties.Add(1, u"span"_s, 10, 1, {});
    properties.Add(2, u"load"_s, 20, 2, {});
    properties.Add(3, u"width"_s, 30, 1, {});
    ASSERT_NE(properties.CanFindPropID(2, 2), nullptr);
    EXPECT_EQ(properties.CanFindPropID(2, 2)->NodeKey, u"LvPropertyKey2"_s);
    EXPECT_EQ(properties.CanFindPropID(2, 1), nullptr);
    EXPECT_EQ(properties.FindItemCount(1), 2);

    qint32 id = 0;
    QString name;
    qint32 filter = 0;
    EXPECT_TRUE(properties.GetItemByOptType(1, 2, id, name, filter));
    EXPECT_FALSE(properties.GetItemByOptType(1, 3, id, name, filter));
    EXPECT_EQ(id, 3);
    EXPECT_EQ(name, u"width"_s);
    EXPECT_EQ(filter, 30);

    properties.DelByPropID(1);
    properties.DelByPropID(9);
    EXPECT_EQ(properties.Count(), 2);
    EXPECT_FALSE(properties.contains(u"LvPropertyKey1"_s));
}

TEST(VariableCollection, AreFoundByNameInAnyLetterCase) {
    colVarInfo variables;
    addVariable(variables, u"Größe"_s, 1, u"5"_s);
    addVariable(variables, u"GRÖSSE"_s, 2, u"6"_s);
    ASSERT_NE(variables.Find(u"GRÖßE"_s, 1), nullptr);
    EXPECT_EQ(variables.Find(u"GRÖßE"_s, 1)->Key, u"TheVar0"_s);
    EXPECT_EQ(variables.Find(u"größe"_s, 2), nullptr) << "only letter case is left out of account";
    EXPECT_EQ(variables.Find(u"x"_s, 1), nullptr);
}

TEST(VariableCollection, ChangeTogetherOverAllFormulas) {
    colVarInfo variables;
    addVariable(variables, u"x"_s, 1, u"1"_s);
    addVariable(variables, u"X"_s, 2, u"2"_s);
    addVariable(variables, u"y"_s, 1, u"3"_s);
    EXPECT_EQ(variables.FindVarCount(u"X"_s), 2);
    QString value;
    variables.GetVarValueByVarName(u"x"_s, value);
    EXPECT_EQ(value, u"2"_s);
    variables.ChangeVarValue(u"X"_s, u"5"_s);
    EXPECT_EQ(variables.Item(1).VarValue, u"5"_s);
    EXPECT_EQ(variables.Item(2).VarValue, u"5"_s);
    EXPECT_EQ(variables.Item(3).VarValue, u"3"_s);
    value = u"untouched"_s;
    variables.GetVarValueByVarName(u"z"_s, value);
    EXPECT_EQ(value, u"untouched"_s);
}

TEST(VariableCollection, AreNoLongerFoundOnceRemoved) {
    colVarInfo variables;
    addVariable(variables, u"x"_s, 1, u"1"_s);
    addVariable(variables, u"x"_s, 1, u"2"_s);
    variables.Remove(1);
    ASSERT_NE(variables.Find(u"x"_s, 1), nullptr);
    EXPECT_EQ(variables.Find(u"x"_s, 1)->VarValue, u"2"_s);
    variables.Remove(u"TheVar1"_s);
    EXPECT_EQ(variables.Find(u"x"_s, 1), nullptr);
    EXPECT_EQ(variables.FindVarCount(u"x"_s), 0);
    addVariable(variables, u"x"_s, 1, u"3"_s);
    variables.Clear();
    addVariable(variables, u"x"_s, 1, u"4"_s);
    EXPECT_EQ(variables.Item(1).Key, u"TheVar3"_s);
    EXPECT_EQ(variables.FindVarCount(u"x"_s), 1);
}

TEST(LocateCollection, AreKeyedByFilterNodeAndLibrary) {
    colLocateProp located;
    bool success = false;
    located.Add(3, 7, 2, 1, u"DBNode1"_s, {}, success);
    EXPECT_TRUE(success);
    ASSERT_NE(located.Find(3, 7, 2, u"DBNode1"_s), nullptr);
    EXPECT_EQ(located.Find(3, 7, 2, u"DBNode1"_s)->Key, u"3->7->2->DBNode1"_s);
    EXPECT_EQ(located.Find(3, 7, 1, u"DBNode1"_s), nullptr);
    EXPECT_THROW(located.Add(3, 7, 2, 9, u"DBNode1"_s, {}, success), CollectionError);
    located.Clear();
    EXPECT_EQ(located.Count(), 0);
}

}  // namespace
}  // namespace varo
