#include "platform/shared_folder/shared_folder.h"

#include "support/test_library.h"

#include <QDir>
#include <QFile>
#include <QLibrary>
#include <QProcess>

#include <gtest/gtest.h>

namespace varo::test {
namespace {

using namespace Qt::StringLiterals;

TEST(SharedFolder, IsThatOfTheBuildTreeThereOrWhatTheEnvironmentNames) {
    const QString built = QStringLiteral(BUILD_FOLDER "/share/varo/");
    EXPECT_EQ(GetVaroSharedFolder(), built);
    EXPECT_TRUE(QFile::exists(built + u"VaroPelm.tpl"_s));
    const QTemporaryDir named;
    qputenv(kSharedFolderVariable, named.path().toLocal8Bit());
    EXPECT_EQ(GetVaroSharedFolder(), named.path() + u'/');
    qputenv(kSharedFolderVariable, "/missing");
    EXPECT_EQ(GetVaroSharedFolder(), std::nullopt);
    qunsetenv(kSharedFolderVariable);
}

TEST(SharedFolder, LiesBesideTheSharedObjectThatHoldsTheComponent) {
    const QTemporaryDir installed;
    const QDir folder(installed.path());
    const QString object = folder.filePath(u"lib/component.so"_s);
    ASSERT_TRUE(folder.mkpath(u"lib"_s) &&
                QFile::copy(QStringLiteral(SHARED_FOLDER_PROBE), object));
    QLibrary library(object);
    const auto ask = reinterpret_cast<void (*)(QString*)>(library.resolve("sharedFolder"));
    ASSERT_NE(ask, nullptr) << library.errorString().toStdString();
    QString found = u"untouched"_s;
    ask(&found);
    EXPECT_EQ(found, QString()) << "there is none";
    for (const QString& place : {u"share/varo"_s, u"lib/share/varo"_s}) {
        ASSERT_TRUE(folder.mkpath(place));
        ask(&found);
        EXPECT_EQ(found, QDir(folder.canonicalPath()).filePath(place) + u'/');
    }
}

TEST(SharedFolder, TheTemplateIsInstalledIntoIt) {
    const QTemporaryDir prefix;
    ASSERT_EQ(QProcess::execute(QStringLiteral(CMAKE_PROGRAM),
                                {u"--install"_s, QStringLiteral(BUILD_FOLDER "/data"),
                                 u"--prefix"_s, prefix.path()}),
              0);
    EXPECT_EQ(fileContent(prefix.filePath(u"share/varo/VaroPelm.tpl"_s)),
              fileContent(QStringLiteral(BUILD_FOLDER "/share/varo/VaroPelm.tpl")));
}

}  // namespace
}  // namespace varo::test
