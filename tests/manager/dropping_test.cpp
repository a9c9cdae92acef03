#include "manager/manager_desk.h"

#include <QApplication>

namespace varo::test {
namespace {

class Dropping : public ManagerDesk {
  protected:
    static void dropOn(QWidget& target, const QMimeData& dragged, QPoint at) {
        const Qt::DropActions actions = Qt::CopyAction | Qt::MoveAction;
        QDragEnterEvent enter(at, actions, &dragged, Qt::LeftButton, {});
        QCoreApplication::sendEvent(&target, &enter);
        QDragMoveEvent move(at, actions, &dragged, Qt::LeftButton, {});
        QCoreApplication::sendEvent(&target, &move);
        if (move.isAccepted()) {
            QDropEvent drop(at, actions, &dragged, Qt::LeftButton, {});
            QCoreApplication::sendEvent(&target, &drop);
        }
        settle();
    }
    /// Drops on the open manager: in front of a row, or behind the last for -1.
    void drop(const QMimeData& dragged, int row) {
        const QRect place = list().visualRect(list().model()->index(row, 0));
        dropOn(*list().viewport(), dragged,
               row < 0 ? list().viewport()->rect().bottomLeft() + QPoint(9, -9)
                       : place.topLeft() + QPoint(20, 1));
    }
    /// What a file manager gives along, beside something that is no file.
    static std::unique_ptr<QMimeData> files(const QStringList& paths) {
        auto dragged = std::make_unique<QMimeData>();
        QList<QUrl> urls{QUrl(u"http://example.org/x.mdb"_s)};
        for (const QString& path : paths) {
            urls.append(QUrl::fromLocalFile(path));
        }
        dragged->setUrls(urls);
        return dragged;
    }
};

TEST_F(Dropping, LibrariesAreMovedTogetherToWhereTheyAreDropped) {
    desk.reset();
    configuration.addLibrary(third, u"库3"_s);
    configuration.addLibrary(fourth, u"库4"_s);
    start();
    const struct {
        QStringList dragged;
        int onto;
        QString order;
    } cases[] = {
        {{u"库3"_s}, 0, u"[库3] 库1 库2 库4"_s},
        {{u"库3"_s, u"库2"_s}, -1, u"库1 库4 [库3] [库2]"_s},
        {{u"库1"_s, u"库2"_s}, 2, u"库4 [库1] [库2] 库3"_s},
    };
    manage([&] {
        for (const auto& each : cases) {
            list().clearSelection();
            QModelIndexList indexes;
            for (const QString& text : each.dragged) {
                click(text, Qt::ControlModifier);
                indexes.append(item(text));
            }
            const std::unique_ptr<QMimeData> dragged(list().model()->mimeData(indexes));
            drop(*dragged, each.onto);
            EXPECT_EQ(listed(), each.order);
        }
        give("cmdOK");
    });
    EXPECT_EQ(libraries(), u"库4 库1 库2 库3"_s);
}

TEST_F(Dropping, FilesAreAddedAndThoseThatAreNoLibraryAreTold) {
    const QByteArray before = ini();
    const QString noLibrary = third.addFile(u"x.mdb"_s, "text");
    const auto onTree = [](Desk& control, const QStringList& paths) {
        dropOn(*control.tree().viewport(), *files(paths), {20, 20});
    };
    manage([&] { onTree(*desk, {third.path()}); },
           [&] {
               EXPECT_EQ(listed(), u"库1 库2 [third]"_s);
               drop(*files({noLibrary, fourth.path(), first.path()}), -1);
               EXPECT_EQ(told(),
                         u"无法打开用户选择的数据库！\n%1|用户选择的公式库已经被加入！\n%2"_s.arg(
                             noLibrary, first.path()));
               drop(*files({}), -1);
               EXPECT_EQ(listed() + told(), u"库1 库2 third [fourth]"_s);
               EXPECT_EQ(ini(), before);
               give("cmdOK");
           });
    EXPECT_EQ(libraries(), u"库1 库2 third fourth"_s);
    Desk notStarted;
    onTree(notStarted, {third.path()});
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
}

}  // namespace
}  // namespace varo::test
