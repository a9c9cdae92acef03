#include "library/text_error.h"
#include "library_files.h"

namespace varo {
namespace {

struct WrongText {
    const char* name;
    QByteArray text;
    int line;
    int column;
    const char* message;  ///< a part of it
};

void PrintTo(const WrongText& wrong, std::ostream* out) {
    *out << wrong.name;
}

class BuildErrors : public LibraryFiles, public testing::WithParamInterface<WrongText> {};

TEST_P(BuildErrors, AreReportedWithTheirPlaceAndLeaveTheOldFile) {
    build(QStringLiteral("a.mdb"), "[[folder]]\nname = \"old\"\n");
    const QByteArray before = read(QStringLiteral("a.mdb"));
    write(QStringLiteral("no_picture.jpg"), "plain text");
    write(QStringLiteral("empty.bmp"), "");
    write(QStringLiteral("broken.svg"), "<svg");
    const QString text = write(QStringLiteral("wrong.toml"), GetParam().text);
    const QStringList filesBefore = filesInFolder();
    try {
        buildLibrary(text, path(QStringLiteral("a.mdb")));
        FAIL() << "the text was accepted";
    } catch (const TextError& error) {
        const std::string place = text.toStdString() + ":" + std::to_string(GetParam().line) + ":" +
                                  std::to_string(GetParam().column) + ": ";
        EXPECT_EQ(error.description().toStdString().substr(0, place.size()), place)
            << error.description().toStdString();
        EXPECT_TRUE(error.description().contains(QString::fromUtf8(GetParam().message)))
            << error.description().toStdString();
    }
    EXPECT_EQ(read(QStringLiteral("a.mdb")), before);
    EXPECT_EQ(filesInFolder(), filesBefore);
}

const QByteArray formulaWith = "[[formula]]\nname = \"f\"\n";

INSTANTIATE_TEST_SUITE_P(
    Texts, BuildErrors,
    testing::Values(
        WrongText{"Syntax", "[[folder]]\nname = \"a\n", 2, 10, "string"},
        WrongText{"NotUtf8", "[[folder]]\nname = \"\xFF\"\n", 2, 8, "utf-8"},
        WrongText{"UnknownTable", "[[folders]]\nname = \"a\"\n", 1, 3, "no key \"folders\""},
        WrongText{"UnknownKey", "[[folder]]\nname = \"a\"\n\n[[folder]]\nnmae = \"b\"\n", 5, 1,
                  "[[folder]] has no key \"nmae\""},
        WrongText{"NotATableArray", "[folder]\nname = \"a\"\n", 1, 1, "[[folder]]"},
        WrongText{"ArrayOfNumbers", "folder = [1]\n", 1, 11, "else than tables"},
        WrongText{"NoName", "\n[[folder]]\nid = 1\n", 2, 1, "needs \"name\""},
        WrongText{"NumberForText", "[[folder]]\nname = 5\n", 2, 8, "\"name\" must be a text"},
        WrongText{"TextForNumber", "[[folder]]\nname = \"a\"\nid = \"1\"\n", 3, 6,
                  "\"id\" must be a whole number"},
        WrongText{"FractionForNumber", "[[folder]]\nname = \"a\"\norder = 1.5\n", 3, 9,
                  "\"order\" must be a whole number"},
        WrongText{"NumberTooLarge", "[[folder]]\nname = \"a\"\nid = 2147483648\n", 3, 6, "32 bits"},
        WrongText{"FolderTwice",
                  "[[folder]]\nid = 7\nname = \"a\"\n[[folder]]\nid = 7\nname = \"b\"\n", 5, 6,
                  "id 7 is used twice, first on line 2"},
        WrongText{"FormulaTwice", formulaWith + "id = 3\n" + formulaWith + "id = 3\n", 6, 6,
                  "twice"},
        WrongText{"NoOrderLeft",
                  "[[folder]]\nname = \"a\"\norder = 2147483647\n[[folder]]\nname = \"b\"\n", 4, 1,
                  "no order number"},
        WrongText{"ValueNotText", formulaWith + "values = { a = \"1\", b = 2 }\n", 3, 25,
                  "\"b\" must be a text"},
        WrongText{"ValuesNoTable", formulaWith + "values = \"a\"\n", 3, 10, "must be a table"},
        WrongText{"ValueTwice", formulaWith + "values = { a = \"1\", a = \"2\" }\n", 3, 25,
                  "cannot redefine"},
        WrongText{"ZeroCharacter", "[[folder]]\nname = \"a\\u0000b\"\n", 2, 8, "U+0000"},
        WrongText{"PropertyWithoutNode", "[[property]]\nid = 1\nname = \"a\"\nnode_type = 1\n", 1,
                  1, "needs \"node\""},
        WrongText{"PictureNoTable", formulaWith + "picture = \"a.jpg\"\n", 3, 11,
                  "must be a table"},
        WrongText{"PictureFromNowhere", formulaWith + "picture = { width = 3 }\n", 3, 11,
                  "either \"file\" or \"base64\""},
        WrongText{"PictureFromTwoPlaces",
                  formulaWith + "picture = { file = \"a\", base64 = \"AA==\" }\n", 3, 11, "either"},
        WrongText{"NotBase64", formulaWith + "picture = { base64 = \"A*==\" }\n", 3, 22, "base64"},
        WrongText{"EmptyBase64", formulaWith + "picture = { base64 = \"\" }\n", 3, 22, "empty"},
        WrongText{"SizeOfBase64", formulaWith + "picture = { base64 = \"AA==\", width = 4 }\n", 3,
                  38, "\"width\""},
        WrongText{"MissingFile", formulaWith + "picture = { file = \"nowhere.jpg\" }\n", 3, 20,
                  "nowhere.jpg"},
        WrongText{"EmptyFile", formulaWith + "picture = { file = \"empty.bmp\" }\n", 3, 20,
                  "empty"},
        WrongText{"FolderAsFile", formulaWith + "picture = { file = \".\" }\n", 3, 20, "\".\""},
        WrongText{"NoPictureInFile", formulaWith + "picture = { file = \"no_picture.jpg\" }\n", 3,
                  20, "no bmp, jpg, png or wmf"},
        WrongText{"SizeOfReadyPicture",
                  formulaWith + "picture = { file = \"no_picture.jpg\", width = 3 }\n", 3, 20,
                  ".svg"},
        WrongText{"DrawingWithoutFormat", formulaWith + "picture = { file = \"broken.svg\" }\n", 3,
                  20, "needs \"format\""},
        WrongText{"UnknownFormat",
                  formulaWith + "picture = { file = \"broken.svg\", format = \"gif\" }\n", 3, 43,
                  "\"jpg\" or \"bmp\""},
        WrongText{"BrokenDrawing",
                  formulaWith + "picture = { file = \"broken.svg\", format = \"bmp\" }\n", 3, 20,
                  "no SVG drawing"},
        WrongText{
            "SideTooLong",
            formulaWith + "picture = { file = \"broken.svg\", format = \"bmp\", width = 8193 }\n",
            3, 20, "1 to 8192"}),
    [](const auto& wrong) { return std::string(wrong.param.name); });

using BuildFiles = LibraryFiles;

TEST_F(BuildFiles, AMissingTextIsAnErrorAndMakesNoFile) {
    EXPECT_THROW(buildLibrary(path(QStringLiteral("none.toml")), path(QStringLiteral("a.mdb"))),
                 TextError);
    EXPECT_TRUE(filesInFolder().isEmpty());
}

TEST_F(BuildFiles, AMissingTargetFolderIsAnError) {
    const QString text = write(QStringLiteral("a.toml"), "");
    EXPECT_THROW(buildLibrary(text, path(QStringLiteral("none/a.mdb"))), TextError);
}

TEST_F(BuildFiles, AFolderIsNotReplaced) {
    const QString text = write(QStringLiteral("a.toml"), "");
    ASSERT_TRUE(QDir().mkdir(path(QStringLiteral("a.mdb"))));
    EXPECT_THROW(buildLibrary(text, path(QStringLiteral("a.mdb"))), TextError);
    EXPECT_EQ(filesInFolder(), QStringList({QStringLiteral("a.mdb"), QStringLiteral("a.toml")}));
}

TEST_F(BuildFiles, TheTextIsNotReplacedByItsLibrary) {
    const QString text = write(QStringLiteral("a.toml"), "[[folder]]\nname = \"a\"\n");
    EXPECT_THROW(buildLibrary(text, text), TextError);
    EXPECT_EQ(read(QStringLiteral("a.toml")), "[[folder]]\nname = \"a\"\n");
}

TEST_F(BuildFiles, ABuildReplacesTheOldLibraryAndLeavesNothingElse) {
    build(QStringLiteral("a.mdb"), "[[folder]]\nname = \"old\"\n");
    build(QStringLiteral("a.mdb"), "[[folder]]\nname = \"new\"\n");
    EXPECT_EQ(rowsOf(path(QStringLiteral("a.mdb")), QStringLiteral("select Name from Tree")),
              QStringList(QStringLiteral("new")));
    EXPECT_EQ(filesInFolder(),
              QStringList({QStringLiteral("a.mdb"), QStringLiteral("a.mdb.toml")}));
}

}  // namespace
}  // namespace varo
