// What the property-conditions dialog does with a library.

#include "library/limits.h"
#include "library/session_trial.h"
#include "support/file_limit.h"

#include <functional>
#include <limits>

namespace varo::test {
namespace {

const QString kNotRolledBack = u"回滚数据库失败，无法恢复原有的数据！\n请关闭数据库文件再试！"_s;

TEST(PropertySession, ListsEditsAndWritesWhatIsPending) {
    Trial on;
    EXPECT_EQ(on.open(), QString());
    EXPECT_EQ(on.backup(), on.before);
    EXPECT_EQ(on.listed(), u"1 形 7, 3 料 0"_s);
    PropertySession& session = *on.session;
    EXPECT_FALSE(session.hasChanges());
    const QString longest(kPropertyNameLimit, u'长');
    const struct {
        qint32 id;
        QString typed;
        bool accepted;
        QString message, name;
    } names[] = {
        {3, u"  "_s, false, {}, u"料"_s},
        {3, longest + u'x', false, u"用户输入的属性名称的长度超过50个字符！"_s, u"料"_s},
        {3, u' ' + longest + u' ', true, {}, longest},
        {3, u" 料"_s, true, {}, u"料"_s},
        {9, u"x"_s, false, {}, {}},
    };
    for (const auto& each : names) {
        const auto renaming = session.rename(each.id, each.typed);
        EXPECT_EQ(renaming.accepted, each.accepted);
        EXPECT_EQ(renaming.message, each.message);
        EXPECT_EQ(session.find(each.id) ? session.find(each.id)->name : QString(), each.name);
    }
    EXPECT_FALSE(session.hasChanges()) << "the name is what it was";

    EXPECT_EQ(session.add(), 4);
    EXPECT_EQ(session.add(), 5);
    EXPECT_TRUE(session.saveFilter(5, condition(u"c = 1"_s)));
    session.remove(5);
    EXPECT_EQ(session.add(), 6);
    session.rename(4, u" 新 "_s);
    session.rename(3, u"材料"_s);
    EXPECT_TRUE(session.saveFilter(3, condition(u"d = 1"_s)));
    EXPECT_TRUE(session.saveFilter(4, condition(u"e = 1"_s)));
    session.rename(1, u"x"_s);
    session.remove(1);
    EXPECT_EQ(on.listed(), u"3 材料 10, 4 新 11, 6 新属性 0"_s);
    EXPECT_EQ(on.stored(), u"1 形 7, 3 料 0; 7 8 9 10 11"_s);
    EXPECT_EQ(session.commit(), QString());
    EXPECT_EQ(on.stored(), u"3 材料 10, 4 新 11, 6 新属性 0; 8 10 11"_s);
    on.session.reset();
    EXPECT_EQ(on.ownFiles(), QStringList());
    EXPECT_EQ(on.stored(), u"3 材料 10, 4 新 11, 6 新属性 0; 8 10 11"_s);
}

TEST(PropertySession, NumbersGoOnBehindTheLargest) {
    Trial on;
    EXPECT_EQ(on.open(0, NodeTypeFolder), QString());
    EXPECT_EQ(on.session->add(), 0);
    constexpr qint32 kLast = std::numeric_limits<qint32>::max();
    on.library.addProperty(kLast, u"末"_s, 0, 0, NodeTypeFolder);
    on.session.reset();
    EXPECT_EQ(on.open(0, NodeTypeFolder), QString());
    EXPECT_EQ(on.session->add(), std::nullopt);
    on.session.reset();
    const MissingColumn missing(on.library, "Property", "NodeID");
    EXPECT_EQ(on.open(), u"无法读取“属性”信息，初始化“属性”列表失败！"_s);
}

TEST(PropertySession, NeverTouchesAFilterThatAnotherPropertyUses) {
    enum Edit { Save, SaveWhatIsThere, SaveFaults, Delete, Remove };
    const auto edited = [](PropertySession& session, Edit edit, qint32 id) {
        switch (edit) {
            case Save:
                return session.saveFilter(id, condition(u"z = 1"_s)).isDone;
            case SaveWhatIsThere:
                return session.saveFilter(id, condition(u"a = 1"_s)).isDone;
            case SaveFaults:
                return session.saveFilter(id, {{groupNode(ConditionType::And)}}).isDone;
            case Delete:
                return session.deleteFilter(id).isDone;
            default:
                session.remove(id);
                return true;
        }
    };
    const struct {
        Edit edit;
        qint32 node;
        NodeType type;
        qint32 id;
        QString stored;  ///< filters of formula 1, folder 1, formula 2; then all filters
    } cases[] = {
        {Save, 1, NodeTypeFormula, 1, u"7 0 8 8; 7 8"_s},
        {Save, 1, NodeTypeFormula, 3, u"7 9 8 8; 7 8 9"_s},
        {Save, 1, NodeTypeFolder, 1, u"7 0 9 8; 7 8 9"_s},
        {SaveWhatIsThere, 1, NodeTypeFormula, 1, u"7 0 8 8; 7 8"_s},
        {SaveFaults, 1, NodeTypeFormula, 1, u"7 0 8 8; 7 8"_s},
        {Delete, 1, NodeTypeFormula, 1, u"0 0 8 8; 8"_s},
        {Delete, 1, NodeTypeFormula, 3, u"7 0 8 8; 7 8"_s},
        {Delete, 2, NodeTypeFormula, 0, u"7 0 8 0; 7 8"_s},
        {Remove, 1, NodeTypeFormula, 1, u"0 8 8; 8"_s},
        {Remove, 1, NodeTypeFolder, 1, u"7 0 8; 7 8"_s},
    };
    int number = 0;
    for (const auto& [edit, node, type, id, stored] : cases) {
        SCOPED_TRACE(++number);
        Trial on;
        EXPECT_EQ(on.open(node, type), QString());
        EXPECT_EQ(edited(*on.session, edit, id), edit != SaveFaults);
        EXPECT_EQ(on.session->hasChanges(), stored != u"7 0 8 8; 7 8"_s || edit == Save);
        EXPECT_EQ(on.session->commit(), QString());
        const QStringList filters = on.library.rows(
            u"Select FilterID From Property Order By NodeID, NodeType Desc, PropID"_s);
        EXPECT_EQ(filters.join(u' ') + u"; "_s + on.filters(), stored);
    }
}

TEST(PropertySession, PropertiesOfOneNodeCanShareAFilter) {
    Trial on;
    on.library.connection().execute(u"Update Property Set FilterID = 7 Where PropID = 3"_s);
    EXPECT_EQ(on.open(), QString());
    EXPECT_TRUE(on.session->saveFilter(1, condition(u"z = 1"_s)));
    EXPECT_EQ(on.listed(), u"1 形 9, 3 料 7"_s);
    on.session->remove(3);
    EXPECT_EQ(on.session->commit(), QString());
    EXPECT_EQ(on.stored(), u"1 形 9; 8 9"_s);
}

TEST(PropertySession, KeepsAStoredFilterOfAnotherShapeUntilItIsChanged) {
    Trial on;
    on.library.connection().execute(
        u"Insert Into FilterCond(ID,UserID,ParentID,Type) Values(90,7,0,9)"_s);
    const QStringList rows = on.library.content();
    EXPECT_EQ(on.open(), QString());
    const StoredCondition stored = on.session->readFilter(1).value();
    EXPECT_EQ(stored.tree.roots.size(), 2U);
    EXPECT_TRUE(on.session->saveFilter(1, stored.tree));
    EXPECT_FALSE(on.session->hasChanges());
    EXPECT_EQ(on.library.content(), rows);
    ConditionTree changed = stored.tree;
    changed.roots.pop_back();
    EXPECT_TRUE(on.session->saveFilter(1, changed));
    EXPECT_EQ(on.library.rows(u"Select ID From FilterCond Where UserID = 7"_s).size(), 1);
}

TEST(PropertySession, ACommitThatFailsKeepsWhatWasDoneAndCanGoOnOrBack) {
    const struct {
        const char* refused;
        QString message;
        QString stored;  ///< after the failure
    } cases[] = {
        {"Delete On Property", u"编辑数据库出错，无法删除用户指定的属性！"_s,
         u"1 形 7, 3 料 0; 7 8"_s},
        {"Delete On FilterCond", u"编辑数据库出错，无法删除用户指定的属性！"_s, u"3 料 0; 7 8"_s},
        {"Insert On Property When New.PropID = 5", u"编辑数据库出错，无法添加用户指定的属性！"_s,
         u"3 料 0, 4 新属性 0; 8"_s},
        {"Update Of PropName On Property", u"编辑数据库出错，无法修改用户指定的属性的名称！"_s,
         u"3 料 0, 4 新属性 0, 5 新属性 0; 8"_s},
        {"Update Of FilterID On Property", u"编辑数据库出错，无法修改属性与过滤条件的对应关系！"_s,
         u"3 材 0, 4 新属性 0, 5 新属性 0; 8"_s},
    };
    for (const auto& each : cases) {
        for (const bool goesOn : {true, false}) {
            SCOPED_TRACE(each.refused);
            Trial on;
            EXPECT_EQ(on.open(), QString());
            on.session->remove(1);
            on.session->add();
            on.session->add();
            on.session->rename(3, u"材"_s);
            EXPECT_TRUE(on.session->saveFilter(3, condition(u"d = 1"_s)));
            auto refusal = std::make_unique<Refusal>(
                on.library.path(), u"Before %1 Begin Select Raise(Abort, 'no'); End"_s.arg(
                                       QLatin1StringView(each.refused)));
            EXPECT_EQ(on.session->commit(), each.message);
            EXPECT_EQ(on.stored(), each.stored + u" 9"_s);
            refusal.reset();
            on.library.connection().close();
            if (goesOn) {
                EXPECT_EQ(on.session->commit(), QString());
                EXPECT_EQ(on.stored(), u"3 材 9, 4 新属性 0, 5 新属性 0; 8 9"_s);
            } else {
                EXPECT_TRUE(on.session->needsRestore());
                on.session->cancel();
            }
        }
    }
}

TEST(PropertySession, CancelPutsTheLibraryBackWhenItWasWritten) {
    for (const bool isWritten : {false, true}) {
        for (const bool isDestroyed : {false, true}) {
            Trial on;
            EXPECT_TRUE(QFile::setPermissions(
                on.library.path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup));
            const auto permissions = QFile::permissions(on.library.path());
            const QStringList content = on.library.content();
            EXPECT_EQ(on.open(), QString());
            on.session->remove(3);
            if (isWritten) {
                EXPECT_TRUE(on.session->deleteFilter(1));
                EXPECT_NE(on.library.content(), content);
            }
            if (!isDestroyed) {
                EXPECT_EQ(on.session->cancel(), QString());
            }
            on.session.reset();
            EXPECT_TRUE(on.isAsBefore());
            EXPECT_EQ(QFile::permissions(on.library.path()), permissions);
            EXPECT_EQ(on.ownFiles(), QStringList());
            EXPECT_EQ(QDir(on.library.folder()).entryList(QDir::Files).size(), 1);
            EXPECT_EQ(on.library.content(), content) << "as one who has had it open reads it";
            on.library.addFolder(0, u"后来"_s);
            const QStringList after = on.library.content();
            on.expectSound();
            EXPECT_EQ(on.library.content(), after)
                << "another connection reads what that one wrote";
        }
    }
}

TEST(PropertySession, AnEditThatTheBackupCannotNoteIsToldAndCanBeCancelled) {
    Trial on;
    EXPECT_EQ(on.open(), QString());
    const QString note = on.own.filePath(u"BackupDB.note"_s);
    ASSERT_TRUE(QFile::remove(note) && QDir().mkdir(note));
    const auto saved = on.session->saveFilter(1, condition(u"d = 1"_s));
    EXPECT_TRUE(saved.isDone && saved.message.endsWith(on.own.filePath(u"BackupDB.def"_s)));
    ASSERT_TRUE(QDir().rmdir(note));
    EXPECT_EQ(on.session->deleteFilter(1).message, QString());
    EXPECT_EQ(on.session->cancel(), QString());
    EXPECT_TRUE(on.isAsBefore());
}

TEST(PropertySession, RestoresTheFileThatALinkLeadsTo) {
    Trial on;
    const QStringList content = on.library.content();
    const QTemporaryDir elsewhere;
    ASSERT_TRUE(QFile::link(on.library.path(), elsewhere.filePath(u"link.vdb"_s)));
    PropertySession session(on.ownFolder(), on.library.funcs());
    EXPECT_EQ(session.SetConnection(elsewhere.path(), u"link.vdb"_s, {}), QString());
    EXPECT_EQ(session.InitForm(1, NodeTypeFormula), QString());
    EXPECT_TRUE(session.deleteFilter(1));
    EXPECT_NE(on.library.content(), content);
    on.library.connection().close();
    EXPECT_EQ(session.cancel(), QString());
    EXPECT_TRUE(QFileInfo(elsewhere.filePath(u"link.vdb"_s)).isSymLink());
    on.expectSound();
    EXPECT_EQ(on.library.content(), content);
}

TEST(PropertySession, DoesNotOpenWhatItCannotBackUp) {
    const auto message = [](const Trial& on) {
        return u"无法打开数据库文件：\n"_s + on.library.path() +
               u"\n其他程序正在使用这个数据库文件！"_s;
    };
    for (const bool isLocked : {true, false}) {
        Trial on;
        std::unique_ptr<LibraryProcess> other;
        if (isLocked) {
            on.library.connection().close();
            other = std::make_unique<LibraryProcess>(QStringList{u"lock"_s, on.library.path()});
            EXPECT_FALSE(other->readLine().isEmpty());
        } else {
            ASSERT_TRUE(QDir(on.own.path()).removeRecursively());
        }
        EXPECT_EQ(on.open(), message(on));
        EXPECT_EQ(on.ownFiles(), QStringList());
        on.session.reset();
        EXPECT_TRUE(on.isAsBefore());
    }
    Trial on;
    QFile left(on.own.filePath(u"BackupDB.def"_s));
    ASSERT_TRUE(left.open(QIODevice::WriteOnly) && left.write("left") == 4 && left.flush());
    EXPECT_EQ(on.open(), message(on));
    on.session.reset();
    EXPECT_EQ(on.backup(), "left") << "it was not settled";
    ASSERT_TRUE(left.remove());
    EXPECT_EQ(on.open(), QString());
    qint64 room = 0;
    QString opened = message(on);
    for (; opened == message(on) && room < (1 << 20); room += 4096) {
        on.session.reset();
        const FileLimit limit(room);
        opened = on.open();
        EXPECT_EQ(on.ownFiles().size(), opened.isEmpty() ? 3 : 0) << room;
    }
    EXPECT_GT(room, 4096);
    EXPECT_EQ(on.backup(), on.before);
}

TEST(PropertySession, KeepsOthersFromItsBackupWhileItIsOpen) {
    Trial on;
    EXPECT_EQ(on.open(), QString());
    EXPECT_TRUE(on.session->deleteFilter(1));
    RecordingQuestions questions;
    questions.answers = {true};
    EXPECT_FALSE(settleLeftBackup(on.ownFolder(), questions));
    EXPECT_EQ(questions.asked + questions.informed, QStringList());
    const TestLibrary other;
    auto second = std::make_unique<PropertySession>(on.ownFolder(), on.library.funcs());
    EXPECT_EQ(second->SetConnection(other.folder(), other.fileName(), {}),
              u"无法打开数据库文件：\n"_s + other.path() + u"\n其他程序正在使用这个数据库文件！"_s);
    EXPECT_EQ(second->cancel(), QString());
    const QString beside = on.ownFolder() + u"2/"_s;
    EXPECT_EQ(freeBackupFolder(on.ownFolder(), questions), beside);
    // Also when somebody has removed the backup.
    ASSERT_TRUE(QFile::rename(on.own.filePath(u"BackupDB.def"_s), on.own.filePath(u"moved"_s)));
    EXPECT_EQ(freeBackupFolder(on.ownFolder(), questions), beside);
    EXPECT_NE(second->SetConnection(other.folder(), other.fileName(), {}), QString());
    ASSERT_TRUE(QFile::rename(on.own.filePath(u"moved"_s), on.own.filePath(u"BackupDB.def"_s)));
    EXPECT_EQ(on.session->cancel(), QString());
    EXPECT_TRUE(on.isAsBefore());
    EXPECT_EQ(second->SetConnection(other.folder(), other.fileName(), {}), QString());
    second.reset();
    ASSERT_TRUE(QDir().mkdir(beside) && QFile::copy(other.path(), beside + u"BackupDB.def"_s));
    EXPECT_EQ(freeBackupFolder(on.ownFolder(), questions), on.ownFolder());
    EXPECT_TRUE(QFile::exists(beside + u"BackupDB-1.def"_s)) << "what is left there is settled";
}

/// The disk is full at each write in turn. There is always a good copy, and in the end the library
/// is as it was.
TEST(PropertySession, AFullDiskNeverLeavesLessThanOneGoodCopy) {
    bool done = false;
    qint64 room = 0;
    for (; !done && room < (1 << 20); room += 4096) {
        SCOPED_TRACE(room);
        Trial on;
        EXPECT_EQ(on.open(), QString());
        on.session->add();
        on.session->remove(3);
        QString failure;
        {
            const FileLimit limit(room);
            done = on.session->saveFilter(1, condition(u"d = 1"_s)).isDone;
            failure = on.session->commit();
            done = done && failure.isEmpty();
            if (done) {
                break;
            }
            failure = on.session->cancel();
            EXPECT_TRUE(failure.isEmpty() || failure == kNotRolledBack);
            EXPECT_TRUE(failure.isEmpty() || on.backup() == on.before);
        }
        on.session.reset();
        on.library.connection().close();
        RecordingQuestions questions;
        questions.answers = {true};
        EXPECT_TRUE(settleLeftBackup(on.ownFolder(), questions));
        EXPECT_TRUE(on.isAsBefore() || on.keptAside() == on.before);
        on.expectSound();
    }
    EXPECT_GT(room, 8192);
}

TEST(PropertySession, DoesNotRollBackWhatAnotherProgramHasWritten) {
    using Write = std::function<void(PropertySession&)>;
    const Write none = [](auto&) {};
    QString told;
    const Write save = [&](auto& session) {
        told += session.saveFilter(3, condition(u"z = 1"_s)).message;
    };
    const Write remove = [&](auto& session) { told += session.deleteFilter(1).message; };
    const Write failToCommit = [](auto& session) {
        session.rename(3, u"材"_s);
        EXPECT_NE(session.commit(), QString());
    };
    const struct {
        Write before, after;
        bool isTold;
    } cases[] = {{remove, none, false},
                 {none, remove, true},
                 {remove, save, true},
                 {save, failToCommit, false}};
    for (const auto& [before, after, isTold] : cases) {
        Trial on;
        EXPECT_EQ(on.open(), QString());
        const QByteArray backup = on.backup();
        before(*on.session);
        EXPECT_EQ(told, QString());
        on.library.addFolder(0, u"别人的"_s);
        const Refusal refusal(on.library.path(),
                              u"Before Update Of PropName On Property "
                              "Begin Select Raise(Abort, 'no'); End"_s);
        on.library.connection().close();
        after(*on.session);
        EXPECT_EQ(told.contains(u"无法更新备份的记录"_s), isTold);
        told.clear();
        on.library.connection().open(on.library.path());
        const QStringList content = on.library.content();
        on.library.connection().close();
        EXPECT_EQ(on.session->cancel(), kNotRolledBack);
        on.session.reset();
        EXPECT_EQ(on.backup(), backup);
        RecordingQuestions questions;
        EXPECT_TRUE(settleLeftBackup(on.ownFolder(), questions));
        EXPECT_EQ(on.keptAside(), backup) << "even when the program was ended";
        on.library.connection().open(on.library.path());
        EXPECT_EQ(on.library.content(), content);
    }
}

}  // namespace
}  // namespace varo::test
