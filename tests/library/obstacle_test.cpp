// Operations of several steps on a library that cannot be read or written at that moment, whole or
// in part.

#include "library/condition_text.h"
#include "library/folders.h"
#include "library/open_libraries.h"
#include "library/property_session.h"
#include "support/file_limit.h"
#include "support/no_waiting.h"
#include "support/page_layers.h"
#include "support/process.h"
#include "support/read_only_folder.h"

namespace varo::test {
namespace {

/// The first library with pictures and properties; 梁 and 剪切 have been copied, and so has a
/// picture. Nobody waits for locks.
struct Trial : NoWaiting, OpenLibraries {
    Trial() {
        first.addPicture(bending, pictureBytes(7000));
        first.addPicture(deflection, pictureBytes(7000));
        first.addProperty(1, u"形"_s, 0, simple, NodeTypeFolder);
        first.addProperty(2, u"形"_s, 0, deflection, NodeTypeFormula);
        chosen = first.addFile(u"chosen.bmp"_s, pictureBytes(9000));
        library.close();  // it was opened by someone who waits
        EXPECT_TRUE(library.open(1));
        EXPECT_TRUE(clipboard.captureFolders(library, beams, messages));
        listed = std::make_unique<clsFormulaInfo>(record(bending));
        copiedFormula.captureFormula(library, record(shear), messages);
        EXPECT_TRUE(pictures.copyOut(*listed));
    }

    /// What the library holds, which files are beside it, and what the working files hold.
    QStringList everything() {
        QStringList lines = first.content() + QDir(first.folder()).entryList(QDir::Files);
        for (const QString& name : workFiles()) {
            lines.append(name + u' ' + QString::number(qHash(fileContent(workFile(name)))));
        }
        return lines;
    }

    /// Nobody is in the middle of something with the library, which is sound.
    void expectSound() {
        EXPECT_NO_THROW(LibraryLock(first.path()));
        EXPECT_EQ(first.connection().damages(), QStringList());
    }

