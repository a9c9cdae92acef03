// Operations on a library that cannot be read or written, whole or in part, at that moment.

#include "library/folders.h"
#include "library/open_libraries.h"
#include "library/property_search.h"
#include "library/stored_values.h"
#include "support/file_limit.h"
#include "support/no_waiting.h"
#include "support/process.h"
#include "support/read_only_folder.h"

namespace varo::test {
namespace {

class Trial;

/// Does something with the library. Returns whether all of it was done; what the contract says
/// otherwise is checked within.
struct Operation {
    const char* name;
    bool (*run)(Trial& on);
};

void PrintTo(const Operation& operation, std::ostream* out) {
    *out << operation.name;
}

/// The first library with pictures, properties and values; 梁 and 剪切 have been copied, and so has
/// a picture. Nobody waits for locks.
class Trial : private NoWaiting, public testing::TestWithParam<Operation>, public OpenLibraries {
  public:
    Trial() {
        first.addPicture(bending, pictureBytes(7000));
        first.addPicture(deflection, pictureBytes(7000));
        first.addProperty(1, u"形"_s, 0, simple, NodeTypeFolder);
        first.addProperty(2, u"形"_s, 0, deflection, NodeTypeFormula);
        first.addValue(u"M"_s, bending, u"1"_s);
        chosen = first.addFile(u"chosen.bmp"_s, pictureBytes(9000));
        library.close();  // it was opened by someone who waits
        EXPECT_TRUE(library.open(1));
        EXPECT_TRUE(clipboard.captureFolders(library, beams, messages));
        listed = std::make_unique<clsFormulaInfo>(record(bending));
        copiedFormula.captureFormula(library, record(shear), messages);
        EXPECT_TRUE(pictures.copyOut(*listed));
    }

    clsDBFuncs& funcs = library.funcs();
    data::Connection& opened = library.connection();
    qint32 newId = 0;
    Clipboard copiedFormula{files};
    QString chosen;
    std::unique_ptr<clsFormulaInfo> listed;

