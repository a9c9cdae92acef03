#include "host/host_options.h"

#include <gtest/gtest.h>

namespace varo::host {
namespace {

using namespace Qt::StringLiterals;

TEST(HostOptions, RepeatedOptionsKeepTheirOrder) {
    const HostOptions options =
        parseOptions({u"--select"_s, u"DBNode1"_s, u"--set=F=a=b"_s, u"--select=LvFormulaKey3"_s,
                      u"--set"_s, u"G="_s, u"--prop"_s, u"截面面积=-3"_s});
    EXPECT_EQ(options.selections.join(u' '), u"DBNode1 LvFormulaKey3"_s);
    ASSERT_EQ(options.values.size(), 2);
    EXPECT_EQ(options.values[0].name + u' ' + options.values[0].value, u"F a=b"_s);
    EXPECT_EQ(options.values[1].name + u' ' + options.values[1].value, u"G "_s);
    ASSERT_EQ(options.properties.size(), 1);
    EXPECT_EQ(options.properties[0].value, u"-3"_s);
}

TEST(HostOptions, WhatIsWrongIsNamed) {
    for (const QString& wrong :
         u"--bogus>--bogus;stray>stray;--deploy>--deploy;--select --quit>--select;--quit=1>--quit;"
         "--set F>'F';--prop =3>'=3';--screenshot /nowhere/a>/nowhere/a;--screenshot=/>'/'"_s.split(
             u';')) {
        const QString line = wrong.section(u'>', 0, 0);
        const QString named = wrong.section(u'>', 1);
        try {
            parseOptions(line.split(u' '));
            ADD_FAILURE() << line.toStdString() << " was taken";
        } catch (const UsageError& error) {
            EXPECT_TRUE(error.text.contains(named)) << error.text.toStdString();
        }
    }
}

}  // namespace
}  // namespace varo::host
