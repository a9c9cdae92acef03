#include "editing/beam_desk.h"

#include <QApplication>
#include <QDir>
#include <QTest>

namespace varo::test {
namespace {

const QString CopyButton = QStringLiteral("复制");
const QString PasteButton = QStringLiteral("粘贴");

class CopyAndPaste : public BeamDesk {
  protected:
    CopyAndPaste() { desk.control().setWorkFolder(work.path()); }

    void copyFolder(const char* name) {
        desk.clickNode(QString::fromUtf8(name));
        desk.clickEditButton(CopyButton);
    }
    void copyFormula(const char* folder, const char* name) {
        desk.clickNode(QString::fromUtf8(folder));
        desk.clickFormula(QString::fromUtf8(name));
        desk.clickEditButton(CopyButton);
    }
    /// Pastes a folder; `answers` are given to what is asked.
    void pasteFolder(const char* target, const QList<bool>& answers = {}) {
        desk.clickNode(QString::fromUtf8(target));
        desk.questions().asked.clear();
        desk.questions().answers = answers;
        desk.clickEditButton(PasteButton);
    }
    void pasteFormula(const char* target) {
        desk.clickNode(QString::fromUtf8(target));
        desk.clickEmptySpace(desk.list());
        desk.clickEditButton(PasteButton);
    }

    QString told() { return std::exchange(desk.questions().informed, {}).join(u'|'); }

    /// Nodes below the node with this key, each with its formulas, as "name(formulas)" joined by
    /// blanks; a level in brackets.
    static QString stored(TestLibrary& library, qint32 folder) {
        QStringList nodes;
        for (const QString& row : library.rows(
                 QStringLiteral("Select ID, Name From Tree Where PID = %1 Order By OrderID")
                     .arg(folder))) {
            const qint32 id = row.section(u'|', 0, 0).toInt();
            const QStringList formulas = library.rows(
                QStringLiteral("Select Name, Formula From Formula Where PID = %1 Order By OrderID")
                    .arg(id));
            const QString below = stored(library, id);
            nodes.append(row.section(u'|', 1) + u'(' + formulas.join(u',') + u')' +
                         (below.isEmpty() ? QString() : u'[' + below + u']'));
        }
        return nodes.join(u' ');
    }