  protected:
    bool run() { return GetParam().run(*this); }

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
        EXPECT_NO_THROW(first.connection().execute(u"Begin Exclusive"_s));
        EXPECT_NO_THROW(first.connection().execute(u"Rollback"_s));
        EXPECT_EQ(first.connection().damages(), QStringList());
    }
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

/// A link that leads nowhere: the library can be read, but its journal not be made.
Obstacle noJournal(const QString& library) {
    const QString journal = library + u"-journal"_s;
    EXPECT_TRUE(QFile::link(u"/no/such/file"_s, journal));
    return {nullptr, [=](void*) { EXPECT_TRUE(QFile::remove(journal)); }};
}

/// A folder that looks like the journal of a killed program and cannot be read as one.
Obstacle noReading(const QString& library) {
    const QString journal = library + u"-journal"_s;
    EXPECT_TRUE(QDir().mkdir(journal));
    return {nullptr, [=](void*) { EXPECT_TRUE(QDir().rmdir(journal)); }};
}

class Writing : public Trial {};
class Reading : public Trial {};

const struct {
    const char* name;
    std::function<Obstacle(const QString&)> put;
    bool allowsReading;
} kObstacles[] = {
    {"locked", std::bind_front(otherProgram, "lock"), false},
    {"locked for writing", std::bind_front(otherProgram, "write"), true},
    {"locked at the commit", std::bind_front(otherProgram, "read"), true},
    {"no journal", noJournal, true},
    {"no reading", noReading, false},
};

TEST_P(Writing, FailsWithEverythingAsItWas) {
    const QStringList before = everything();
    for (const auto& each : kObstacles) {
        SCOPED_TRACE(each.name);
        {
            const Obstacle obstacle = each.put(first.path());
            EXPECT_FALSE(run());
        }
        expectSound();
        EXPECT_EQ(everything(), before);
    }
    EXPECT_TRUE(run()) << "with nothing in the way";
    expectSound();
    EXPECT_NE(everything(), before);
}

TEST_P(Reading, FailsOnlyWhereNothingCanBeRead) {
    const QStringList before = everything();
    for (const auto& each : kObstacles) {
        SCOPED_TRACE(each.name);
        {
            const Obstacle obstacle = each.put(first.path());
            EXPECT_EQ(run(), each.allowsReading);
        }
        expectSound();
        EXPECT_TRUE(library.open(1));
    }
    EXPECT_TRUE(run());
    EXPECT_EQ(everything(), before);
}

TEST_P(Writing, FailsInALibraryThatIsOpenForReading) {
    library.close();
    const QStringList before = everything();
    {
        const ReadOnlyFolder folder(first.folder(), first.path());
        if (!folder.readOnly()) {
            GTEST_SKIP() << "no way to make a folder read-only for this user";
        }
        EXPECT_TRUE(library.open(1));
        EXPECT_FALSE(run());
        library.close();
    }
    EXPECT_EQ(everything(), before);
}

/// The room grows from nothing to what is needed, so that each thing that is written is the first
/// to be refused once: in the journal, in the library and in the working files.
TEST_P(Writing, IsStoppedByAFullDiskAnywhereWithoutHarm) {
    constexpr qint64 kPage = 4096;
    const QStringList before = everything();
    qint64 room = 0;
    for (bool done = false; !done && !HasFailure(); room += kPage) {
        SCOPED_TRACE(room);
        {
            const FileLimit limit(room);
            done = run();
        }
        expectSound();
        if (!done) {
            EXPECT_EQ(everything(), before);
        }
    }
    EXPECT_GT(room, 2 * kPage);
}

bool insertedWhole(InsertedFormula inserted) {
    EXPECT_NE(inserted, InsertedFormula::WithoutPicture);
    return inserted == InsertedFormula::Whole;
}

bool insertFormula(Trial& on) {
    clsFormulaInfo formula;
    return insertedWhole(varo::insertFormula(on.library, on.funcs, formula, formula.FormulaID));
}

bool storeValue(Trial& on, const QString& variable) {
    return StoredValues(on.library).store(variable, on.bending, u"2"_s).failure.isEmpty();
}

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
    return insertedWhole(
        on.copiedFormula.insertFormula(on.library, on.beams, on.messages).inserted);
}

bool storePicture(Trial& on, qint32 formula) {
    PictureCopy copy(on.pictures.fileOf(formula));
    return copy.take(on.chosen) && on.pictures.store(formula, copy, on.messages);
}

const Operation kWrites[] = {
    {"NewFolder", [](Trial& on) { return on.funcs.AddNewFolder(1, u"拱"_s, on.newId, on.opened); }},
    {"NewFormula", insertFormula},
    {"RenameFolder", [](Trial& on) { return on.funcs.RenameFolder(1, u"拱"_s, on.opened); }},
    {"RenameFormula", [](Trial& on) { return on.funcs.RenameFormula(1, u"切"_s, on.opened); }},
    {"EditFormula", [](Trial& on) { return on.funcs.EditFormulaExpression(1, u"1"_s, on.opened); }},
    {"EditMemo", [](Trial& on) { return on.funcs.EditFormulaMemo(1, u"1"_s, on.opened); }},
    {"EditValue", [](Trial& on) { return storeValue(on, u"M"_s); }},
    {"NewValue", [](Trial& on) { return storeValue(on, u"W"_s); }},
    {"DeleteFolder", deleteFolder},
    {"DeleteFormula", deleteFormula},
    {"MoveFolder", moveFolder},
    {"MoveFormula",
     [](Trial& on) { return on.funcs.ExchangeOrderID(1, 2, u"Formula"_s, on.opened); }},
    {"PasteFolder", pasteFolder},
    {"PasteFormula", pasteFormula},
    {"AddPicture", [](Trial& on) { return storePicture(on, on.shear); }},
    {"ReplacePicture", [](Trial& on) { return storePicture(on, on.bending); }},
    {"DeletePicture", [](Trial& on) { return on.pictures.remove(*on.listed); }},
};

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

bool readValues(Trial& on) {
    on.library.variables().Clear();
    const auto values = StoredValues(on.library).valuesOf({u"M"_s, u"W"_s}, on.bending);
    EXPECT_EQ(values[0].isRead, values[1].isRead);
    EXPECT_EQ(values[0].value, values[0].isRead ? u"1"_s : u"0"_s);
    return values[0].isRead;
}

bool readFormulas(Trial& on) {
    colFormulaInfo formulas;
    FormulaReader reader(on.library, on.files, &WorkingFiles::listedPicture, on.messages);
    return reader.read(on.beams, formulas) && formulas.Count() == 3;
}

bool copyPicture(Trial& on) {
    clsFormulaInfo withoutFile = *on.listed;
    withoutFile.FormulaPicPath.clear();
    return on.pictures.copyOut(withoutFile);
}

bool locate(Trial& on) {
    struct : PropertySource {
        QString propertyValue(const QString&) override { return {}; }
    } host;
    colLocateProp located;
    const QString failure = PropertySearch(on.libraries, host).run(u"形"_s, located);
    EXPECT_EQ(located.Count(), failure.isEmpty() ? 2 : 0);
    return failure.isEmpty();
}

const Operation kReads[] = {{"Open", open},
                            {"CopyFolder", copyFolder},
                            {"ReadFormulas", readFormulas},
                            {"ReadValues", readValues},
                            {"CopyPicture", copyPicture},
                            {"Locate", locate}};

INSTANTIATE_TEST_SUITE_P(Rules, Writing, testing::ValuesIn(kWrites),
                         [](const auto& each) { return each.param.name; });
INSTANTIATE_TEST_SUITE_P(Rules, Reading, testing::ValuesIn(kReads),
                         [](const auto& each) { return each.param.name; });

}  // namespace
}  // namespace varo::test
