#include "browse/node_images.h"
#include "search/find_desk.h"

#include <QClipboard>
#include <QProgressBar>
#include <QRadioButton>

namespace varo::test {
namespace {

using Finding = FindDesk;

TEST_F(Finding, OffersTheCriteriaOfTheKindsThatAreSearched) {
    first.addProperty(1, u"用途"_s, 0, beams, NodeTypeFolder);
    second.addProperty(1, u"用途"_s, 0, flow, NodeTypeFormula);
    second.addProperty(2, u"材料"_s, 0, flow, NodeTypeFormula);
    start();
    const struct {
        const char* clicked;
        QString caption;
        QString enabled;  ///< a letter for each criterion, a small one for its text
        QString properties;
    } cases[] = {
        {"lblTitle", u"名称"_s, {}, {}},
        {"ChkFolder", u"公式夹名称"_s, u"NP"_s, u"用途"_s},
        {"ChkName", u"公式夹名称"_s, u"NnP"_s, u"用途"_s},
        {"ChkFormula", u"名称"_s, u"NnMP"_s, u"用途 材料"_s},
        {"ChkMemo", u"名称"_s, u"NnMmP"_s, u"用途 材料"_s},
        {"ChkPrpty", u"名称"_s, u"NnMmPp"_s, u"用途 材料"_s},
        {"ChkFolder", u"公式名称"_s, u"NnMmPp"_s, u"用途 材料"_s},
        {"ChkName", u"公式名称"_s, u"NMmPp"_s, u"用途 材料"_s},
        {"ChkFormula", u"名称"_s, {}, {}},
    };
    withDialog([&] {
        for (const auto& each : cases) {
            click(each.clicked);
            QString enabled;
            for (const auto& [name, letter] : {std::pair{"ChkName", u'N'},
                                               {"PicFindName", u'n'},
                                               {"ChkMemo", u'M'},
                                               {"PicFindMemo", u'm'},
                                               {"ChkPrpty", u'P'},
                                               {"CmbPrpty", u'p'}}) {
                enabled += part(name).isEnabled() ? QString(letter) : QString();
            }
            EXPECT_EQ(enabled, each.enabled);
            EXPECT_EQ(part<QCheckBox>("ChkName").text(), each.caption);
            const auto& names = part<QComboBox>("CmbPrpty");
            QStringList offered;
            for (int i = 0; i < names.count(); ++i) {
                offered.append(names.itemText(i));
            }
            EXPECT_EQ(offered.join(u' ') + names.currentText(), each.properties);
        }
    });
}

TEST_F(Finding, EnterSearchesByWhatIsChosenAndTellsTheNumber) {
    first.addFormula(columns, u"abc"_s, {}, u"长柱"_s);
    first.addFormula(columns, u"cab"_s);
    first.addProperty(1, u"用途"_s, 0, beams, NodeTypeFolder);
    first.addProperty(2, u"用途"_s, 0, beams, NodeTypeFolder);
    start();
    withDialog([&] {
        click("ChkFolder");
        part<QLineEdit>("txtMemo").setText(u"长柱"_s);
        key(part("ChkFolder"), Qt::Key_Return);
        EXPECT_EQ(listed(), QString()) << "folders have no description";
        click("ChkFormula");
        click("ChkName");
        auto& name = part<QLineEdit>("txtName");
        EXPECT_TRUE(name.hasFocus());
        desk->type(name, u"ab"_s);
        const QString byPlace[] = {u"abc"_s, u"cab"_s, u"abc cab"_s};
        for (int place = 0; place < 3; ++place) {
            click(("OptFindName" + QByteArray::number(place)).constData());
            key(name, Qt::Key_Return);
            EXPECT_EQ(listed(), byPlace[place]);
        }
        EXPECT_EQ(counted(), u"找到 2 项"_s);
        click("ChkMemo");
        key(part("txtMemo"), Qt::Key_Return);
        EXPECT_EQ(listed(), u"abc"_s) << "both criteria";
        click("ChkMemo");
        click("ChkName");
        click("ChkPrpty");
        part<QComboBox>("CmbPrpty").setEditText(u"用途"_s);
        click("CmdFind");
        EXPECT_EQ(listed(), u"梁"_s);
        part<QComboBox>("CmbPrpty").setEditText(QString());
        click("CmdFind");
        EXPECT_EQ(listed(), QString());
        EXPECT_EQ(counted(), u"请选择查询范围，并填写至少一项条件"_s);
    });
    EXPECT_EQ(told(), QString());
}

TEST_F(Finding, ResultsSayWhatAndWhereTheyAre) {
    withDialog([&] {
        search(u"剪"_s);
        const QModelIndex hit = results().model()->index(0, 0);
        EXPECT_EQ(hit.data(FindResults::KeyRole).toString(), u"FindItem2->DBNode1->2"_s);
        EXPECT_EQ(hit.data(FindResults::TagRole).toString(), u"2->1"_s);
        EXPECT_EQ(hit.data(FindResults::PlaceRole).toString(), u"库1 › 梁"_s);
        EXPECT_TRUE(hit.data(Qt::ToolTipRole).toString().contains(u"剪切\n库1 › 梁"_s));
        const auto pixels = [](const QIcon& icon) { return icon.pixmap(16).toImage(); };
        EXPECT_EQ(pixels(hit.data(Qt::DecorationRole).value<QIcon>()),
                  pixels(formulaIcon(FormulaImage::Formula)));
        search(u"梁"_s);
        EXPECT_EQ(pixels(results().model()->index(0, 0).data(Qt::DecorationRole).value<QIcon>()),
                  pixels(nodeIcon(NodeImage::Folder)));
        EXPECT_EQ(results().model()->headerData(0, Qt::Horizontal).toString(), u"名称"_s);
        EXPECT_EQ(results().columnWidth(0), results().width() - 26);
        dialog->resize(1, 1);
        const auto& typed = part("txtName");
        EXPECT_GE(typed.width(), typed.fontMetrics().horizontalAdvance(u"剪切应力计算"_s));
        part<QTabBar>("TabFind").setCurrentIndex(1);
        dialog->resize(1, 1);
        EXPECT_GE(part("TabFind").width(), part("TabFind").sizeHint().width());
    });
}

TEST_F(Finding, LocatesByButtonDoubleClickAndEnter) {
    withDialog([&] {
        search(u"切"_s);
        EXPECT_FALSE(part("CmdPosition").isEnabled());
        clickResult(0);
        click("CmdPosition");
        EXPECT_EQ(shown(), u"梁/剪切"_s);
        search(u"管"_s);
        clickResult(0, true);
        EXPECT_EQ(shown(), u"管/流量"_s);
        search(u"度"_s, "OptFindName1");
        clickResult(0);
        key(results(), Qt::Key_Return);
        EXPECT_EQ(shown(), u"简支/挠度"_s);
        EXPECT_EQ(listed(), u"挠度"_s) << "Enter searches no more";
        QTest::mouseDClick(results().viewport(), Qt::LeftButton, {}, {20, 200});
        EXPECT_EQ(shown(), u"简支/挠度"_s);
        first.addFormula(0, u"顶"_s);
        search(u"顶"_s);
        clickResult(0, true);
        EXPECT_EQ(shown(), u"库1/顶"_s);
    });
    EXPECT_EQ(told(), QString());
}

TEST_F(Finding, TellsWhatHasGoneSinceTheSearch) {
    const qint32 unseen = first.addFolder(0, u"新柱"_s);
    first.addFormula(unseen, u"新柱式"_s);
    select(u"板"_s);
    withDialog([&] {
        search(u"柱"_s);
        ASSERT_EQ(listed(), u"柱 新柱 新柱式"_s);
        clickResult(1, true);
        EXPECT_EQ(told(), u"用户需要定位的节点不存在！"_s);
        clickResult(2, true);
        EXPECT_EQ(told(), u"用户需要定位的公式夹不存在！"_s);
        EXPECT_EQ(shown(), u"板/"_s);
        EXPECT_EQ(results().model()->index(2, 0).data(FindResults::PlaceRole).toString(),
                  u"库1 › …"_s);
        search(u"稳定"_s);
        first.funcs().DelFormula(stability, first.connection());
        clickResult(0, true);
        EXPECT_EQ(told(), u"用户需要定位的公式不存在！"_s);
        EXPECT_EQ(shown(), u"柱/"_s);
        search(u"挠"_s);
        first.funcs().DelFormula(deflection, first.connection());
        first.connection().execute(
            u"Insert Into Formula (ID, Name, PID) Values (%1, '转角', %2)"_s.arg(deflection)
                .arg(simple));
        clickResult(0, true);
        EXPECT_EQ(told(), u"用户需要定位的公式不存在！"_s) << "another has its identifier";
        EXPECT_EQ(shown(), u"柱/"_s);
    });
    first.funcs().DelFolder(unseen, first.connection());
    first.funcs().DelFormulaByPID(unseen, first.connection());
}

TEST_F(Finding, ALibraryThatCannotBeReadEndsTheSearch) {
    const QString aside = second.path() + u".aside"_s;
    withDialog([&] {
        ASSERT_TRUE(QFile::rename(second.path(), aside));
        search(u"梁"_s);
        EXPECT_EQ(told(), u"无法打开指定的数据库，不能进行查找操作！"_s);
        EXPECT_EQ(listed(), QString());
        ASSERT_TRUE(QFile::rename(aside, second.path()));
        const MissingColumn missing(second, "Tree", "Name");
        search(u"梁"_s);
        EXPECT_EQ(told(), u"读取数据库失败，无法进行查找操作！"_s);
        EXPECT_EQ(listed(), u"梁"_s);
        EXPECT_EQ(counted(), u"查找没有完成，找到 1 项"_s);
    });
    const MissingColumn missing(first, "Property", "NodeType");
    withDialog([] {});
    EXPECT_EQ(told(), u"读取“属性”信息失败！"_s);
}

TEST_F(Finding, ALongSearchShowsProgressAndCanBeStopped) {
    withDialog([&] {
        dialog->setSlice(0);
        search(u"梁"_s);
        for (const bool byEscape : {true, false}) {
            QTest::mouseClick(&part("CmdFind"), Qt::LeftButton);
            EXPECT_TRUE(part("PrgFind").isVisible());
            EXPECT_EQ(counted(), u"正在查找第 1 个公式库（共 2 个），已找到 1 项"_s);
            EXPECT_EQ(part<QPushButton>("CmdFind").text(), u"停止(&F)"_s);
            QTest::mouseClick(&part("CmdFind"), Qt::LeftButton);
            EXPECT_TRUE(part("PrgFind").isVisible()) << "the second click of a double click";
            if (byEscape) {
                part<QLineEdit>("txtName").setText(u"柱"_s);
                QTest::keyClick(dialog.data(), Qt::Key_Escape);
                part<QLineEdit>("txtName").setText(u"梁"_s);
            } else {
                const int interval = QApplication::doubleClickInterval();
                QApplication::setDoubleClickInterval(0);
                QTest::keyClick(dialog.data(), Qt::Key_Return);
                QApplication::setDoubleClickInterval(interval);
            }
            EXPECT_EQ(counted(), u"已停止，找到 1 项"_s);
            EXPECT_NO_THROW(first.connection().execute(u"Update Tree Set Name = Name"_s));
            EXPECT_FALSE(part("PrgFind").isVisible());
            EXPECT_EQ(QGuiApplication::overrideCursor()->shape(), Qt::ArrowCursor);
        }
        click("CmdFind");
        EXPECT_TRUE(QTest::qWaitFor([&] { return counted() == u"找到 1 项"_s; }));
    });
}

TEST_F(Finding, ASearchThatFindsNothingCanBeStoppedInsideALibrary) {
    first.connection().execute(
        u"With Recursive n(i) As (Select 100 Union All Select i + 1 From n Where i < 20000) "
        "Insert Into Formula (ID, Name, PID) Select i, '式', 0 From n"_s);
    withDialog([&] {
        dialog->setSlice(0);
        search(u"没有"_s);
        EXPECT_TRUE(QTest::qWaitFor([&] { return part<QProgressBar>("PrgFind").value() > 250; }));
        EXPECT_TRUE(counted().startsWith(u"正在查找第 1 个公式库"_s)) << qPrintable(counted());
        QTest::keyClick(dialog.data(), Qt::Key_Escape);
        EXPECT_EQ(counted(), u"已停止，找到 0 项"_s);
        click("CmdFind");
        EXPECT_TRUE(QTest::qWaitFor([&] { return counted() == u"找到 0 项"_s; }));
    });
    first.connection().execute(u"Delete From Formula Where ID >= 100"_s);
}

TEST_F(Finding, SelectsNothingInALibraryThatWasReplacedSinceTheSearch) {
    const QString aside = first.pathOf(u"aside"_s);
    select(u"板"_s);
    withDialog([&] {
        search(u"弯"_s);
        first.connection().execute(u"Update Formula Set Name = '弯矩' Where ID = 1"_s);
        clickResult(0, true);
        EXPECT_EQ(shown(), u"梁/弯矩"_s) << "renamed";
        ASSERT_TRUE(QFile::rename(first.path(), aside));
        ASSERT_TRUE(QFile::copy(second.path(), first.path()));
        for (const auto& [text, message] : {std::pair{u"弯"_s, u"用户需要定位的公式不存在！"_s},
                                            {u"柱"_s, u"用户需要定位的节点不存在！"_s}}) {
            ASSERT_TRUE(QFile::remove(first.path()));
            ASSERT_TRUE(QFile::copy(aside, first.path()));
            search(text);
            ASSERT_TRUE(QFile::remove(first.path()));
            ASSERT_TRUE(QFile::copy(second.path(), first.path()));
            clickResult(0, true);
            EXPECT_EQ(told(), message);
            EXPECT_EQ(shown(), u"梁/弯矩"_s);
        }
        ASSERT_TRUE(QFile::remove(first.path()));
        ASSERT_TRUE(QFile::rename(aside, first.path()));
    });
}

TEST_F(Finding, ALibraryThatWasReplacedBeforeTheSearchIsReadAnew) {
    const QString aside = first.pathOf(u"aside"_s);
    second.addPicture(flow, pictureBytes(100));
    for (const bool byPicture : {false, true}) {
        select(u"柱"_s);
        ASSERT_TRUE(QFile::rename(first.path(), aside));
        ASSERT_TRUE(QFile::copy(second.path(), first.path()));
        withDialog([&] {
            if (byPicture) {
                part<QTabBar>("TabFind").setCurrentIndex(1);
                QTest::keyClick(&part("ImageGridFind"), Qt::Key_Home);
                QTest::keyClick(&part("ImageGridFind"), Qt::Key_Return);
            } else {
                search(u"流量"_s);
                clickResult(0, true);
            }
            EXPECT_EQ(desk->treeTexts(), (QStringList{u"库1"_s, u"  管"_s, u"库2"_s, u"  管"_s}));
            EXPECT_EQ(shown(), u"管/流量"_s);
            EXPECT_EQ(desk->tree().selectedKey(), folder(pipes));
            ASSERT_TRUE(QFile::remove(first.path()));
            ASSERT_TRUE(QFile::rename(aside, first.path()));
            part<QTabBar>("TabFind").setCurrentIndex(0);
            search(u"简支"_s);
            clickResult(0, true);
            EXPECT_EQ(shown(), u"简支/挠度"_s);
        });
    }
    EXPECT_EQ(told(), QString());
}

TEST_F(Finding, StartsWhereTheUserGoesOnAndKeepsWhatWasTyped) {
    first.addProperty(1, u"用途"_s, 0, beams, NodeTypeFolder);
    first.addPicture(bending, pictureBytes(100));
    start();
    const auto turnTo = [&](int tab) {
        auto& tabs = part<QTabBar>("TabFind");
        QTest::mouseClick(&tabs, Qt::LeftButton, {}, tabs.tabRect(tab).center());
    };
    withDialog([&] {
        EXPECT_EQ(dialog->focusWidget()->objectName(), u"ChkFolder"_s);
        QTest::keyClick(&part("ChkFolder"), Qt::Key_Space);
        click("ChkPrpty");
        desk->type(*part<QComboBox>("CmbPrpty").lineEdit(), u"重要"_s);
        click("ChkFormula");
        EXPECT_EQ(part<QComboBox>("CmbPrpty").currentText(), u"重要"_s);
        turnTo(1);
        EXPECT_TRUE(part("ImageGridFind").hasFocus());
        turnTo(0);
        EXPECT_TRUE(part("CmbPrpty").hasFocus());
        click("ChkName");
        turnTo(1);
        turnTo(0);
        EXPECT_TRUE(part("txtName").hasFocus());
        part("TabFind").setFocus();
        QTest::keyClick(&part("TabFind"), Qt::Key_Right);
        EXPECT_TRUE(part("TabFind").hasFocus());
        QTest::keyClick(&part("TabFind"), Qt::Key_Left);
        click("ChkPrpty");
        search(u"梁"_s);
    });
    withDialog([&] {
        EXPECT_EQ(dialog->focusWidget()->objectName(), u"lvFindResult"_s);
        part<QLineEdit>("txtName").setFocus();
        key(part("txtName"), Qt::Key_Return);
        EXPECT_EQ(listed(), u"梁"_s) << "by the criteria of before";
        EXPECT_TRUE(part<QRadioButton>("OptFindName2").isChecked());
    });
}

TEST_F(Finding, SaysThatATextIsTooLong) {
    withDialog([&] {
        click("ChkFormula");
        click("ChkName");
        click("ChkMemo");
        click("ChkPrpty");
        for (QLineEdit* text : {&part<QLineEdit>("txtName"), &part<QLineEdit>("txtMemo"),
                                part<QComboBox>("CmbPrpty").lineEdit()}) {
            part<QLabel>("lblFindCount").clear();
            text->setText(QString(kFindTextLimit - 1, u'a'));
            QTest::keyClick(text, Qt::Key_End);
            QTest::keyClicks(text, u"b"_s);
            EXPECT_EQ(counted(), QString());
            QGuiApplication::clipboard()->setText(u"cd"_s);
            text->selectAll();
            QTest::keyClick(text, Qt::Key_End);
            text->paste();
            EXPECT_EQ(text->text().size(), kFindTextLimit);
            EXPECT_EQ(counted(), u"条件最多 10000 个字符，超出的部分没有输入"_s);
        }
    });
}

TEST_F(Finding, F3StepsThroughTheHitsAfterTheDialogIsClosed) {
    first.addProperty(1, u"用途"_s, 0, columns, NodeTypeFolder);
    first.addProperty(2, u"用途"_s, 0, stability, NodeTypeFormula);
    start();
    const auto step = [this](Qt::KeyboardModifiers modifiers = {}) {
        activate();
        desk->pressKey(Qt::Key_F3, modifiers);
        return shown();
    };
    select(u"板"_s);
    EXPECT_EQ(step(), u"板/"_s);
    withDialog([&] { search(u"支"_s); });
    EXPECT_FALSE(desk->editButton(u"查找下一个"_s).isEnabled());
    QTest::keyClick(&desk->tree(), Qt::Key_F2);
    desk->labelEditor()->clear();
    EXPECT_EQ(step(), u"板/"_s);
    EXPECT_EQ(told(), u"公式夹名称不能为空！"_s);
    EXPECT_EQ(step(), u"简支/挠度"_s) << "which was not skipped";
    withDialog([&] {
        EXPECT_EQ(listed(), u"简支"_s);
        EXPECT_EQ(counted(), u"上次找到 1 项"_s);
        first.addFormula(plates, u"板曲"_s);
        search(u"曲"_s);
        ASSERT_EQ(listed(), u"弯曲 板曲"_s);
    });
    EXPECT_EQ(step(Qt::ShiftModifier), u"简支/挠度"_s) << "none was located yet";
    EXPECT_EQ(step(), u"梁/弯曲"_s);
    step();
    EXPECT_EQ(step(), u"板/板曲"_s) << "there are no more";
    EXPECT_EQ(step(Qt::ShiftModifier), u"梁/弯曲"_s);
    desk->control().SetDesignProp(u"用途"_s);
    EXPECT_EQ(shown(), u"柱/稳定"_s);
    step();
    EXPECT_EQ(step(), u"柱/稳定"_s) << "keys go to the locate by property";
    select(u"板"_s);
    EXPECT_EQ(step(), u"板/板曲"_s) << "which has ended";
    for (QWidget* focused :
         {static_cast<QWidget*>(&desk->formulaBox()), static_cast<QWidget*>(&desk->tree())}) {
        focused->setFocus();
        EXPECT_EQ(step(Qt::ShiftModifier), u"梁/弯曲"_s);
        EXPECT_EQ(step(), u"板/板曲"_s);
    }
}

TEST_F(Finding, TheHostMayDestroyTheControlMeanwhile) {
    first.addPicture(bending, pictureBytes(2'000'000));
    select(u"梁"_s);
    for (const bool onPictures : {true, false}) {
        start();
        select(u"梁"_s);
        withDialog([&] {
            dialog->setSlice(0);
            if (onPictures) {
                part<QTabBar>("TabFind").setCurrentIndex(1);
                QCoreApplication::processEvents();
            } else {
                part<QCheckBox>("ChkFolder").click();
                part<QCheckBox>("ChkName").click();
                part<QLineEdit>("txtName").setText(u"梁"_s);
                part<QPushButton>("CmdFind").click();
            }
            desk.reset();
        });
        EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
    }
    start();
}

}  // namespace
}  // namespace varo::test