    Clipboard copiedFormula{files};
    QString chosen;
    std::unique_ptr<clsFormulaInfo> listed;
};

bool deleteFolder(Trial& on) {
    const SubtreeDeletion deletion = deleteSubtree(on.library, on.beams);
    EXPECT_EQ(deletion.gone.size(), deletion.complete ? 3U : 0U);
    EXPECT_TRUE(deletion.committed || !deletion.complete);
    return deletion.complete;
}

bool deleteFormula(Trial& on) {
    const DeletedFormula deleted = varo::deleteFormula(on.library, on.shear);
    EXPECT_NE(deleted, DeletedFormula::WithoutProperties);
    return deleted == DeletedFormula::Whole;
}

bool moveFolder(Trial& on) {
    FolderOrder order;
    const QString failure = exchangeFolders(on.library, on.beams, on.columns, order);
    EXPECT_TRUE(failure.isEmpty() || failure == u"移动公式夹失败！"_s);
    return failure.isEmpty();
}

bool pasteFolder(Trial& on) {
    const auto pasted =
        on.clipboard.insertFolders(on.library, on.columns, true, kMaxFolderDepth, on.messages);
    EXPECT_EQ(pasted.rows.rows().size(), pasted.complete ? 3U : 0U);
    return pasted.complete;
}

bool pasteFormula(Trial& on) {
    const auto pasted = on.copiedFormula.insertFormula(on.library, on.beams, on.messages);
    EXPECT_NE(pasted.inserted, InsertedFormula::WithoutPicture);
    return pasted.inserted == InsertedFormula::Whole;
}

bool storePicture(Trial& on, qint32 formula) {
    PictureCopy copy(on.pictures.fileOf(formula));
    return copy.take(on.chosen) && on.pictures.store(formula, copy, on.messages);
}

bool open(Trial& on) {
    on.library.close();
    const bool opened = on.library.open(1);
    EXPECT_EQ(opened, on.library.isOpen());
    return opened;
}

bool copyFolder(Trial& on) {
    const bool copied = on.clipboard.captureFolders(on.library, on.beams, on.messages);
    EXPECT_EQ(on.clipboard.holdsFolders(), copied);
    return copied;
}

bool copyPicture(Trial& on) {
    clsFormulaInfo withoutFile = *on.listed;
    withoutFile.FormulaPicPath.clear();
    return on.pictures.copyOut(withoutFile);
}

/// Does something with the library, and returns whether all of it was done; what the contract says
/// otherwise is checked within.
const struct {
    const char* name;
    bool writes;
    bool (*run)(Trial& on);
} kOperations[] = {
    {"delete a folder", true, deleteFolder},
    {"delete a formula", true, deleteFormula},
    {"move a folder", true, moveFolder},
    {"paste a folder", true, pasteFolder},
    {"paste a formula", true, pasteFormula},
    {"add a picture", true, [](Trial& on) { return storePicture(on, on.shear); }},
    {"replace a picture", true, [](Trial& on) { return storePicture(on, on.bending); }},
    {"delete a picture", true, [](Trial& on) { return on.pictures.remove(*on.listed); }},
    {"open", false, open},
    {"copy a folder", false, copyFolder},
    {"copy a picture", false, copyPicture},
};

/// What is in the way for as long as it lives.
using Obstacle = std::shared_ptr<void>;

/// Another program that is in the middle of something with the library.
Obstacle otherProgram(const char* what, const QString& library) {
    auto program =
        std::make_shared<LibraryProcess>(QStringList{QString::fromLatin1(what), library});
    EXPECT_FALSE(program->readLine().isEmpty());
    return program;
}

/// In the place of the journal, either a link that leads nowhere: the open library can be read, but
/// its journal not be made; or a folder, which looks like the journal of a killed program and
/// cannot be read as one.
Obstacle inPlaceOfTheJournal(bool isFolder, const QString& library) {
    const QString journal = journalOf(library);
    EXPECT_TRUE(isFolder ? QDir().mkdir(journal) : QFile::link(u"/no/such/file"_s, journal));
    return {nullptr, [=](void*) { EXPECT_EQ(std::remove(qPrintable(journal)), 0); }};
}

/// A library that is opened while it is there is open for reading.
Obstacle readOnly(const QString& library) {
    auto folder = std::make_shared<ReadOnlyFolder>(QFileInfo(library).path(), library);
    return folder->readOnly() ? folder : inPlaceOfTheJournal(false, library);
}

const struct {
    const char* name;
    std::function<Obstacle(const QString&)> put;
    bool allowsReading;
} kObstacles[] = {
    {"locked", std::bind_front(otherProgram, "lock"), false},
    {"locked for writing", std::bind_front(otherProgram, "write"), true},
    {"locked at the commit", std::bind_front(otherProgram, "read"), true},
    {"no journal", std::bind_front(inPlaceOfTheJournal, false), true},
    {"no reading", std::bind_front(inPlaceOfTheJournal, true), false},
    {"read-only", readOnly, true},
};

TEST(Obstacles, FailWhatTheyAreInTheWayOfWithEverythingAsItWas) {
    for (const auto& [name, writes, run] : kOperations) {
        Trial on;
        const QStringList before = on.everything();
        for (const auto& each : kObstacles) {
            SCOPED_TRACE(std::string(name) + ", " + each.name);
            {
                const Obstacle obstacle = each.put(on.first.path());
                const bool isLink = QFileInfo(journalOf(on.first.path())).isSymLink();
                // An Access file is not read with a link in the place of its journal.
                const bool isRefused = isLink && (run == open || isAccessTested());
                EXPECT_EQ(run(on), !writes && each.allowsReading && !isRefused);
            }
            on.expectSound();
            EXPECT_TRUE(on.library.open(1));
            if (writes) {
                EXPECT_EQ(on.everything(), before);
            }
        }
        EXPECT_TRUE(run(on)) << name;
        on.expectSound();
        EXPECT_EQ(on.everything() == before, !writes) << name;
    }
}

/// The room grows from nothing to what is needed, so that each thing that is written is the first
/// to be refused once: in the journal, in the library and in the working files.
TEST(Obstacles, AFullDiskStopsWhatWritesAnywhereWithoutHarm) {
    constexpr qint64 kPage = 4096;
    for (const auto& [name, writes, run] : kOperations) {
        Trial on;
        const QStringList before = on.everything();
        qint64 room = 0;
        for (bool done = !writes; !done && !testing::Test::HasFailure(); room += kPage) {
            SCOPED_TRACE(name + std::to_string(room));
            {
                const FileLimit limit(room);
                done = run(on);
            }
            on.expectSound();
            if (!done) {
                EXPECT_EQ(on.everything(), before);
            }
        }
        EXPECT_TRUE(!writes || room > 2 * kPage) << name;
    }
}

/// Records the changes to libraries, whatever their format.
class CrashRecorder {
  public:
    CrashRecorder() {
        isAccessTested() ? static_cast<void>(pages_.emplace())
                         : static_cast<void>(files_.emplace());
    }
    const std::vector<FileChange>& changes() const {
        return pages_ ? pages_->changes : files_->changes();
    }

