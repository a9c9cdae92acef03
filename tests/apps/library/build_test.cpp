#include "library/picture_bytes.h"
#include "library/text_error.h"
#include "library_files.h"

#include <QColor>
#include <QImage>

namespace varo {
namespace {

struct WrongText {
    QByteArray text;
    const char* place;    ///< line and column
    const char* message;  ///< a part of it
};

const WrongText wrongTexts[] = {
    {"[[folder]]\nname = 'a\n", "2:10", "string"},
    {"[[folder]]\nname = '\xFF'\n", "2:8", "utf-8"},
    {"[[folders]]\nname = 'a'\n", "1:3", "no key \"folders\""},
    {"[[folder]]\nname = 'a'\n\n[[folder]]\nnmae = 'b'\n", "5:1", "no key \"nmae\""},
    {"[folder]\nname = 'a'\n", "1:1", "[[folder]]"},
    {"folder = [1]\n", "1:11", "else than tables"},
    {"\n[[folder]]\nid = 1\n", "2:1", "needs \"name\""},
    {"[[folder]]\nname = 5\n", "2:8", "\"name\" must be a text"},
    {"[[folder]]\nname = 'a'\nid = '1'\n", "3:6", "\"id\" must be a whole number"},
    {"[[folder]]\nname = 'a'\nid = 2147483648\n", "3:6", "32 bits"},
    {"[[folder]]\nid = 7\nname = 'a'\n[[folder]]\nid = 7\nname = 'b'\n", "5:6",
     "id 7 is used twice, first on line 2"},
    {"[[folder]]\nname = 'a'\norder = 2147483647\n[[folder]]\nname = 'b'\n", "4:1", "no order"},
    {"[[formula]]\nname = 'f'\nvalues = { a = '1', b = 2 }\n", "3:25", "\"b\" must be a text"},
    {"[[formula]]\nname = 'f'\nvalues = 'a'\n", "3:10", "must be a table"},
    {"[[folder]]\nname = \"a\\u0000b\"\n", "2:8", "U+0000"},
    {"[[property]]\nid = 1\nname = 'a'\nnode_type = 1\n", "1:1", "needs \"node\""},
};

const WrongText wrongPictures[] = {
    {"width = 3", "3:11", "either \"file\" or \"base64\""},
    {"file = 'a', base64 = 'AA=='", "3:11", "either"},
    {"base64 = 'A*=='", "3:22", "base64"},
    {"base64 = ''", "3:22", "empty"},
    {"base64 = 'AA==', width = 4", "3:38", "\"width\""},
    {"file = 'nowhere.jpg'", "3:20", "nowhere.jpg"},
    {"file = 'empty.bmp'", "3:20", "empty"},
    {"file = '.'", "3:20", "\".\""},
    {"file = 'text.jpg'", "3:20", "no bmp, jpg, png or wmf"},
    {"file = 'text.jpg', width = 3", "3:20", ".svg"},
    {"file = 'broken.svg'", "3:20", "needs \"format\""},
    {"file = 'broken.svg', format = 'gif'", "3:43", "\"jpg\" or \"bmp\""},
    {"file = 'broken.svg', format = 'bmp'", "3:20", "no SVG drawing"},
    {"file = 'broken.svg', format = 'bmp', width = 8193", "3:20", "1 to 8192"},
};

class Build : public LibraryFiles {
  protected:
    void expectError(const WrongText& wrong) const {
        const QString text = write(u"text.toml"_s, wrong.text);
        try {
            buildLibrary(text, path(u"a.mdb"_s));
            ADD_FAILURE() << "accepted: " << wrong.text.toStdString();
        } catch (const TextError& error) {
            const QString place = u"%1:%2: "_s.arg(text, QLatin1StringView(wrong.place));
            EXPECT_EQ(error.description().left(place.size()), place) << wrong.text.toStdString();
            EXPECT_TRUE(error.description().contains(QLatin1StringView(wrong.message)))
                << error.description().toStdString();
        }
    }

