#include "store/collections.h"

#include "support/printers.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace varo {
namespace {

using namespace Qt::StringLiterals;

QString addLibrary(colFormulaDB& libraries, const QString& name) {
    QString key;
    bool success = false;
    libraries.Add(name, u"/p/"_s, {}, key, {}, success);
    return success ? key : u"failed"_s;
}

TEST(Libraries, KeepTheirOrderAndAreFoundByPositionKeyPathOrName) {
    colFormulaDB libraries;
    addLibrary(libraries, u"Steel.db"_s);
    addLibrary(libraries, u"STEEL.db"_s);
    EXPECT_EQ(addLibrary(libraries, u"c"_s), u"DBNode3"_s);
    EXPECT_TRUE(libraries.FindDB(u"Steel.db"_s, u"/p/"_s));
    EXPECT_FALSE(libraries.FindDB(u"steel.db"_s, u"/p/"_s));
    EXPECT_FALSE(libraries.FindDB(u"Steel.db"_s, u"/P/"_s));
    EXPECT_EQ(libraries.GetVarValue(u"steel.DB"_s), &libraries.Item(1));
    EXPECT_EQ(libraries.GetVarValue(u"wood.db"_s), nullptr);
    libraries.Remove(2);
    libraries.Remove(libraries.Item(1).NodeKey);
    EXPECT_EQ(&libraries.Item(u"DBNode3"_s), &libraries.Item(1));
    EXPECT_THROW(libraries.Item(0), CollectionError);
    EXPECT_THROW(libraries.Remove(2), CollectionError);
    EXPECT_THROW(libraries.Remove(u"dbnode3"_s), CollectionError);
    libraries.Clear();
    EXPECT_EQ(libraries.Count(), 0);
    EXPECT_EQ(addLibrary(libraries, u"d"_s), u"DBNode4"_s) << "a key is never used again";
}

TEST(Formulas, AreFoundByIdentifierAndParentAndTakeTheirPictureFilesWithThemExceptByPosition) {
    const QTemporaryDir folder;
    const auto files = [&] { return QDir(folder.path()).entryList(QDir::Files).join(u' '); };
    colFormulaInfo formulas;
    for (const qint32 id : {1, 2, 3, 5}) {
        QFile file(folder.filePath(QString::number(id)));
        ASSERT_TRUE(id == 5 || file.open(QIODevice::WriteOnly));
        formulas.Add(id, u"name"_s, u"a+b"_s, u"memo"_s, file.fileName(), 0, id % 2, {});
    }
    EXPECT_THROW(formulas.Add(clsFormulaInfo(formulas.Item(2))), CollectionError);
    EXPECT_EQ(formulas.Find(2), &formulas.Item(2));
    EXPECT_EQ(formulas.Find(4), nullptr);
    EXPECT_EQ(formulas.FindFormulaCountByPID(1), 3);
    qint32 id = -1;
    EXPECT_TRUE(formulas.FindFormulaIDByPID(1, 2, id));
    EXPECT_FALSE(formulas.FindFormulaIDByPID(0, 2, id));
    EXPECT_FALSE(formulas.FindFormulaIDByPID(1, 0, id));
    EXPECT_EQ(id, 3);
    formulas.Remove(1);
    EXPECT_EQ(files(), u"1 2 3"_s);
    formulas.Remove(u"LvFormulaKey2"_s);
    EXPECT_EQ(files(), u"1 3"_s);
    formulas.Clear();
    EXPECT_EQ(files(), u"1"_s);
}

TEST(Folders, AreFoundAndRemovedByIdentifierAndLibrary) {
    ColNodeInfo nodes;
    bool success = false;
    nodes.Add(1, {}, {}, {}, u"DBNode1"_s, 0, {}, success);
    nodes.Add(2, {}, {}, {}, u"DBNode1"_s, 0, {}, success);
    nodes.Add(1, {}, {}, {}, u"DBNode2"_s, 0, {}, success);
    EXPECT_EQ(nodes.FindNode(1, u"DBNode2"_s), &nodes.Item(u"FormulaNode1->DBNode2"_s));
    EXPECT_EQ(nodes.FindNode(2, u"DBNode2"_s), nullptr);
    nodes.RemoveByNodeID(1);
    EXPECT_EQ(nodes.Count(), 1);
    EXPECT_TRUE(nodes.FindByRootKey(u"DBNode1"_s));
    EXPECT_FALSE(nodes.FindByRootKey(u"DBNode2"_s));
}

TEST(Properties, AreFoundAndRemovedByIdentifierAndKind) {
    colProperty properties;
    properties.Add(1, u"span"_s, 10, 1, {});
    properties.Add(2, u"load"_s, 20, 2, {});
    properties.Add(3, u"width"_s, 30, 1, {});
    EXPECT_EQ(properties.CanFindPropID(2, 2), &properties.Item(u"LvPropertyKey2"_s));
    EXPECT_EQ(properties.CanFindPropID(2, 1), nullptr);
    qint32 id = 0;
    qint32 filter = 0;
    QString name;
    EXPECT_TRUE(properties.GetItemByOptType(1, 2, id, name, filter));
    EXPECT_FALSE(properties.GetItemByOptType(1, 3, id, name, filter));
    EXPECT_EQ(name, u"width"_s);
    properties.DelByPropID(1);
    EXPECT_EQ(properties.FindItemCount(1), 1);
}

TEST(Variables, AreFoundByNameInAnyLetterCaseUntilTheyAreRemovedAndChangeTogether) {
    colVarInfo variables;
    bool success = false;
    qint32 formula = 1;
    for (const QString& name : {u"Größe"_s, u"größe"_s, u"y"_s}) {
        variables.Add(name, formula++, name, VarSourceTyped, {}, {}, success);
        EXPECT_TRUE(success);
    }
    EXPECT_EQ(variables.Find(u"GRÖßE"_s, 1), &variables.Item(u"TheVar0"_s));
    EXPECT_EQ(variables.Find(u"größe"_s, 3), nullptr);
    EXPECT_EQ(variables.Find(u"grösse"_s, 1), nullptr) << "letter case alone is ignored";
    QString value;
    variables.GetVarValueByVarName(u"GRÖßE"_s, value);
    variables.GetVarValueByVarName(u"z"_s, value);
    EXPECT_EQ(value, u"größe"_s) << "the last one counts";
    variables.ChangeVarValue(u"GRÖßE"_s, u"5"_s);
    EXPECT_EQ(variables.Item(1).VarValue + variables.Item(2).VarValue, u"55"_s);
    EXPECT_EQ(variables.Item(3).VarValue, u"y"_s);
    variables.Remove(1);
    EXPECT_EQ(variables.FindVarCount(u"GRÖßE"_s), 1);
    EXPECT_EQ(variables.Find(u"GRÖßE"_s, 2), &variables.Item(1));
    variables.Clear();
    EXPECT_EQ(variables.FindVarCount(u"größe"_s), 0);
    variables.Add(u"z"_s, 1, {}, VarSourceTyped, {}, {}, success);
    EXPECT_EQ(variables.Item(1).Key, u"TheVar3"_s);
}

}  // namespace
}  // namespace varo