    const QString whole =
        QStringLiteral("梁(弯曲|M/W,剪切|3*Q/(2*b*h),扭转|T/W)[简支(挠度|f*l) 悬臂()]");
    const QString top = QStringLiteral("梁(弯曲|M/W,剪切|3*Q/(2*b*h),扭转|T/W)");
    const QString rest = QStringLiteral(" 柱(稳定|P/A) 板()");
    QTemporaryDir work;
};

TEST_F(CopyAndPaste, AFolderIsPastedWithOrWithoutWhatIsInIt) {
    struct {
        const char* copied;
        const char* target;
        QList<bool> answers;
        QString first;
        QString second;
    } const cases[] = {
        {"梁", "库2", {true}, whole + rest, QStringLiteral("管(流量|v*A) ") + whole},
        {"梁", "管", {false}, whole + rest, QStringLiteral("管(流量|v*A)[%1] ").arg(top) + whole},
        {"柱",
         "库1",
         {},
         whole + rest + QStringLiteral(" 柱(稳定|P/A)"),
         QStringLiteral("管(流量|v*A)[%1] ").arg(top) + whole},
    };
    for (const auto& each : cases) {
        copyFolder(each.copied);
        pasteFolder(each.target, each.answers);
        EXPECT_EQ(desk.questions().asked.join(u'|'),
                  each.answers.isEmpty() ? QString() : QStringLiteral("复制子公式夹吗？"));
        EXPECT_EQ(stored(first, 0), each.first) << each.target;
        EXPECT_EQ(stored(second, 0), each.second) << each.target;
        EXPECT_EQ(desk.tree().selectedIndex().data().toString(), QString::fromUtf8(each.target));
        EXPECT_TRUE(showsWhatIsStored(desk)) << each.target;
    }
    EXPECT_EQ(told(), QString());
}

TEST_F(CopyAndPaste, AFolderPastedIntoItselfIsTheOneThatWasCopied) {
    copyFolder("梁");
    pasteFolder("梁", {true});
    pasteFolder("悬臂", {true});
    const QString cantileverFilled =
        QStringLiteral("梁(弯曲|M/W,剪切|3*Q/(2*b*h),扭转|T/W)[简支(挠度|f*l) 悬臂()[%1] %1]");
    EXPECT_EQ(stored(first, 0), cantileverFilled.arg(whole) + rest);
    EXPECT_EQ(desk.treeTexts().mid(1, 9),
              (QStringList{"  梁", "    简支", "    悬臂", "      梁", "        简支",
                           "        悬臂", "    梁", "      简支", "      悬臂"}));
}

TEST_F(CopyAndPaste, WhatIsPastedIsAsItWasWhenItWasCopied) {
    copyFolder("梁");
    desk.questions().answers = {true};
    desk.clickEditButton(QStringLiteral("删除"));
    pasteFolder("板", {true});
    EXPECT_EQ(stored(first, 0), QStringLiteral("柱(稳定|P/A) 板()[%1]").arg(whole));

    copyFormula("柱", "稳定");
    desk.type(desk.formulaBox(), QStringLiteral("x"));
    desk.clickNode(QStringLiteral("柱"));
    QTest::keyClick(&desk.list(), Qt::Key_F2);
    desk.typeLabel(QStringLiteral("失稳"));
    pasteFormula("柱");
    EXPECT_EQ(first
                  .rows(QStringLiteral("Select Name, Formula From Formula Where PID = %1 "
                                       "Order By OrderID")
                            .arg(columns))
                  .last(),
              QStringLiteral("稳定|P/A"));
}

TEST_F(CopyAndPaste, AFormulaIsPastedBehindTheOthersAndShown) {
    const QString hostile = QStringLiteral("'\"%_;\\ --");
    const qint32 source = second.addFormula(0, hostile, QStringLiteral("2*\"%'\""), hostile);
    second.addValue(QStringLiteral("v"), source, QStringLiteral("1"));
    second.addProperty(1, QStringLiteral("形"), 0, source, NodeTypeFormula);
    desk.clickNode(QStringLiteral("库2"));
    desk.clickFormula(hostile);
    desk.clickEditButton(CopyButton);
    for (const char* target : {"梁", "库1", "库2", "库2"}) {
        pasteFormula(target);
        EXPECT_EQ(desk.listTexts().last(), hostile) << target;
        EXPECT_EQ(desk.formulaBox().text(), QStringLiteral("2*\"%'\""));
        EXPECT_EQ(desk.list().selectedIndex().row(), desk.listTexts().size() - 1);
        EXPECT_TRUE(showsWhatIsStored(desk)) << target;
    }
    EXPECT_EQ(first.rows(QStringLiteral("Select Memo, PID From Formula Where ID > 5")),
              (QStringList{hostile + QStringLiteral("|1"), hostile + QStringLiteral("|0")}));
    EXPECT_EQ(second.rows(QStringLiteral("Select Count(*) From RecentVar Where VarName = 'v'")),
              QStringList{"1"});
    EXPECT_EQ(second.rows(QStringLiteral("Select Count(*) From Property")), QStringList{"1"});
}

TEST_F(CopyAndPaste, PicturesGoAlong) {
    const QByteArray picture = pictureBytes(40'000);
    first.addPicture(bending, picture);
    const QString hex = QStringLiteral("2|") + QString::fromLatin1(picture.toHex().toUpper());
    const auto lastPicture = [](TestLibrary& library) {
        return library
            .rows(QStringLiteral(
                "Select PicType, hex(Pic) From Formula Where Name = '弯曲' Order By ID"))
            .last();
    };
    copyFormula("梁", "弯曲");
    EXPECT_EQ(QDir(work.path()).entryList({QStringLiteral("*Paste*")}),
              QStringList{QStringLiteral("%1PastePic.bmp").arg(bending)});
    first.funcs().DelPicture(bending, first.connection());
    pasteFormula("管");
    EXPECT_EQ(lastPicture(second), hex);
    const QString pasted = desk.list().selectedKey().mid(12) + QStringLiteral("TempPic.bmp");
    EXPECT_EQ(fileContent(work.filePath(pasted)), picture);

    first.addPicture(bending, picture);
    copyFolder("梁");
    pasteFolder("管", {false});
    EXPECT_EQ(lastPicture(second), hex);

    // Without its file a picture stays away, and its type tells that there was one.
    for (const QString& file : QDir(work.path()).entryList({QStringLiteral("*Paste*")})) {
        QFile::remove(work.filePath(file));
    }
    pasteFolder("管", {false});
    EXPECT_EQ(lastPicture(second), QStringLiteral("2|"));
    copyFormula("梁", "弯曲");
    QFile::remove(work.filePath(QStringLiteral("%1PastePic.bmp").arg(bending)));
    pasteFormula("管");
    EXPECT_EQ(lastPicture(second), QStringLiteral("2|"));
    EXPECT_EQ(told(), QString());
}

TEST_F(CopyAndPaste, IsGivenByKeysInTreeAndListOnly) {
    const auto press = [](QWidget& widget, Qt::Key key) {
        widget.setFocus();
        QTest::keyClick(&widget, key, Qt::ControlModifier);
        settle();
    };
    desk.clickNode(QStringLiteral("柱"));
    EXPECT_FALSE(desk.editButton(PasteButton).isEnabled());
    press(desk.tree(), Qt::Key_C);
    EXPECT_TRUE(desk.editButton(PasteButton).isEnabled());
    press(desk.tree(), Qt::Key_V);
    EXPECT_EQ(stored(first, columns), QStringLiteral("柱(稳定|P/A)"));
    desk.openMenu(desk.tree(), QStringLiteral("板"));
    desk.choose("mnuPopPaste");
    EXPECT_EQ(stored(first, plates), QStringLiteral("柱(稳定|P/A)"));
    desk.clickNode(QStringLiteral("柱"));
    desk.clickFormula(QStringLiteral("稳定"));
    EXPECT_FALSE(desk.editButton(PasteButton).isEnabled());
    press(desk.list(), Qt::Key_V);
    EXPECT_EQ(desk.listTexts().size(), 1);
    press(desk.list(), Qt::Key_C);
    press(desk.list(), Qt::Key_V);
    EXPECT_EQ(desk.listTexts().size(), 2);
    desk.formulaBox().selectAll();
    press(desk.formulaBox(), Qt::Key_C);
    press(desk.formulaBox(), Qt::Key_V);
    QTest::keyClick(&desk.list(), Qt::Key_F2);
    press(*desk.labelEditor(), Qt::Key_C);
    press(*desk.labelEditor(), Qt::Key_V);
    desk.typeLabel({}, Qt::Key_Escape);
    EXPECT_EQ(desk.listTexts().size(), 2);
    desk.openMenu(desk.list(), QStringLiteral("稳定"));
    desk.choose("mnuPopPaste");
    EXPECT_EQ(desk.listTexts().size(), 3);
}

TEST_F(CopyAndPaste, ShowsTheWaitCursorWhilePasting) {
    copyFolder("梁");
    QList<Qt::CursorShape> shapes;
    QObject::connect(desk.tree().model(), &QAbstractItemModel::rowsInserted, &desk, [&] {
        const QCursor* cursor = QApplication::overrideCursor();
        shapes.append(cursor != nullptr ? cursor->shape() : Qt::ArrowCursor);
    });
    pasteFolder("板", {true});
    EXPECT_FALSE(shapes.isEmpty());
    EXPECT_EQ(shapes.count(Qt::WaitCursor), shapes.size());
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);
}

TEST_F(CopyAndPaste, AStepThatFailsEndsThePasteAndLeavesWhatItDid) {
    struct {
        const char* step;
        const char* table;
        const char* when;
        QString pasted;
    } const cases[] = {
        {"Insert", "Tree", "new.Name = '梁'", QString()},
        {"Insert", "Tree", "new.Name = '悬臂'",
         QStringLiteral("梁(弯曲|M/W,剪切|3*Q/(2*b*h),扭转|T/W)[简支(挠度|f*l)]")},
        {"Insert", "Formula", "new.Name = '剪切'", QStringLiteral("梁(弯曲|M/W)")},
        {"Update", "Formula", "old.Name = '剪切'", QStringLiteral("梁(弯曲|M/W,剪切|3*Q/(2*b*h))")},
    };
    first.addPicture(shear, pictureBytes(20'000));
    copyFolder("梁");
    for (const auto& each : cases) {
        first.connection().execute(
            QStringLiteral("Create Trigger Refuse Before %1 On %2 When %3 Begin "
                           "Select Raise(Abort, 'refused'); End")
                .arg(QLatin1StringView(each.step), QLatin1StringView(each.table),
                     QString::fromUtf8(each.when)));
        pasteFolder("板", {true});
        first.connection().execute(QStringLiteral("Drop Trigger Refuse"));
        EXPECT_EQ(told(), QStringLiteral("粘贴公式夹失败！")) << each.when;
        EXPECT_EQ(stored(first, plates), each.pasted) << each.when;
        EXPECT_TRUE(showsWhatIsStored(desk)) << each.when;
        first.connection().execute(QStringLiteral("Delete From Tree Where PID = ?"), {plates});
        desk.clickNode(QStringLiteral("梁"));
        desk.clickEditButton(QStringLiteral("下移"));
        desk.clickEditButton(QStringLiteral("上移"));
    }
}

TEST_F(CopyAndPaste, AFormulaThatFailsIsToldAsSuch) {
    struct {
        const char* step;
        const char* message;
        int formulas;
    } const cases[] = {{"Insert", "粘贴公式失败！", 0}, {"Update", "粘贴公式的图形文件失败！", 1}};
    first.addPicture(shear, pictureBytes(20'000));
    copyFormula("梁", "剪切");
    for (const auto& each : cases) {
        desk.clickNode(QStringLiteral("板"));
        desk.clickEmptySpace(desk.list());
        first.connection().execute(
            QStringLiteral("Create Trigger Refuse Before %1 On Formula Begin "
                           "Select Raise(Abort, 'refused'); End")
                .arg(QLatin1StringView(each.step)));
        desk.clickEditButton(PasteButton);
        first.connection().execute(QStringLiteral("Drop Trigger Refuse"));
        EXPECT_EQ(told(), QString::fromUtf8(each.message));
        EXPECT_EQ(desk.listTexts().size(), each.formulas);
        EXPECT_TRUE(showsWhatIsStored(desk)) << each.message;
    }
}

TEST_F(CopyAndPaste, AFolderThatCannotBeReadLeavesNothingToPaste) {
    copyFolder("柱");
    desk.clickNode(QStringLiteral("梁"));
    first.connection().execute(QStringLiteral("Alter Table Formula Rename Column Memo To Text"));
    desk.clickEditButton(CopyButton);
    first.connection().execute(QStringLiteral("Alter Table Formula Rename Column Text To Memo"));
    EXPECT_EQ(told(), QStringLiteral("无法读取节点信息，不能进行复制操作！"));
    EXPECT_FALSE(desk.editButton(PasteButton).isEnabled());
}

TEST(CopyAndPasteDeep, FoldersTooDeepForTheTreeAreRefused) {
    constexpr int Levels = 600;
    TestLibrary library;
    qint32 deepest = 0;
    for (int level = 1; level <= Levels; ++level) {
        deepest = library.addFolder(deepest, QStringLiteral("级%1").arg(level));
    }
    const TestConfiguration configuration{&library};
    Desk desk(configuration.folder());
    desk.control().ClickTreeNode(QStringLiteral("FormulaNode1->DBNode1"));
    desk.clickEditButton(CopyButton);
    desk.control().ClickTreeNode(QStringLiteral("FormulaNode%1->DBNode1").arg(deepest));
    desk.questions().answers = {true};
    desk.clickEditButton(PasteButton);
    EXPECT_EQ(desk.messages(), QStringList{QStringLiteral("粘贴公式夹失败！")});
    EXPECT_EQ(library.rows(QStringLiteral("Select Count(*) From Tree")), QStringList{"1000"});
    EXPECT_TRUE(showsWhatIsStored(desk));
}

}  // namespace
}  // namespace varo::test