    QByteArray stored(const QByteArray& picture) const {
        build(u"a.mdb"_s, "[[formula]]\nname = 'f'\npicture = { " + picture + " }\n");
        const QString hex = rows(path(u"a.mdb"_s), u"select hex(Pic) from Formula"_s);
        return QByteArray::fromHex(hex.toLatin1());
    }
};

TEST_F(Build, ErrorsNameTheirPlaceAndLeaveTheOldFile) {
    build(u"a.mdb"_s, "[[folder]]\nname = 'old'\n");
    const QByteArray before = read(u"a.mdb"_s);
    write(u"text.jpg"_s, "plain text");
    write(u"empty.bmp"_s, "");
    write(u"broken.svg"_s, "<svg");
    for (const WrongText& wrong : wrongTexts) {
        expectError(wrong);
    }
    for (const auto& [picture, place, message] : wrongPictures) {
        expectError({"[[formula]]\nname = 'f'\npicture = { " + picture + " }\n", place, message});
    }
    EXPECT_EQ(read(u"a.mdb"_s), before);
    EXPECT_EQ(files(), u"a.mdb broken.svg empty.bmp text.jpg text.toml"_s);
}

TEST_F(Build, ReplacesAnOldLibraryButNoFolderAndNotItsText) {
    build(u"a.mdb"_s, "[[folder]]\nname = 'old'\n");
    build(u"a.mdb"_s, "[[folder]]\nname = 'new'\n");
    EXPECT_EQ(rows(path(u"a.mdb"_s), u"select Name from Tree"_s), u"new"_s);
    ASSERT_TRUE(QDir().mkdir(path(u"folder"_s)));
    const QString text = path(u"text.toml"_s);
    for (const QString& target : {path(u"folder"_s), path(u"none/b.mdb"_s), text}) {
        EXPECT_ANY_THROW(buildLibrary(text, target)) << target.toStdString();
    }
    EXPECT_THROW(buildLibrary(path(u"none.toml"_s), path(u"b.mdb"_s)), TextError);
    EXPECT_EQ(read(u"text.toml"_s), "[[folder]]\nname = 'new'\n");
    EXPECT_EQ(files(), u"a.mdb folder text.toml"_s);
}

TEST_F(Build, RendersDrawingsOnWhiteAlwaysTheSame) {
    write(u"half.svg"_s, R"(<svg xmlns="http://www.w3.org/2000/svg" width="40" height="20">
        <rect width="20" height="20" fill="#0000ff"/></svg>)");
    const QByteArray bmp = stored("file = 'half.svg', format = 'bmp', width = 80, height = 60");
    EXPECT_TRUE(bmp.startsWith("BM"));
    const QImage image = QImage::fromData(bmp);
    ASSERT_EQ(image.size(), QSize(80, 60));
    EXPECT_EQ(image.pixelColor(10, 30), QColor(Qt::blue));
    EXPECT_EQ(image.pixelColor(10, 5), QColor(Qt::white)) << "the proportions are not kept";
    EXPECT_EQ(image.pixelColor(79, 59), QColor(Qt::white));
    const QByteArray jpg = stored("file = 'half.svg', format = 'jpg'");
    EXPECT_TRUE(jpg.startsWith("\xFF\xD8\xFF"));
    EXPECT_EQ(QImage::fromData(jpg).size(), QSize(40, 20));
    EXPECT_EQ(stored("file = 'half.svg', format = 'jpg'"), jpg);
}

TEST_F(Build, TakesReadyPicturesAndBase64ByteForByte) {
    const QByteArray bytes = QByteArray("\x89PNG\r\n\x1A\n", 8) + QByteArray(40'000, '\0') + "end";
    write(u"ready.PNG"_s, bytes);
    EXPECT_EQ(stored("file = 'ready.PNG'"), bytes);
    EXPECT_EQ(stored("base64 = \"\"\"\n  bm8g\n\tcGlj dHVyZQ==\n\"\"\""), "no picture");
}

TEST(PictureBytes, AreToldByTheirSignature) {
    for (const char* hex : {"424d31", "ffd8ffe0", "89504e470d0a1a0a", "d7cdc69a0000",
                            "010009000003", "020009000001"}) {
        EXPECT_TRUE(isPicture(QByteArray::fromHex(hex))) << hex;
    }
    for (const QByteArray bytes : {"", "B", "GIF89a", "\xFF\xD8", "<svg>"}) {
        EXPECT_FALSE(isPicture(bytes)) << bytes.toHex().toStdString();
    }
}

}  // namespace
}  // namespace varo
