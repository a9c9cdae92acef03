#include "library/toml_scan.h"

#include <QByteArrayList>

#include <gtest/gtest.h>
#include <random>
#include <toml++/toml.h>

namespace varo {
namespace {

std::string_view view(const QByteArray& text) {
    return {text.constData(), static_cast<std::size_t>(text.size())};
}

/// The place and the beginning of the message.
QByteArray refusalOf(const QByteArray& text) {
    const auto refusal = scanToml(view(text)).refusal;
    return refusal ? QByteArray::number(refusal->at.line) + ':' +
                         QByteArray::number(refusal->at.column) + ' ' +
                         refusal->message.left(10).toUtf8()
                   : QByteArray();
}

QByteArray many(const char* text, int count) {
    return QByteArray(text).repeated(count);
}

TEST(TomlScan, RefusesOnlyWhatHarmsTheParser) {
    const struct {
        QByteArray text;
        const char* refusal;
    } cases[] = {
        {"a = '跨'\n\"度\" = \"弯\" # 矩\n[\"组\".'a'] # é", ""},
        {"\xEF\xBB\xBF\na = 1", ""},
        {"a = 1\nb = '跨' 度", "2:9 a name or "},
        {"跨 = 1", "1:1 a name or "},
        {"\xEF\xBB\xBF\xC2\xA0 a = 1", "1:1 a name or "},
        {"a.跨 = 1", "1:3 a name or "},
        {"a = 2\xC2\xA0", "1:6 a name or "},
        {"a = \"\"\"跨\n度\\\"\"\"\"\"\"\n弯 = 1", "3:1 a name or "},
        {"a = '''跨\\''' \n弯 = 1", "2:1 a name or "},
        {"a = '''''' \n弯 = 1", "2:1 a name or "},
        {"a = \"\\\\\"\n弯 = 1", "2:1 a name or "},
        {"a = \"\\\"跨\\\"\"\nb = '\\'\n弯 = 1", "3:1 a name or "},
        {"a = [\"\"\"x\"\"\"\", 跨]", "1:16 a name or "},
        {"a = 1\"ђ\"", "1:7 a name or "},
        {"a = 2020-01-01 'ђ'", "1:17 a name or "},
        {"a = \"跨\nb", ""},
        {"a = \"跨\\", ""},
        {"a = \"跨\\\n度\"", ""},
        {"a = \"\"\"x\\跨\"\"\"", "1:10 a backslas"},
        {"a = \"\\\u3000\"", "1:7 a backslas"},
        {many("a.", 15) + "b = 1.5", ""},
        {"[" + many("a . ", 15) + "b]\n" + many("'a'.", 15) + "b = 1", ""},
        {"\n" + many("a.", 16) + "b = 1", "2:32 a name has"},
        {"[" + many("'x'.", 16) + "b]", "1:65 a name has"},
        {"a = " + many("[", 16) + many("]", 16) + "\nb = [[1.5, 2.5], {c.d = 1}]", ""},
        {"a = " + many("[\n", 17), "17:1 brackets a"},
        {"a = " + many("{b=[", 9), "1:37 brackets a"},
    };
    for (const auto& [text, refusal] : cases) {
        EXPECT_EQ(refusalOf(text), refusal) << text.constData();
    }
}

TEST(TomlScan, LetsAnyCharacterFollowAJoinOfLines) {
    for (const char* next : {"\u00A0", "\u00E9", "φ", "\u1680", "\u2028", "\u3000", "《", "跨",
                             "\uFE7F", "\uFEFF", "，", "\U0001F600"}) {
        const QByteArray text =
            QByteArray("a = \"\"\"x\\ \r\n\t \n ") + next + "y\\\n" + next + "\"\"\"";
        const TomlScan scan = scanToml(view(text));
        const toml::table root = toml::parse(std::string_view(scan.text));
        EXPECT_EQ(root["a"].value<std::string>(), std::string("x") + next + "y" + next);
    }
}

/// The place of the parser's error; "" for a text that it takes.
QByteArray parserErrorOf(const QByteArray& text) {
    const TomlScan scan = scanToml(view(text));
    try {
        static_cast<void>(toml::parse(std::string_view(scan.text)));
    } catch (const toml::parse_error& error) {
        const auto begin = error.source().begin;
        const Position place =
            scan.placeInText({static_cast<int>(begin.line), static_cast<int>(begin.column)});
        return QByteArray::number(place.line) + ':' + QByteArray::number(place.column);
    }
    return {};
}

TEST(TomlScan, LeavesToTheParserWhatHasOnlyAsciiOutsideOfStringsAndComments) {
    const QByteArrayList pieces = QByteArray(
                                      "\"|'|\"\"\"|'''|\\|\n|#|[|]|{|}|=|.|,| |a|b1|1|跨|跨|a=1\n|"
                                      "b=\"|\"\n|c='|'\n|e=[|\\\"|f.g=|[[d]]\n|\r\n")
                                      .split('|');
    std::mt19937 random(2024);
    int taken = 0;
    for (int round = 0; round < 60'000; ++round) {
        QByteArray text;
        // The parser must not see the character outside of strings and comments; "?" is an error
        // there, and nowhere else.
        QByteArray ascii;
        for (int count = static_cast<int>(random() % 14); count >= 0; --count) {
            const QByteArray& piece = pieces[random() % static_cast<unsigned>(pieces.size())];
            text += piece;
            ascii += piece == "跨" ? "?" : piece;
        }
        const QByteArray error = parserErrorOf(ascii);
        taken += error.isEmpty() ? 1 : 0;
        if (refusalOf(text).isEmpty()) {
            EXPECT_EQ(parserErrorOf(text), error) << text.constData();
        } else {
            EXPECT_NE(error, "") << text.constData();
        }
    }
    EXPECT_GT(taken, 500);
}

}  // namespace
}  // namespace varo
