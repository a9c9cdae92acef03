// Commands on a library that cannot be read or written, whole or in part, at that moment.

#include "editing/picture_desk.h"
#include "support/file_limit.h"
#include "support/no_waiting.h"
#include "support/process.h"
#include "support/read_only_folder.h"
#include "support/stored_view.h"

#include <QDir>

namespace varo::test {
namespace {

class Obstacles;

/// An edit command.
struct Command {
    const char* name;
    const char* node;     ///< the node that is selected for it
    const char* formula;  ///< the formula that is selected then; null to stay on the node
    std::function<void(Obstacles&)> give;
    const char* message;                  ///< when it fails
    const char* copiedFormula = nullptr;  ///< put into the clipboard before, from 梁; "" for 梁
};

void PrintTo(const Command& command, std::ostream* out) {
    *out << command.name;
}

/// A library: 梁 (弯曲, 剪切, 扭转) with 简支 (挠度) and 悬臂 below it, 柱, and outside of folders
/// 一, which has a picture, and 二, which has none. A picture has been copied. Nobody waits for
/// locks.
class Obstacles : private NoWaiting,
                  public PictureDesk,
                  public testing::WithParamInterface<Command> {
  public:
    using PictureDesk::choose;
    using PictureDesk::desk;

    void press(const QString& button) {
        desk->questions().answers = {true};
        desk->clickEditButton(button);
    }

    void rename(ui::NodeView& view) {
        QTest::keyClick(&view, Qt::Key_F2);
        desk->typeLabel(QString(20, u'x'));
    }

    /// Chooses an entry of the picture's menu; it opens on the label when there is no picture.
    void onPicture(const QString& entry) {
        desk->questions().file = ChosenFile{newPicture, 0};
        choose(desk->isShown("imgDesc") ? picture() : label(), entry);
    }

  protected:
    Obstacles() {
        const qint32 beams = library.addFolder(0, QStringLiteral("梁"));
        library.addFolder(0, QStringLiteral("柱"));
        const qint32 simple = library.addFolder(beams, QStringLiteral("简支"));
        library.addFolder(beams, QStringLiteral("悬臂"));
        library.addFormula(beams, QStringLiteral("弯曲"), QStringLiteral("M/W"));
        library.addFormula(beams, QStringLiteral("剪切"), QStringLiteral("Q/A"));
        library.addFormula(beams, QStringLiteral("扭转"), QStringLiteral("T/W"));
        const qint32 deflection = library.addFormula(simple, QStringLiteral("挠度"));
        library.addPicture(deflection, imageBytes({50, 50}, Qt::green, "bmp"));
        library.addProperty(1, QStringLiteral("形"), 0, simple, NodeTypeFolder);
        library.addProperty(2, QStringLiteral("形"), 0, deflection, NodeTypeFormula);
        newPicture = addFile(QStringLiteral("new.bmp"), imageBytes({70, 70}, Qt::blue, "bmp"));
        start();
        onPicture(QStringLiteral("复制"));
    }

    void select() {
        if (const char* copied = GetParam().copiedFormula; copied != nullptr) {
            desk->clickNode(QStringLiteral("梁"));
            if (*copied != '\0') {
                desk->clickFormula(QString::fromUtf8(copied));
            }
            desk->clickEditButton(QStringLiteral("复制"));
        }
        desk->clickNode(QString::fromUtf8(GetParam().node));
        if (GetParam().formula != nullptr) {
            desk->clickFormula(QString::fromUtf8(GetParam().formula));
        }
    }

    void give() { GetParam().give(*this); }

    QStringList told() { return std::exchange(desk->questions().informed, {}); }
    QStringList refusal() const { return {QString::fromUtf8(GetParam().message)}; }

    /// What the library holds, which files are beside it, what the control's own files hold, and
    /// which picture is shown.
    QStringList everything() {
        QStringList lines = library.rows(QStringLiteral("Select * From Tree")) +
                            library.rows(QStringLiteral("Select *, hex(Pic) From Formula")) +
                            library.rows(QStringLiteral("Select * From RecentVar")) +
                            library.rows(QStringLiteral("Select * From Property")) +
                            QDir(library.folder()).entryList(QDir::Files);
        for (const QString& name : workFiles()) {
            lines.append(name + u' ' + QString::fromLatin1(fileContent(workFile(name)).toHex()));
        }
        return lines << shownColor().name();
    }

    /// Nobody is in the middle of something with the library, which is sound and shown as it is.
    void expectSoundAndShown() {
        EXPECT_NO_THROW(library.connection().execute(QStringLiteral("Begin Exclusive")));
        EXPECT_NO_THROW(library.connection().execute(QStringLiteral("Rollback")));
        EXPECT_EQ(library.connection().damages(), QStringList());
        EXPECT_TRUE(showsWhatIsStored(*desk));
    }

    QString newPicture;
};

/// What is in the way of a command for as long as it lives.
using Obstacle = std::shared_ptr<void>;

/// Another program that is in the middle of something with the library.
Obstacle otherProgram(const char* what, const QString& library) {
    auto program =
        std::make_shared<LibraryProcess>(QStringList{QString::fromLatin1(what), library});
    EXPECT_FALSE(program->readLine().isEmpty());
    return program;
}

/// A link that leads nowhere: the library can be read, but its journal not be made.
Obstacle noJournal(const QString& library) {
    const QString journal = library + QStringLiteral("-journal");
    EXPECT_TRUE(QFile::link(QStringLiteral("/no/such/file"), journal));
    return {nullptr, [=](void*) { EXPECT_TRUE(QFile::remove(journal)); }};
}

/// A folder that looks like the journal of a killed program and cannot be read as one.
Obstacle noReading(const QString& library) {
    const QString journal = library + QStringLiteral("-journal");
    EXPECT_TRUE(QDir().mkdir(journal));
    return {nullptr, [=](void*) { EXPECT_TRUE(QDir().rmdir(journal)); }};
}

TEST_P(Obstacles, RefuseACommandWithItsMessageAndLeaveEverythingAsItWas) {
    struct {
        const char* name;
        std::function<Obstacle(const QString&)> put;
    } const obstacles[] = {
        {"locked", std::bind_front(otherProgram, "lock")},
        {"locked for writing", std::bind_front(otherProgram, "write")},
        {"locked at the commit", std::bind_front(otherProgram, "read")},
        {"no journal", noJournal},
        {"no reading", noReading},
    };
    for (const auto& each : obstacles) {
        SCOPED_TRACE(each.name);
        select();
        const QStringList before = everything();
        {
            const Obstacle obstacle = each.put(library.path());
            give();
        }
        EXPECT_EQ(told(), refusal());
        expectSoundAndShown();
        EXPECT_EQ(everything(), before);
        EXPECT_EQ(desk->labelEditor(), nullptr);
    }
    select();
    give();
    EXPECT_EQ(told(), QStringList()) << "with nothing in the way";
    expectSoundAndShown();
}

TEST_P(Obstacles, ALibraryOpenedForReadingTakesNoCommand) {
    desk.reset();
    {
        const ReadOnlyFolder folder(library.folder(), library.path());
        if (!folder.readOnly()) {
            GTEST_SKIP() << "no way to make a folder read-only for this user";
        }
        start();
        select();
        give();
        EXPECT_EQ(told(), refusal());
        EXPECT_TRUE(showsWhatIsStored(*desk));
        desk.reset();
    }
}

/// The room grows from nothing to what the command needs, so that each thing that is written is
/// the first to be refused once: in the journal, in the library and in the control's own files.
TEST_P(Obstacles, AFullDiskStopsACommandAnywhereWithoutHarm) {
    constexpr qint64 Page = 4096;
    qint64 room = 0;
    for (bool refused = true; refused; room += Page) {
        SCOPED_TRACE(room);
        select();
        const QStringList before = everything();
        {
            const FileLimit limit(room);
            give();
        }
        const QStringList messages = told();
        expectSoundAndShown();
        refused = !messages.isEmpty() && !HasFailure();
        if (refused) {
            EXPECT_EQ(messages, refusal());
            EXPECT_EQ(everything(), before);
        }
    }
    EXPECT_GT(room, 2 * Page);
}

std::function<void(Obstacles&)> button(const char* key) {
    return [key](Obstacles& on) { on.press(QString::fromUtf8(key)); };
}

std::function<void(Obstacles&)> pictureMenu(const char* entry) {
    return [entry](Obstacles& on) { on.onPicture(QString::fromUtf8(entry)); };
}

void renameFolder(Obstacles& on) {
    on.rename(on.desk->tree());
}

void renameFormula(Obstacles& on) {
    on.rename(on.desk->list());
}

const Command Commands[] = {
    {"NewFolder", "梁", nullptr, button("新建公式夹"), "无法创建新的公式夹！"},
    {"NewFormula", "梁", nullptr, button("新建公式"), "无法创建新的公式！"},
    {"RenameFolder", "梁", nullptr, renameFolder, "无法修改公式夹名称！"},
    {"RenameFormula", "梁", "剪切", renameFormula, "无法修改公式名称！"},
    {"DeleteFolder", "梁", nullptr, button("删除"), "删除公式夹失败！"},
    {"DeleteFormula", "梁", "剪切", button("删除"), "无法删除指定的公式！"},
    {"MoveFolder", "梁", nullptr, button("下移"), "移动公式夹失败！"},
    {"MoveFormula", "梁", "剪切", button("上移"), "移动公式失败！"},
    {"PasteFolder", "柱", nullptr, button("粘贴"), "粘贴公式夹失败！", ""},
    {"PasteFormula", "库1", "二", button("粘贴"), "粘贴公式失败！", "剪切"},
    {"AddPicture", "库1", "二", pictureMenu("添加"), "处理图形文件失败！"},
    {"ReplacePicture", "库1", "一", pictureMenu("替换"), "处理图形文件失败！"},
    {"PastePicture", "库1", "二", pictureMenu("粘贴"), "处理图形文件失败！"},
    {"DeletePicture", "库1", "一", pictureMenu("删除"), "删除图形文件失败！"},
};

INSTANTIATE_TEST_SUITE_P(Editing, Obstacles, testing::ValuesIn(Commands),
                         [](const auto& command) { return command.param.name; });

}  // namespace
}  // namespace varo::test
