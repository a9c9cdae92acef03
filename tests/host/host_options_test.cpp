#include "host/host_options.h"

#include <gtest/gtest.h>

namespace varo::host {
namespace {

TEST(HostOptions, RepeatedOptionsKeepTheirOrder) {
    const HostOptions options = parseOptions(
        {QStringLiteral("--select"), QStringLiteral("DBNode1"), QStringLiteral("--set=F=a=b"),
         QStringLiteral("--select=LvFormulaKey3"), QStringLiteral("--set"), QStringLiteral("G="),
         QStringLiteral("--prop"), QStringLiteral("截面面积=-3")});
    EXPECT_EQ(options.selections,
              (QStringList{QStringLiteral("DBNode1"), QStringLiteral("LvFormulaKey3")}));
    ASSERT_EQ(options.values.size(), 2);
    EXPECT_EQ(options.values[0].name, QStringLiteral("F"));
    EXPECT_EQ(options.values[0].value, QStringLiteral("a=b"));
    EXPECT_EQ(options.values[1].value, QString());
    ASSERT_EQ(options.properties.size(), 1);
    EXPECT_EQ(options.properties[0].value, QStringLiteral("-3"));
}

TEST(HostOptions, OnlyAPictureAndQuittingDoWithoutTheUser) {
    EXPECT_FALSE(parseOptions({QStringLiteral("--deploy"), QStringLiteral("somewhere")}).reports());
    EXPECT_TRUE(parseOptions({QStringLiteral("--quit")}).reports());
    EXPECT_TRUE(parseOptions({QStringLiteral("--screenshot=picture.png")}).reports());
}

TEST(HostOptions, HelpNamesEveryOption) {
    for (const char* name : {"--deploy FOLDER", "--select KEY", "--set NAME=VALUE",
                             "--prop NAME=VALUE", "--screenshot FILE.png", "--quit", "--help"}) {
        EXPECT_TRUE(optionsHelp().contains(QString::fromLatin1(name))) << name;
    }
}

struct Wrong {
    QStringList arguments;
    QString named;
};

TEST(HostOptions, WhatIsWrongIsNamed) {
    const QList<Wrong> cases{
        {{QStringLiteral("--bogus")}, QStringLiteral("--bogus")},
        {{QStringLiteral("stray")}, QStringLiteral("stray")},
        {{QStringLiteral("--deploy")}, QStringLiteral("--deploy")},
        {{QStringLiteral("--select"), QStringLiteral("--quit")}, QStringLiteral("--select")},
        {{QStringLiteral("--quit=1")}, QStringLiteral("--quit")},
        {{QStringLiteral("--set"), QStringLiteral("F")}, QStringLiteral("'F'")},
        {{QStringLiteral("--prop"), QStringLiteral("=3")}, QStringLiteral("'=3'")},
        {{QStringLiteral("--screenshot"), QStringLiteral("/no such folder/a.png")},
         QStringLiteral("/no such folder/a.png")},
        {{QStringLiteral("--screenshot=/")}, QStringLiteral("'/'")},
    };
    for (const Wrong& wrong : cases) {
        try {
            parseOptions(wrong.arguments);
            ADD_FAILURE() << wrong.named.toStdString() << " was taken";
        } catch (const UsageError& error) {
            EXPECT_TRUE(error.text.contains(wrong.named)) << error.text.toStdString();
        }
    }
}

}  // namespace
}  // namespace varo::host
