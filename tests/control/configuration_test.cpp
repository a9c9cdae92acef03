#include "control/configuration.h"

#include "support/test_library.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <gtest/gtest.h>

namespace varo::test {
namespace {

using namespace Qt::StringLiterals;

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
    const QString file = folder.filePath(u"Varo-Pelm.ini"_s);
    QFile before(file);
    ASSERT_TRUE(before.open(QIODevice::WriteOnly));
    before.write("[Other]\nkept=1\n[Access]\nNodeCount=1\nRootNodeText1=x\nRootNodeText9=stale\n");
    before.close();

    colFormulaDB libraries;
    addTo(libraries, u"/库 一/"_s, u"a'b.mdb"_s, u"材料; 100% \"a\""_s);
    addTo(libraries, u"/lib/"_s, u"c.mdb"_s, u"二"_s);
    QString error;
    ASSERT_TRUE(Configuration(libraries).WriteConfigFile(folder.path() + u'/', error));
    EXPECT_TRUE(fileContent(file).contains("kept"));
    EXPECT_FALSE(fileContent(file).contains("stale"));

    colFormulaDB read;
    ASSERT_TRUE(Configuration(read).ReadConfigFile(folder.path() + u'/', error));
    EXPECT_EQ(texts(read), texts(libraries));
    ASSERT_TRUE(Configuration(read).ReadConfigFile(folder.path() + u'/', error));
    EXPECT_EQ(read.Item(1).NodeKey, u"DBNode3"_s) << "keys go on counting";
}

TEST(Configuration, AnEmptyListIsWrittenWithoutCountAndWhatFailsIsTold) {
    const QTemporaryDir folder;
    colFormulaDB libraries;
    QString error;
    ASSERT_TRUE(Configuration(libraries).WriteConfigFile(folder.path() + u'/', error));
    EXPECT_FALSE(fileContent(folder.filePath(u"Varo-Pelm.ini"_s)).contains("NodeCount"));
    EXPECT_FALSE(Configuration(libraries).ReadConfigFile(folder.path() + u'/', error));
    EXPECT_TRUE(error.contains(u"NodeCount"_s));
    error.clear();
    EXPECT_FALSE(Configuration(libraries).WriteConfigFile(u"/missing/"_s, error));
    EXPECT_FALSE(error.isEmpty());
}

}  // namespace
}  // namespace varo::test