  private:
    std::optional<FileRecorder> files_;
    std::optional<PageRecorder> pages_;
};

/// Everything that a library can hold after a crash which left some of `changes`; `count` receives
/// how many disks there can be then.
QSet<QStringList> contentsAfterCrashes(const QString& library, const QByteArray& before,
                                       const std::vector<FileChange>& changes, int& count) {
    TestLibrary after;
    QSet<QStringList> contents;
    count = forEachCrash({{library, before}}, changes, [&](const Disk& disk) {
        after.connection().close();
        for (const QString& each : {library, journalOf(library)}) {
            const QString path = after.path() + each.mid(library.size());
            QFile::remove(path);
            if (disk.contains(each)) {
                after.addFile(QFileInfo(path).fileName(), disk[each]);
            }
        }
        after.connection().open(after.path());
        EXPECT_EQ(after.connection().damages(), QStringList());
        contents.insert(after.content());
    });
    return contents;
}

TEST(Obstacles, ACrashAnywhereLeavesWhatWasOrWhatIsThenInTheLibrary) {
    for (const auto& [name, writes, run] : kOperations) {
        SCOPED_TRACE(name);
        Trial on;
        const QStringList before = on.first.content();
        const QByteArray file = fileContent(on.first.path());
        std::optional<CrashRecorder> recorder(std::in_place);
        on.library.close();
        EXPECT_TRUE(on.library.open(1));
        EXPECT_TRUE(run(on));
        on.library.close();
        const std::vector<FileChange> changes = recorder->changes();
        recorder.reset();
        int crashes = 0;
        EXPECT_EQ(contentsAfterCrashes(on.first.path(), file, changes, crashes),
                  (QSet<QStringList>{before, on.first.content()}));
        EXPECT_EQ(crashes > 20, writes);
    }
}

/// A filter is saved, what is pending committed; then one is saved and taken back.
TEST(Obstacles, ACrashWhileThePropertiesAreEditedLeavesEachStepWholeOrUndone) {
    TestLibrary library;
    const qint32 formula = library.addFormula(0, u"弯曲"_s);
    library.addProperty(1, u"形"_s, 0, formula, NodeTypeFormula);
    const QByteArray file = fileContent(library.path());
    QSet<QStringList> steps{library.content()};
    const QTemporaryDir own;
    std::optional<CrashRecorder> recorder(std::in_place);
    for (const bool isCommitted : {true, false}) {
        PropertySession session(own.path() + u'/', library.funcs());
        ASSERT_EQ(session.SetConnection(library.folder(), library.fileName(), {}), QString());
        ASSERT_EQ(session.InitForm(formula, NodeTypeFormula), QString());
        EXPECT_TRUE(
            session.saveFilter(1, parseCondition(isCommitted ? u"a = 1"_s : u"b > 2"_s).tree)
                .isDone);
        steps.insert(library.content());
        session.rename(1, u"新"_s);
        session.rename(*session.add(), u"另"_s);
        EXPECT_EQ(isCommitted ? session.commit() : session.cancel(), QString());
        steps.insert(library.content());
    }
    const std::vector<FileChange> changes = recorder->changes();
    recorder.reset();
    int crashes = 0;
    EXPECT_EQ(contentsAfterCrashes(library.path(), file, changes, crashes), steps);
    EXPECT_EQ(steps.size(), 4);
}

}  // namespace
}  // namespace varo::test
