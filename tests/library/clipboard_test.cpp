#include "library/folders.h"
#include "library/open_libraries.h"
#include "store/attempt.h"
#include "support/no_waiting.h"

#include <sqlite3.h>

namespace varo::test {
namespace {

class CopyAndPaste : public testing::Test, protected OpenLibraries {
  protected:
    void copy(qint32 folder) { ASSERT_TRUE(clipboard.captureFolders(library, folder, messages)); }
    PastedFolders paste(qint32 target, bool withSubfolders = true, int levels = kMaxFolderDepth) {
        return clipboard.insertFolders(library, target, withSubfolders, levels, messages);
    }
    void copyFormula(qint32 id) { clipboard.captureFormula(library, record(id), messages); }
    PastedFormula pasteFormula(qint32 folder) {
        return clipboard.insertFormula(library, folder, messages);
    }
    /// Kind and bytes of the picture of the formula that was added last.
    static QString lastPicture(TestLibrary& from) {
        return from.rows(u"Select PicType, hex(Pic) From Formula Order By ID"_s).last();
    }

    const QString top = u"梁(弯曲,剪切,扭转)"_s;
    const QString whole = top + u"[简支(挠度) 悬臂()]"_s;
    const QString rest = u" 柱(稳定) 板()"_s;
};

TEST_F(CopyAndPaste, AFolderIsPastedWithOrWithoutWhatIsInIt) {
    const QString copies = u"梁 简支 悬臂"_s;
    const QString pastedColumn = u" 柱(稳定)"_s;
    const struct {
        qint32 copied;
        int library;
        qint32 target;
        bool withSubfolders;
        QString names;   ///< of the new folders
        QString stored;  ///< in the library of the target
    } cases[] = {
        {beams, 2, 0, true, copies, u"管(流量) "_s + whole},
        {beams, 2, pipes, false, u"梁"_s, u"管(流量)[%1] "_s.arg(top) + whole},
        {columns, 1, 0, true, u"柱"_s, whole + rest + pastedColumn},
        {beams, 1, beams, true, copies,
         top + u"[简支(挠度) 悬臂() %1]"_s.arg(whole) + rest + pastedColumn},
        {columns, 1, cantilever, false, u"柱"_s,
         top + u"[简支(挠度) 悬臂()[柱(稳定)] %1]"_s.arg(whole) + rest + pastedColumn},
    };
    for (const auto& each : cases) {
        ASSERT_TRUE(library.open(1));
        copy(each.copied);
        EXPECT_EQ(clipboard.holdsSubfolders(), each.copied == beams);
        ASSERT_TRUE(library.open(each.library));
        const PastedFolders pasted = paste(each.target, each.withSubfolders);
        EXPECT_TRUE(pasted.complete);
        QStringList names;
        for (const FolderRows::Row& row : pasted.rows.rows()) {
            names.append(pasted.rows.name(row).toString());
        }
        EXPECT_EQ(names.join(u' '), each.names);
        EXPECT_EQ(pasted.rows.rows().front().parentId, each.target);
        EXPECT_EQ(outline(each.library == 1 ? first : second), each.stored);
    }
    EXPECT_EQ(told(), QStringList());
}

TEST_F(CopyAndPaste, WhatIsPastedIsAsItWasWhenItWasCopied) {
    copy(beams);
    EXPECT_TRUE(deleteSubtree(library, beams).complete);
    EXPECT_TRUE(paste(plates).complete);
    EXPECT_TRUE(paste(plates).complete);
    EXPECT_EQ(outline(first), u"柱(稳定) 板()[%1 %1]"_s.arg(whole));
    copyFormula(stability);
    EXPECT_TRUE(library.funcs().EditAllFormulaInfo(stability, u"失稳"_s, u"x"_s, {}, 0,
                                                   library.connection()));
    EXPECT_EQ(pasteFormula(columns).inserted, InsertedFormula::Whole);
    EXPECT_EQ(first.rows(u"Select Name, Formula From Formula Where PID = 2 Order By OrderID"_s),
              (QStringList{u"失稳|x"_s, u"稳定|P/A"_s}));
}

TEST_F(CopyAndPaste, AFormulaIsPastedBehindTheOthersWithItsTextsOnly) {
    const QString hostile = u"'\"%_;\\ --"_s;
    const qint32 source = first.addFormula(0, hostile, u"2*\"%'\""_s, hostile);
    first.addValue(u"v"_s, source, u"1"_s);
    first.addProperty(1, u"形"_s, 0, source, NodeTypeFormula);
    copyFormula(source);
    EXPECT_TRUE(clipboard.holdsFormula());
    EXPECT_FALSE(clipboard.holdsFolders());
    for (const auto& [number, target] : {std::pair{1, beams}, {1, 0}, {1, 0}, {2, pipes}}) {
        ASSERT_TRUE(library.open(number));
        TestLibrary& stored = number == 1 ? first : second;
        const PastedFormula pasted = pasteFormula(target);
        EXPECT_EQ(pasted.inserted, InsertedFormula::Whole);
        EXPECT_EQ(pasted.formula.FormulaPID, target);
        EXPECT_EQ(
            stored
                .rows(u"Select ID, Name, Formula, Memo From Formula Where PID = %1 "
                      "Order By OrderID"_s.arg(target))
                .last(),
            QString::number(pasted.formula.FormulaID) + u'|' + hostile + u"|2*\"%'\"|"_s + hostile);
    }
    EXPECT_EQ(first.rows(u"Select Count(*) From RecentVar"_s), QStringList{u"1"_s});
    EXPECT_EQ(first.rows(u"Select Count(*) From Property"_s), QStringList{u"1"_s});
}

TEST_F(CopyAndPaste, PicturesGoAlong) {
    const QByteArray picture = pictureBytes(40'000);
    const QString hex = u"2|"_s + QString::fromLatin1(picture.toHex().toUpper());
    const QString copied = workFile(u"%1PastePic.bmp"_s.arg(deflection));
    first.addPicture(deflection, picture);
    for (const bool fileIsGone : {false, true}) {
        const clsFormulaInfo listed = record(deflection);
        if (fileIsGone) {
            ASSERT_TRUE(QFile::remove(listed.FormulaPicPath));
        }
        clipboard.captureFormula(library, listed, messages);
        EXPECT_EQ(fileContent(copied), picture) << fileIsGone;
    }
    library.funcs().DelPicture(deflection, library.connection());
    const PastedFormula pasted = pasteFormula(plates);
    EXPECT_EQ(lastPicture(first), hex);
    EXPECT_EQ(fileContent(pasted.formula.FormulaPicPath), picture);
    EXPECT_EQ(pasted.formula.FormulaPicPath, files.listedPicture(pasted.formula.FormulaID));

    first.addPicture(deflection, picture);
    copy(simple);
    EXPECT_TRUE(paste(0).complete);
    EXPECT_EQ(lastPicture(first), hex);
    // Without its file a picture stays away, and its type tells that there was one.
    ASSERT_TRUE(QFile::remove(copied));
    EXPECT_TRUE(paste(0).complete);
    EXPECT_EQ(lastPicture(first), u"2|"_s);
    copyFormula(deflection);
    ASSERT_TRUE(QFile::remove(copied));
    EXPECT_TRUE(pasteFormula(0).formula.FormulaPicPath.isEmpty());
    EXPECT_EQ(lastPicture(first), u"2|"_s);
    EXPECT_EQ(told(), QStringList());
    copyFormula(deflection);
    clipboard.clear();
    EXPECT_FALSE(QFile::exists(copied));
}

TEST_F(CopyAndPaste, AStepThatFailsEndsThePasteAndLeavesWhatItDid) {
    const struct {
        const char *step, *table;
        QString when, pasted;
        int folders;
    } cases[] = {
        {"Insert", "Tree", u"new.Name = '梁'"_s, {}, 0},
        {"Insert", "Tree", u"new.Name = '悬臂'"_s, top + u"[简支(挠度)]"_s, 2},
        {"Insert", "Formula", u"new.Name = '剪切'"_s, u"梁(弯曲)"_s, 1},
        {"Update", "Formula", u"old.Name = '剪切'"_s, u"梁(弯曲,剪切)"_s, 1},
    };
    first.addPicture(shear, pictureBytes(20'000));
    copy(beams);
    for (const auto& each : cases) {
        first.refuse(each.step, each.table, each.when);
        const PastedFolders pasted = paste(plates);
        first.allow();
        EXPECT_FALSE(pasted.complete);
        EXPECT_EQ(pasted.rows.rows().size(), each.folders);
        EXPECT_EQ(outline(first, plates), each.pasted) << each.when.toStdString();
        first.connection().execute(u"Delete From Tree Where PID = ?"_s, {plates});
    }
    for (const auto& [levels, pasted] : {std::pair{0, QString()}, {1, top}, {2, whole}}) {
        EXPECT_EQ(paste(plates, true, levels).complete, levels == 2);
        EXPECT_EQ(outline(first, plates), pasted) << "as deep as the tree can show";
        first.connection().execute(u"Delete From Tree Where PID = ?"_s, {plates});
    }
    copyFormula(shear);
    for (const auto& [step, outcome] : {std::pair{"Insert", InsertedFormula::None},
                                        {"Update", InsertedFormula::WithoutPicture}}) {
        first.refuse(step, "Formula");
        EXPECT_EQ(pasteFormula(cantilever).inserted, outcome);
        first.allow();
    }
    EXPECT_EQ(outline(first, beams), u"简支(挠度) 悬臂(剪切)"_s);
}

TEST_F(CopyAndPaste, WhatCannotBeReadLeavesNothingToPaste) {
    copy(columns);
    EXPECT_FALSE(clipboard.captureFolders(library, 4711, messages)) << "no such folder";
    for (const auto& [table, column] : {std::pair{"Formula", "Memo"}, {"Tree", "Name"}}) {
        copy(columns);
        const MissingColumn missing(first, table, column);
        EXPECT_FALSE(clipboard.captureFolders(library, beams, messages));
        EXPECT_FALSE(clipboard.holdsFolders());
        EXPECT_FALSE(clipboard.holdsFormulas());
    }
    EXPECT_TRUE(workFiles().isEmpty());
}

/// What is done before each statement on connections that are opened while `watch` is registered.
std::function<void(const QByteArray&)> beforeStatement;

int watch(sqlite3* database, char**, const sqlite3_api_routines*) {
    const auto started = [](unsigned, void*, void*, void* text) {
        beforeStatement(static_cast<const char*>(text));
        return 0;
    };
    return sqlite3_trace_v2(database, SQLITE_TRACE_STMT, started, nullptr);
}

TEST_F(CopyAndPaste, ACopyIsOneStateOfTheLibraryWhateverOthersWriteMeanwhile) {
    const NoWaiting now;
    data::Connection other;
    other.open(first.path());
    int listings = 0;
    beforeStatement = [&](const QByteArray& statement) {
        if (statement.contains("From Formula") && ++listings == 2) {
            attempt([&] { other.execute(u"Update Formula Set PID = 2"_s); });
        }
    };
    sqlite3_auto_extension(reinterpret_cast<void (*)()>(&watch));
    library.close();
    ASSERT_TRUE(library.open(1));
    copy(beams);
    EXPECT_EQ(listings, 3);
    EXPECT_TRUE(paste(cantilever).complete);
    EXPECT_EQ(outline(first, cantilever), whole);
    library.close();
    sqlite3_cancel_auto_extension(reinterpret_cast<void (*)()>(&watch));
}

}  // namespace
}  // namespace varo::test
