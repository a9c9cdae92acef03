#include "library/limits.h"
#include "library/open_libraries.h"
#include "store/picture_transfer.h"

namespace varo::test {
namespace {

/// 弯曲 has a picture, which is shown.
class Pictures : public testing::Test, protected OpenLibraries {
  protected:
    Pictures() {
        first.addPicture(bending, old);
        listed = std::make_unique<clsFormulaInfo>(record(bending));
    }

    bool list(colFormulaInfo& formulas) {
        const auto pictureOf = [this](qint32 id) { return files.listedPicture(id); };
        return readFormulas(library, beams, FormulaTexts::Shown, pictureOf, formulas);
    }
    bool store(qint32 formula, const QByteArray& bytes) {
        PictureCopy copy(pictures.fileOf(formula));
        return copy.take(first.addFile(u"chosen"_s, bytes)) &&
               pictures.store(formula, copy, messages);
    }
    QString stored(qint32 formula) {
        return first.rows(u"Select PicType, hex(Pic) From Formula Where ID = %1"_s.arg(formula))
            .value(0);
    }
    static QString as(int type, const QByteArray& bytes) {
        return QString::number(type) + u'|' + QString::fromLatin1(bytes.toHex().toUpper());
    }

    const QByteArray old = pictureBytes(30'000);
    const QByteArray other = pictureBytes(20'000);
    const QString file = pictures.fileOf(bending);
    std::unique_ptr<clsFormulaInfo> listed;
};

TEST_F(Pictures, LibraryAndFileTakeAPictureTogetherOrNotAndLoseItTogether) {
    EXPECT_TRUE(store(shear, other));
    EXPECT_EQ(stored(shear), as(2, other));
    EXPECT_EQ(fileContent(pictures.fileOf(shear)), other);
    EXPECT_FALSE(store(4711, other)) << "no such formula";
    EXPECT_EQ(workFiles().size(), 2);
    ASSERT_TRUE(QFile::remove(file));
    ASSERT_TRUE(QDir().mkpath(file + u"/not empty"_s));
    EXPECT_FALSE(store(bending, other));
    EXPECT_EQ(stored(bending), as(2, old)) << "the file could not be written";
    ASSERT_TRUE(QDir(file).removeRecursively());
    EXPECT_TRUE(store(bending, other));
    EXPECT_EQ(stored(bending), as(2, other));
    EXPECT_EQ(fileContent(file), other);
    EXPECT_EQ(workFiles().size(), 2) << "no copies are left behind";
    EXPECT_TRUE(pictures.remove(*listed));
    EXPECT_EQ(stored(bending), as(0, {}));
    EXPECT_FALSE(QFile::exists(file));
}

TEST_F(Pictures, ACopyComesFromTheFileOrElseFromTheLibrary) {
    EXPECT_FALSE(pictures.holdsCopy());
    first.addPicture(bending, other);
    for (const QByteArray& content : {old, other}) {
        EXPECT_TRUE(pictures.copyOut(*listed));
        EXPECT_TRUE(pictures.holdsCopy());
        EXPECT_EQ(fileContent(workFile(u"backupPic.def"_s)), content);
        QFile::remove(file);
    }
    first.connection().execute(u"Delete From Formula"_s);
    EXPECT_FALSE(pictures.copyOut(*listed));
    EXPECT_EQ(fileContent(pictures.copiedFile()), other) << "what was there stays";
    QFile huge(first.addFile(u"huge"_s, old));
    ASSERT_TRUE(huge.resize((kPictureChunkLimit + 1) * kPictureChunk));
    PictureCopy copy(workFile(u"copy"_s));
    EXPECT_FALSE(copy.take(huge.fileName())) << "no library takes it";
    EXPECT_FALSE(QFile::exists(copy.path()));
}

TEST_F(Pictures, AreLeftInTheLibraryUntilTheyAreShownOrCopied) {
    first.addPicture(shear, other);
    first.connection().execute(u"Update Formula Set PicType = 2 Where ID = ?"_s, {torsion});
    ASSERT_TRUE(QFile::remove(file));
    colFormulaInfo formulas;
    EXPECT_TRUE(list(formulas));
    EXPECT_EQ(formulas.Find(shear)->FormulaPicPath, files.listedPicture(shear));
    EXPECT_EQ(workFiles(), QStringList());
    EXPECT_TRUE(clipboard.captureFolders(library, beams, messages));
    EXPECT_EQ(fileContent(files.copiedPicture(bending)), old);
    EXPECT_EQ(fileContent(files.copiedPicture(shear)), other);
    EXPECT_EQ(workFiles().size(), 2) << "one is empty";
    EXPECT_EQ(told(), QStringList());
    files.setFolder(workFile(u"missing"_s), {});
    EXPECT_TRUE(clipboard.captureFolders(library, beams, messages));
    EXPECT_EQ(told().size(), 1) << "once for all";
}

TEST_F(Pictures, AFormulaIsReadOnceAndShowsTheBeginningOfItsTextsButIsCopiedWhole) {
    requireSqlite();
    first.connection().execute(u"Create Table Copy As Select * From Formula"_s);
    first.connection().execute(u"Drop Table Formula"_s);
    first.connection().execute(u"Alter Table Copy Rename To Formula"_s);
    first.connection().execute(u"Insert Into Formula Select * From Formula"_s);
    const QString text = u"𝛼"_s.repeated(100'000);
    first.connection().execute(u"Update Formula Set Memo = ?, Formula = ?"_s, {text, text});
    colFormulaInfo formulas;
    EXPECT_TRUE(list(formulas));
    EXPECT_EQ(formulas.Count(), 3);
    clsFormulaInfo formula = formulas.Item(1);
    for (const QString& shown : {formula.FormulaMemo, formula.FormulaExpression}) {
        EXPECT_TRUE(shown.size() <= kShownTextLimit && shown.size() > kShownTextLimit - 3);
        EXPECT_EQ(shown, text.first(shown.size() - 1) + u'…');
    }
    EXPECT_TRUE(readWholeTexts(library, formula));
    EXPECT_EQ(formula.FormulaMemo, text);
    first.connection().execute(u"Delete From Formula"_s);
    clipboard.captureFormula(library, formulas.Item(1), messages);
    EXPECT_FALSE(clipboard.holdsFormula());
    EXPECT_EQ(told().size(), 1);
}

TEST(WorkFolders, NoTwoControlsShareOneAsLongAsFilesInItAreUsed) {
    const QTemporaryDir directory;
    const QString folder = directory.path() + u'/';
    const QString next = folder + u"made/"_s;
    const QStringList preferred{u"/dev/null/"_s, folder, next};
    const auto chosen = [&] {
        WorkingFiles files;
        files.setFolder({}, preferred);
        return files.folder();
    };
    WorkingFiles first;
    first.setFolder({}, preferred);
    EXPECT_EQ(first.folder(), folder);
    {
        WorkingFiles second;
        second.setFolder({}, preferred);
        EXPECT_EQ(second.folder(), next);
        const QString own = chosen();
        EXPECT_FALSE(own.startsWith(folder));
        EXPECT_TRUE(own.endsWith(u'/'));
        EXPECT_FALSE(QDir(own).exists()) << "it goes away";
    }
    EXPECT_EQ(chosen(), next);
    first.setFolder(directory.filePath(u"named"_s), preferred);
    EXPECT_EQ(first.listedPicture(7), folder + u"named/7TempPic.bmp"_s);
    EXPECT_EQ(chosen(), next) << "files may still lie in the first folder";
    first.discard();
    EXPECT_EQ(chosen(), folder);
}

}  // namespace
}  // namespace varo::test
