#include "manager/manager_desk.h"

namespace varo::test {
namespace {

class Dropping : public ManagerDesk {
  protected:
    /// What a file manager gives along.
    static void put(QMimeData& dragged, const QStringList& paths) {
        QList<QUrl> urls{QUrl(u"http://example.org/x.mdb"_s)};
        for (const QString& path : paths) {
            urls.append(QUrl::fromLocalFile(path));
        }
        dragged.setUrls(urls);
    }
    QMimeData files;
};

TEST_F(Dropping, LibrariesAreMovedTogetherToWhereTheyAreDropped) {
    desk.reset();
    configuration.addLibrary(third, u"库3"_s);
    configuration.addLibrary(fourth, u"库4"_s);
    start();
    const struct {
        QStringList dragged;
        int onto;  ///< in front of this row; -1 behind the last
        QString order;
    } cases[] = {
        {{u"库3"_s}, 0, u"[库3] 库1 库2 库4"_s},
        {{u"库3"_s, u"库2"_s}, -1, u"库1 库4 [库3] [库2]"_s},
        {{u"库1"_s, u"库2"_s}, 2, u"库4 [库1] [库2] 库3"_s},
        {{u"库1"_s}, 1, u"库4 [库1] 库2 库3"_s},
    };
    manage([&](const OpenManager& manager) {
        for (const auto& each : cases) {
            manager.clickEmptySpace();
            QModelIndexList indexes;
            for (const QString& text : each.dragged) {
                manager.click(text, Qt::ControlModifier);
                indexes.append(manager.item(text));
            }
            const std::unique_ptr<QMimeData> dragged(manager.list().model()->mimeData(indexes));
            manager.drop(*dragged, each.onto);
            EXPECT_EQ(manager.texts(), each.order);
        }
        manager.press(u"cmdOK"_s);
    });
    EXPECT_EQ(libraries(), u"库4 库1 库2 库3"_s);
}

TEST_F(Dropping, FilesOnTheListAreAddedAndThoseThatAreNoLibraryAreTold) {
    const QString noLibrary = third.addFile(u"x.mdb"_s, "text");
    put(files, {noLibrary, third.path(), first.path()});
    manage([&](const OpenManager& manager) {
        manager.drop(files, -1);
        EXPECT_EQ(told(), u"无法打开用户选择的数据库！\n%1|用户选择的公式库已经被加入！\n%2"_s.arg(
                              noLibrary, first.path()));
        EXPECT_EQ(manager.texts(), u"库1 库2 [third]"_s);
        QMimeData none;
        put(none, {});
        manager.drop(none, -1);
        EXPECT_EQ(manager.texts() + told(), u"库1 库2 [third]"_s);
    });
    EXPECT_EQ(libraries(), u"库1 库2"_s);
}

TEST_F(Dropping, FilesOnTheTreeOpenTheManagerWithThem) {
    const QByteArray before = ini();
    put(files, {third.path()});
    const auto drop = [&] { OpenManager::dropOn(*desk->tree().viewport(), files, {20, 20}); };
    manage(drop, [&](const OpenManager& manager) {
        EXPECT_EQ(manager.texts(), u"库1 库2 [third]"_s);
        EXPECT_EQ(ini(), before);
        manager.press(u"cmdOK"_s);
    });
    EXPECT_EQ(libraries(), u"库1 库2 third"_s);
    Desk notStarted;
    OpenManager::dropOn(*notStarted.tree().viewport(), files, {20, 20});
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
}

}  // namespace
}  // namespace varo::test
