#include "library/input_file.h"
#include "library/library_files.h"
#include "library/picture_reader.h"
#include "library/text_error.h"

#include <QColor>
#include <QImage>

#include <sys/stat.h>

namespace varo {
namespace {

/// Texts, "⏎" for the end of a line, each with the place of its error and a part of the message.
constexpr auto wrongTexts = R"(
[[folder]]⏎name = 'a → 2:10: string
[[folders]]⏎name = 'a' → 1:3: no key "folders"
[[folder]]⏎name = 'a'⏎⏎[[folder]]⏎nmae = 'b' → 5:1: no key "nmae"
[folder]⏎name = 'a' → 1:1: [[folder]]
folder = [1] → 1:11: else than tables
⏎[[folder]]⏎id = 1 → 2:1: needs "name"
[[folder]]⏎name = 5 → 2:8: "name" must be a text
[[folder]]⏎name = 'a'⏎id = '1' → 3:6: "id" must be a whole number
[[folder]]⏎name = 'a'⏎id = 2147483648 → 3:6: 32 bits
[[folder]]⏎id = 7⏎name = 'a'⏎[[folder]]⏎id = 7⏎name = 'b' → 5:6: id 7 is used twice, first on line 2
[[folder]]⏎name = 'a'⏎order = 2147483647⏎[[folder]]⏎name = 'b' → 4:1: no order
[[formula]]⏎name = 'f'⏎values = { a = '1', b = 2 } → 3:25: "b" must be a text
[[formula]]⏎name = 'f'⏎values = 'a' → 3:10: must be a table
[[folder]]⏎name = "a\u0000b" → 2:8: U+0000
[[property]]⏎id = 1⏎name = 'a'⏎node_type = 1 → 1:1: needs "node"
[[property]]⏎id=1⏎name='a'⏎node=1⏎node_type=1⏎condition = 'a >= "x"' → 6:14: the condition: this comparison needs a number
[[property]]⏎id=1⏎name='a'⏎node=1⏎node_type=1⏎condition = '跨度 = 1 and 材料 = 木' → 6:30: the condition: expected a number
[[property]]⏎id=1⏎name='a'⏎node=1⏎node_type=1⏎condition = "a = \"x\"" → 6:13: the condition: this comparison
[[property]]⏎id=1⏎name='a'⏎node=1⏎node_type=1⏎condition = """⏎a =""" → 6:13: the condition: expected
[[property]]⏎id=1⏎name='a'⏎node=1⏎node_type=1⏎condition = 'a = 1'⏎condition_id = 0 → 7:16: numbers from 1
[[property]]⏎id=1⏎name='a'⏎node=1⏎node_type=1⏎condition = 'a = 1 and b = 2'⏎condition_id = 2147483646 → 7:16: 32 bits
[[property]]⏎id=1⏎name='a'⏎node=1⏎node_type=1⏎condition_id = 1 → 6:16: goes with a condition
[[property]]⏎id=1⏎name='a'⏎node=1⏎node_type=1⏎filter = 0⏎condition = 'a = 1' → 6:10: other than 0
[[property]]⏎id=1⏎name='a'⏎node=1⏎node_type=1⏎filter = 3⏎condition = 'a = 1'⏎[[property]]⏎id=1⏎name='a'⏎node=1⏎node_type=1⏎filter = 3⏎condition = 'a = 1' → 14:13: filter 3 has another condition on line 7
[[property]]⏎id=1⏎name='a'⏎node=1⏎node_type=1⏎filter = 3⏎condition = 'a = 1'⏎[[condition]]⏎id=1⏎user=3⏎type=1 → 7:13: filter 3 has another condition
[[folder]]⏎name = 'a'⏎名 = 1 → 3:1: beyond ASCII needs quotes
a.a.a.a.a.a.a.a.a.a.a.a.a.a.a.a.a = 1 → 1:32: more than 16 parts
[[formula]]⏎name = ''⏎picture = { file = '/dev/zero' } → 3:20: no regular file
[[formula]]⏎name = ''⏎picture = { file = 'fifo' } → 3:20: no regular file
[[formula]]⏎name = ''⏎picture = { file = 'huge.bmp' } → 3:20: larger than 256 MiB
[[formula]]⏎name = ''⏎picture = { width = 3 } → 3:11: either "file" or "base64"
[[formula]]⏎name = ''⏎picture = { file = 'a', base64 = 'AA==' } → 3:11: either
[[formula]]⏎name = ''⏎picture = { base64 = 'A*==' } → 3:22: base64
[[formula]]⏎name = ''⏎picture = { base64 = '' } → 3:22: empty
[[formula]]⏎name = ''⏎picture = { base64 = 'AA==', width = 4 } → 3:38: "width"
[[formula]]⏎name = ''⏎picture = { file = 'nowhere.jpg' } → 3:20: picture "nowhere.jpg"
[[formula]]⏎name = ''⏎picture = { file = 'empty.bmp' } → 3:20: is empty
[[formula]]⏎name = ''⏎picture = { file = '.' } → 3:20: picture "."
[[formula]]⏎name = ''⏎picture = { file = 'text.jpg' } → 3:20: no bmp, jpg, png or wmf
[[formula]]⏎name = ''⏎picture = { file = 'text.jpg', width = 3 } → 3:20: .svg
[[formula]]⏎name = ''⏎picture = { file = 'broken.svg' } → 3:20: needs "format"
[[formula]]⏎name = ''⏎picture = { file = 'broken.svg', format = 'gif' } → 3:43: "jpg" or "bmp"
[[formula]]⏎name = ''⏎picture = { file = 'broken.svg', format = 'bmp' } → 3:20: no SVG drawing
[[formula]]⏎name = ''⏎picture = { file = 'broken.svg', format = 'bmp', width = 8193 } → 3:20: 1 to 8192
)";

class Build : public LibraryFiles {
  protected:
    QByteArray stored(const QByteArray& picture) const {
        const QString library =
            build(u"a.mdb"_s, "[[formula]]\nname = 'f'\npicture = { " + picture + " }\n");
        return QByteArray::fromHex(rows(library, u"select hex(Pic) from Formula"_s).toLatin1());
    }
};

TEST_F(Build, ErrorsNameTheirPlaceAndLeaveTheOldFile) {
    build(u"a.mdb"_s, "[[folder]]\nname = 'old'\n");
    const QByteArray before = read(u"a.mdb"_s);
    write(u"text.jpg"_s, "\xFF\xD8 plain text");
    write(u"empty.bmp"_s, "");
    write(u"broken.svg"_s, "<svg");
    ASSERT_EQ(mkfifo(qPrintable(path(u"fifo"_s)), 0600), 0);
    ASSERT_TRUE(QFile(write(u"huge.bmp"_s, "BM")).resize(kPictureFileLimit + 1));
    for (QString row : QString::fromUtf8(wrongTexts).split(u'\n', Qt::SkipEmptyParts)) {
        const QString wrong = row.section(u" → "_s, 1);
        const QString text = row.section(u" → "_s, 0, 0).replace(u'⏎', u'\n');
        const QString file = write(u"text.toml"_s, text.toUtf8());
        const QString place = file + u':' + wrong.section(u": "_s, 0, 0) + u": "_s;
        try {
            buildLibrary(file, path(u"a.mdb"_s));
            ADD_FAILURE() << "accepted: " << row.toStdString();
        } catch (const TextError& error) {
            EXPECT_TRUE(error.description().startsWith(place)) << error.what() << row.toStdString();
            EXPECT_TRUE(error.description().contains(wrong.section(u": "_s, 1))) << error.what();
        }
    }
    EXPECT_EQ(read(u"a.mdb"_s), before);
    EXPECT_EQ(files(), u"a.mdb broken.svg empty.bmp huge.bmp text.jpg text.toml"_s);
}

TEST_F(Build, ReplacesAnOldLibraryButNoFolderAndNotItsText) {
    build(u"a.mdb"_s, "[[folder]]\nname = 'old'\n");
    const QByteArray before = read(u"a.mdb"_s);
    write(u"a.mdb-journal"_s, "the journal of a journey");
    EXPECT_ANY_THROW(build(u"a.mdb"_s, "[[folder]]\nname = 'new'\n"));
    EXPECT_EQ(read(u"a.mdb"_s), before);
    EXPECT_EQ(read(u"a.mdb-journal"_s), "the journal of a journey");
    write(u"a.mdb-journal"_s, QByteArray(512, '\0'));  // left by a program that was killed
    build(u"a.mdb"_s, "[[folder]]\nname = 'new'\n");
    EXPECT_EQ(files(), u"a.mdb text.toml"_s);
    EXPECT_EQ(rows(path(u"a.mdb"_s), u"select Name from Tree"_s), u"new"_s);
    ASSERT_TRUE(QDir().mkdir(path(u"folder"_s)));
    const QString text = path(u"text.toml"_s);
    for (const QString& target : {path(u"folder"_s), path(u"none/b.mdb"_s), text}) {
        EXPECT_ANY_THROW(buildLibrary(text, target)) << target.toStdString();
    }
    for (const QString& source : {path(u"none.toml"_s), path(u"folder"_s), u"/dev/zero"_s}) {
        EXPECT_THROW(buildLibrary(source, path(u"b.mdb"_s)), TextError);
    }
    EXPECT_EQ(read(u"text.toml"_s), "[[folder]]\nname = 'new'\n");
    EXPECT_EQ(files(), u"a.mdb folder text.toml"_s);
}

TEST_F(Build, ReplacesNothingThatIsNoLibraryUnlessForced) {
    const QString text = write(u"text.toml"_s, "[[folder]]\nname = 'new'\n");
    const QString library = build(u"library"_s, "[[folder]]\nname = 'new'\n");
    write(u"empty"_s, "");
    write(u"plain"_s, "a letter");
    ASSERT_TRUE(QFile::copy(library, path(u"other"_s)));
    open(path(u"other"_s)).execute(u"drop table RecentVar"_s);
    ASSERT_EQ(mkfifo(qPrintable(path(u"fifo"_s)), 0600), 0);
    ASSERT_TRUE(QDir().mkdir(path(u"folder"_s)) && QFile::link(path(u"fifo"_s), path(u"link"_s)) &&
                QFile::link(u"/dev/null"_s, path(u"device"_s)));
    const auto outcome = [&](const QString& name, bool force) {
        try {
            buildLibrary(text, path(name), force);
            return rows(path(name), u"select Name from Tree"_s);
        } catch (const TextError& error) {
            return error.description().section(u": "_s, -1).left(10);
        }
    };
    for (const QString& row :
         u"library,new,new|empty,new,new|none,new,new|plain,this is no,new|other,this is no,new|"
         "fifo,this is no,this is no|link,this is no,this is no|device,this is no,this is no|"
         "folder,the librar,the librar"_s.split(u'|')) {
        const QStringList parts = row.split(u',');
        EXPECT_EQ(outcome(parts[0], false), parts[1]) << row.toStdString();
        EXPECT_EQ(outcome(parts[0], true), parts[2]) << row.toStdString();
    }
    for (const char* suffix : {"-journal", "-wal", "-shm"}) {
        for (const QString& name : {u"library"_s, u"absent"_s}) {
            const QString side = name + QLatin1StringView(suffix);
            write(side, "a letter");
            EXPECT_EQ(outcome(name, false), u"this does "_s) << side.toStdString();
            EXPECT_EQ(read(side), "a letter");
            EXPECT_EQ(outcome(name, true), u"new"_s) << side.toStdString();
            EXPECT_FALSE(QFile::exists(path(side)));
            QFile::remove(path(u"absent"_s));
            ASSERT_TRUE(QFile::link(text, path(side)));
            EXPECT_EQ(outcome(name, true), u"this is no"_s) << side.toStdString();
            EXPECT_TRUE(QFile::remove(path(side)));
        }
    }
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

TEST_F(Build, RendersADrawingOnceInEachSizeAndBoundsAllPicturesTogether) {
    PictureText picture{{7, 3}, {}, u"a.svg"_s, u"bmp"_s, 1000, 700};
    write(u"a.svg"_s, "<svg xmlns='http://www.w3.org/2000/svg'/>");
    PictureReader reader(path(u"text.toml"_s), 5 << 20);
    const QByteArray rendered = reader.read(picture);
    write(u"a.svg"_s, "<svg");
    EXPECT_EQ(reader.read(picture), rendered);
    const auto problem = [&](qint32 width) {
        picture.width = width;
        try {
            return QString::number(reader.read(picture).size());
        } catch (const TextError& error) {
            return error.description().section(u'/', -1);
        }
    };
    EXPECT_TRUE(problem(1001).startsWith(u"text.toml:7:3: picture \"a.svg\": "_s));
    EXPECT_EQ(problem(1000),
              u"text.toml:7:3: with this picture, all pictures of the library have "
              "more than 5 MiB"_s);
    PictureReader late(path(u"text.toml"_s), kMostPictureBytes, std::chrono::milliseconds::zero());
    try {
        late.read(picture);
        ADD_FAILURE() << "rendered";
    } catch (const TextError& error) {
        EXPECT_TRUE(error.description().contains(u"the most that all drawings"_s)) << error.what();
    }
}

TEST_F(Build, TakesReadyPicturesOfEachFormatAndBase64ByteForByte) {
    for (const char* head : {"424d31", "ffd8ffe0", "89504e470d0a1a0a", "d7cdc69a0000",
                             "010009000003", "020009000001"}) {
        const QByteArray bytes = QByteArray::fromHex(head) + QByteArray(40'000, '\0') + "end";
        write(u"ready.PNG"_s, bytes);
        EXPECT_EQ(stored("file = 'ready.PNG'"), bytes) << head;
    }
    EXPECT_EQ(stored("base64 = \"\"\"\n  bm8g\n\tcGlj dHVyZQ==\n\"\"\""), "no picture");
}

}  // namespace
}  // namespace varo
