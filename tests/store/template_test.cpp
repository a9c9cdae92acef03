#include "store/template.h"

#include "store/db_funcs.h"
#include "support/test_library.h"

#include <QDir>

#include <gtest/gtest.h>

namespace varo {
namespace {

using namespace Qt::StringLiterals;

struct TemplateItem {
    QString value = u"untouched"_s;
    QString error;
    bool ok = false;
};

TemplateItem readVersion(const QString& folder) {
    TemplateItem item;
    ReadTemplateInfo(folder, u"DBVersion"_s, item.value, item.error, item.ok);
    return item;
}

TEST(Template, IsALibraryOfTheCurrentVersion) {
    test::TestLibrary library{QLatin1StringView(TemplateFileName)};
    EXPECT_TRUE(library.funcs().CheckNewDB(library.connection()));
    const TemplateItem version = readVersion(library.folder());
    EXPECT_TRUE(version.ok);
    EXPECT_EQ(version.value, QLatin1StringView(TemplateVersion));
    EXPECT_EQ(QDir(library.folder()).entryList(QDir::Files).size(), 1);
}

TEST(Template, NeverReplacesAFile) {
    const test::TestLibrary library;
    const QByteArray before = test::fileContent(library.path());
    EXPECT_THROW(createEmptyLibrary(library.path()), data::Error);
    EXPECT_EQ(test::fileContent(library.path()), before);
    EXPECT_THROW(createEmptyLibrary(library.pathOf(u"no/folder/new.vdb"_s)), data::Error);
}

TEST(Template, GivesNullAsEmptyAndLeavesAMissingItemAlone) {
    test::TestLibrary library{QLatin1StringView(TemplateFileName)};
    library.connection().execute(u"Update TableInfo Set PrptyVal = NULL"_s);
    EXPECT_EQ(readVersion(library.folder()).value, u""_s);
    library.connection().execute(u"Delete From TableInfo"_s);
    const TemplateItem missing = readVersion(library.folder());
    EXPECT_TRUE(missing.ok);
    EXPECT_EQ(missing.value, u"untouched"_s);
}

TEST(Template, SaysThatItCannotBeRead) {
    const QString message = u"打开模板数据库失败，无法读取模板数据库信息！"_s;
    test::TestLibrary library{QLatin1StringView(TemplateFileName)};
    library.connection().execute(u"Drop Table TableInfo"_s);
    for (const QString& folder : {library.folder(), library.pathOf(u"missing"_s)}) {
        const TemplateItem item = readVersion(folder);
        EXPECT_FALSE(item.ok);
        EXPECT_EQ(item.error, message);
        EXPECT_EQ(item.value, u"untouched"_s);
    }
}

}  // namespace
}  // namespace varo
