#include "library/bounded_call.h"
#include "library/drawing_check.h"
#include "support/test_library.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <new>
#include <unistd.h>

namespace varo::test {
namespace {

using namespace Qt::StringLiterals;

QByteArray svg(const QByteArray& content) {
    return R"(<svg xmlns="http://www.w3.org/2000/svg" xmlns:xlink="http://www.w3.org/1999/xlink">)" +
           content + "</svg>";
}

QByteArray dataOf(const QByteArray& type, const QByteArray& bytes) {
    return svg("<image href='data:" + type + ";base64," + bytes.toBase64() + "'/>");
}

/// Groups that each draw the one before twice.
QByteArray doubled(int levels) {
    QByteArray content = "<g id='g0'><rect/></g>";
    for (int i = 1; i <= levels; ++i) {
        const QByteArray below = "<use xlink:href='#g" + QByteArray::number(i - 1) + "'/>";
        content += "<g id='g" + QByteArray::number(i) + "'>" + below + below + "</g>";
    }
    return svg(content);
}

/// A png that says it has `side` pixels a side.
QByteArray png(quint8 side) {
    QByteArray bytes = imageBytes({1, 1}, Qt::red, "png");
    bytes[16] = static_cast<char>(side);  // the most significant byte of the width
    return bytes;
}

TEST(Drawing, ReadsNothingElseAndIsBounded) {
    const struct {
        QByteArray drawing;
        const char* problem;  ///< a part of it; "" when there is none
    } kCases[] = {
        {svg("<linearGradient id='g'/><rect id='a' fill='url(#g)'/><use xlink:href='#a'/>"
             "<a xlink:href='http://example.org/'/><style>rect { fill: red }</style>"),
         ""},
        {dataOf("image/png", png(0)), ""},
        {"<!DOCTYPE svg PUBLIC '-//W3C//DTD SVG 1.1//EN' 'http://example.org/a.dtd'><svg/>", ""},
        {doubled(8), ""},
        {svg("<image href='/dev/zero'/>"), "\"/dev/zero\" lies outside"},
        {svg("<image xlink:href=' file:///etc/passwd'/>"), "outside"},
        {svg("<use xlink:href='other.svg#a'/>"), "outside"},
        {svg("<rect fill='URL( \"x.svg#g\" )'/>"), "outside"},
        {svg("<rect style='fill:url(x.svg)'/>"), "outside"},
        {"<?xml-stylesheet href='/dev/zero'?>" + svg({}), "line 1: a drawing has no processing"},
        {svg("<style>@Import '/dev/zero';</style>"), "style sheet"},
        {svg("<style><![CDATA[r { fill: ur\\6c(x) }]]></style>"), "style sheet"},
        {"<!DOCTYPE svg [<!ENTITY a 'aaaa'>]>" + svg("&a;"), "no entities"},
        {dataOf("image/png", svg("<image href='/dev/zero'/>")), "png or jpg"},
        {dataOf("image/svg+xml", svg({})), "png or jpg"},
        {dataOf("image/png", png(1)), "16777216 pixels"},
        {svg("<image href=' data:image/jpeg;base64,&#10;" + png(0).toBase64().insert(20, "\n ") +
             "'/>"),
         ""},
        // The renderer reads behind the last "base64,".
        {svg("<image href='data:image/png," + png(0).toBase64() + "base64," + svg({}).toBase64() +
             "'/>"),
         "png or jpg"},
        {dataOf("image/png;base64," + png(0).toBase64(), svg({})), "png or jpg"},
        {dataOf("image/png;charset=x", png(0)), "png or jpg"},
        {svg("<image href='data:image/png;base64," + png(0).toBase64() + "%3D'/>"), "png or jpg"},
        {svg("<image href='data:image/png;base64," + png(0).toBase64() + "=A'/>"), "png or jpg"},
        {svg("<g id='a'><use xlink:href='#a'/></g>"), "more than 20000"},
        {svg("<g id='a'/><g id='a'/>"), "two elements"},
        {doubled(30), "more than 20000"},
        {svg(QByteArray("<g>").repeated(120) + QByteArray("</g>").repeated(120)), "at most 20000"},
        {svg(QByteArray("<g/>").repeated(20'001)), "at most 20000"},
        {svg("<style>" + QByteArray("a{}").repeated(501) + "</style>"), "500 style rules"},
        {svg("<style>" + QByteArray("a,").repeated(501) + "a{}</style>"), "500 style rules"},
        {svg("<style>" + QByteArray("a{}").repeated(300) + "</style>" +
             QByteArray("<g/>").repeated(10'000)),
         "too many elements"},
        {QByteArray("<!--") + QByteArray((4 << 20) + 1, ' '), "bytes"},
        {"\x1f\x8b\x08", "compressed"},
        {svg("<g>"), "no SVG drawing"},
    };
    for (const auto& [drawing, problem] : kCases) {
        const QString found = drawingProblem(drawing);
        EXPECT_TRUE(found.contains(QLatin1StringView(problem)) &&
                    found.isEmpty() == (*problem == '\0'))
            << drawing.left(200).toStdString() << "\n -> " << found.toStdString();
    }
}

TEST(BoundedCall, GivesTheResultOrNoneInTime) {
    const QByteArray large = pictureBytes(3'000'000);
    EXPECT_EQ(boundedCall(10, [&] { return large; }), large);
    EXPECT_EQ(boundedCall(10, [] { return QByteArray(); }), QByteArray());
    EXPECT_EQ(boundedCall(10, []() -> QByteArray { std::abort(); }), std::nullopt);
    EXPECT_EQ(boundedCall(1,
                          [] {
                              volatile bool goesOn = true;
                              while (goesOn) {
                              }
                              return QByteArray();
                          }),
              std::nullopt);
    EXPECT_EQ(boundedCall(1,
                          [] {
                              pause();
                              return QByteArray();
                          }),
              std::nullopt);
    EXPECT_EQ(boundedCall(10, []() -> QByteArray { throw std::bad_alloc(); }), std::nullopt);
    const auto reserve = [] {
        return QByteArray::number(QByteArray(qsizetype{5} << 30, Qt::Uninitialized).size());
    };
    EXPECT_NE(boundedCall(10, reserve).has_value(), kMemoryIsBounded);
    EXPECT_EQ(
        boundedCall(10,
                    [] {
                        openNoMoreFiles();
                        return QByteArray(open("/dev/null", O_RDONLY) < 0 ? "refused" : "open");
                    }),
        "refused");
}

}  // namespace
}  // namespace varo::test
