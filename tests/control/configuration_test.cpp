#include "control/configuration.h"

#include "support/test_library.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <gtest/gtest.h>

namespace varo::test {
namespace {

void add(colFormulaDB& libraries, const QString& text, const QString& folder, const QString& name) {
    QString key;
    bool added = false;
    libraries.Add(name, folder, text, key, QString(), added);
}

QStringList texts(const colFormulaDB& libraries) {
    QStringList result;
    for (const clsFormulaDB& library : libraries) {
        result.append(library.NodeKey + u'|' + library.FormulaNodeText + u'|' +
                      library.FormulaDBPath + u'|' + library.FormulaDBName);
    }
    return result;
}

TEST(Configuration, WritesWhatItReadsAgainAndKeepsForeignKeys) {
    const QTemporaryDir folder;
    const QString file = folder.filePath(QStringLiteral("Varo-Pelm.ini"));
    QFile before(file);
    ASSERT_TRUE(before.open(QIODevice::WriteOnly));
    before.write("[Other]\nkept=1\n[Access]\nNodeCount=1\nRootNodeText1=x\nRootNodeText9=stale\n");
    before.close();

    colFormulaDB libraries;
    add(libraries, QStringLiteral("材料; 100% \"a\""), QStringLiteral("/库 一/"),
        QStringLiteral("a'b.mdb"));
    add(libraries, QStringLiteral("二"), QStringLiteral("/lib/"), QStringLiteral("c.mdb"));
    QString error;
    ASSERT_TRUE(Configuration(libraries).WriteConfigFile(folder.path() + u'/', error));
    EXPECT_TRUE(fileContent(file).contains("kept"));
    EXPECT_FALSE(fileContent(file).contains("stale"));

    colFormulaDB read;
    ASSERT_TRUE(Configuration(read).ReadConfigFile(folder.path() + u'/', error));
    EXPECT_EQ(texts(read), texts(libraries));
    ASSERT_TRUE(Configuration(read).ReadConfigFile(folder.path() + u'/', error));
    EXPECT_EQ(read.Item(1).NodeKey, QStringLiteral("DBNode3")) << "keys go on counting";
}

TEST(Configuration, AnEmptyListIsWrittenWithoutCountAndWhatFailsIsTold) {
    const QTemporaryDir folder;
    colFormulaDB libraries;
    QString error;
    ASSERT_TRUE(Configuration(libraries).WriteConfigFile(folder.path() + u'/', error));
    EXPECT_FALSE(
        fileContent(folder.filePath(QStringLiteral("Varo-Pelm.ini"))).contains("NodeCount"));
    EXPECT_FALSE(Configuration(libraries).ReadConfigFile(folder.path() + u'/', error));
    EXPECT_TRUE(error.contains(QStringLiteral("NodeCount")));
    error.clear();
    EXPECT_FALSE(Configuration(libraries).WriteConfigFile(QStringLiteral("/missing/"), error));
    EXPECT_FALSE(error.isEmpty());
}

}  // namespace
}  // namespace varo::test
