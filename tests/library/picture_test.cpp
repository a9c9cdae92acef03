#include "library/picture_bytes.h"
#include "library_files.h"

#include <QColor>
#include <QImage>

namespace varo {
namespace {

class Pictures : public LibraryFiles {
  protected:
    Pictures() {
        write(QStringLiteral("half.svg"),
              R"(<svg xmlns="http://www.w3.org/2000/svg" width="40" height="20" viewBox="0 0 40 20">
                 <rect width="20" height="20" fill="#0000ff"/>
                 <text x="21" y="15" font-size="12">F/A</text></svg>)");
    }

    QByteArray stored(const QByteArray& picture) const {
        const QString library = build(QStringLiteral("a.mdb"),
                                      "[[formula]]\nname = \"f\"\npicture = { " + picture + " }\n");
        return QByteArray::fromHex(
            rowsOf(library, QStringLiteral("select hex(Pic) from Formula where PicType = 2"))
                .value(0)
                .toLatin1());
    }
};

TEST_F(Pictures, ADrawingIsRenderedOnWhiteInTheWantedSize) {
    const QByteArray bytes =
        stored("file = \"half.svg\", format = \"bmp\", width = 80, height = 60");
    EXPECT_TRUE(bytes.startsWith("BM"));
    const QImage image = QImage::fromData(bytes);
    ASSERT_EQ(image.size(), QSize(80, 60));
    EXPECT_EQ(image.pixelColor(10, 30), QColor(Qt::blue));
    EXPECT_EQ(image.pixelColor(10, 5), QColor(Qt::white)) << "the proportions are not kept";
    EXPECT_EQ(image.pixelColor(79, 59), QColor(Qt::white));
}

TEST_F(Pictures, ADrawingWithoutSizeHasItsOwn) {
    const QByteArray bytes = stored("file = \"half.svg\", format = \"jpg\"");
    EXPECT_TRUE(bytes.startsWith("\xFF\xD8\xFF"));
    EXPECT_EQ(QImage::fromData(bytes).size(), QSize(40, 20));
}

TEST_F(Pictures, TheSameDrawingGivesTheSameBytes) {
    for (const QByteArray format : {"jpg", "bmp"}) {
        const QByteArray picture =
            "file = \"half.svg\", format = \"" + format + "\", width = 300, height = 200";
        EXPECT_EQ(stored(picture), stored(picture));
    }
}

TEST_F(Pictures, AReadyPictureIsTakenByteForByte) {
    const QByteArray bytes = QByteArray("\x89PNG\r\n\x1A\n", 8) + QByteArray(40'000, '\0') + "end";
    write(QStringLiteral("ready.PNG"), bytes);
    EXPECT_EQ(stored("file = \"ready.PNG\""), bytes);
}

TEST_F(Pictures, Base64IsStoredAsItStandsPictureOrNot) {
    EXPECT_EQ(stored("base64 = \"\"\"\n  bm8g\n\tcGlj dHVyZQ==\n\"\"\""), "no picture");
}

TEST_F(Pictures, AreToldByTheirSignature) {
    const QByteArray pictures[] = {
        "BM123",
        "\xFF\xD8\xFF\xE0",
        "\x89PNG\r\n\x1A\n",
        QByteArray::fromHex("d7cdc69a0000"),
        QByteArray::fromHex("010009000003"),
        QByteArray::fromHex("020009000001"),
    };
    for (const QByteArray& bytes : pictures) {
        EXPECT_TRUE(isPicture(bytes)) << bytes.toHex().toStdString();
    }
    const QByteArray others[] = {"", "B", "GIF89a", "\xFF\xD8", "<svg>", QByteArray(22, '\0')};
    for (const QByteArray& bytes : others) {
        EXPECT_FALSE(isPicture(bytes)) << bytes.toHex().toStdString();
    }
}

}  // namespace
}  // namespace varo
