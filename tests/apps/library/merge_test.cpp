#include "library/library_files.h"

namespace varo {
namespace {

constexpr auto beams = R"(
[[folder]]
id = 5
name = '梁'
[[folder]]
id = 2
name = '简支'
parent = 5
[[folder]]
id = 9
name = '空'
[[formula]]
id = 7
name = '弯曲'
folder = 5
expression = 'M/W'
picture = { base64 = 'Qk0AAAA=' }
values = { M = '3' }
[[formula]]
name = '挠度'
folder = 2
[[value]]
name = 'W'
formula = 7
value = '4'
source = 2
memo = '材料.mdb->钢'
[[property]]
id = 0
name = '形'
node = 2
node_type = 1
filter = 3
condition = 'a = 1 and b = 2'
[[property]]
id = 1
name = '材'
node = 7
node_type = 2
filter = 8
condition = 'c = 3'
)";

/// What an exception that the step throws says; "" without one.
template <class Step>
QString refusalOf(Step step) {
    try {
        step();
    } catch (const std::exception& error) {
        return QString::fromUtf8(error.what());
    }
    return {};
}

class Merging : public LibraryFiles, public testing::WithParamInterface<LibraryFormat> {
  protected:
    /// A library of the format, built from `text`.
    QString built(const QByteArray& text) const {
        QFile::remove(path(u"library"_s));
        buildLibrary(write(u"built.toml"_s, text), path(u"library"_s), false, GetParam());
        return path(u"library"_s);
    }

    QString merged(const QByteArray& text) const {
        const MergeReport report = mergeLibrary(write(u"merged.toml"_s, text), path(u"library"_s));
        return u"%1 %2 %3 %4"_s.arg(report.folders)
            .arg(report.formulas)
            .arg(report.namesakes)
            .arg(report.warnings.size());
    }

    QString tree() const {
        return rows(path(u"library"_s), u"Select ID,Name,PID,OrderID From Tree Order By ID"_s);
    }
    QString formulas() const {
        return rows(path(u"library"_s),
                    u"Select ID,Name,PID,OrderID,hex(Pic) From Formula Order By ID"_s);
    }
};

TEST_P(Merging, IntoAnEmptyLibraryAddsWhatBuildingDoes) {
    const QByteArray whole = dump(built(beams));
    built({});
    EXPECT_EQ(merged(whole), u"3 2 0 0"_s);
    EXPECT_EQ(tree(), u"1|梁|0|1 2|空|0|2 3|简支|1|1"_s);
    EXPECT_EQ(formulas(), u"1|挠度|3|1| 2|弯曲|1|1|424D000000"_s);
    const QString merged = path(u"library"_s);
    EXPECT_EQ(rows(merged,
                   u"Select VarName,FormulaID,Value,VarSourceType,VarMemo From RecentVar "
                   "Order By VarName"_s),
              u"M|2|3|0| W|2|4|2|材料.mdb->钢"_s);
    const QStringList expected = QString::fromUtf8(whole).split(u"[[property]]"_s);
    const QStringList found = QString::fromUtf8(dump(merged)).split(u"[[property]]"_s);
    ASSERT_EQ(found.size(), 3);
    for (int i = 1; i < 3; ++i) {
        EXPECT_EQ(found[i].section(u"condition"_s, 1), expected[i].section(u"condition"_s, 1));
    }
}

TEST_P(Merging, TakesAFolderOfTheSameNameAndPutsTheRestBehindWhatIsThere) {
    built(beams);
    EXPECT_EQ(merged(beams), u"0 2 2 1"_s) << "the property of the folder that is there";
    EXPECT_EQ(merged("[[folder]]\nid=1\nname='梁'\norder=9\n[[folder]]\nid=2\nname='柱'\nparent=1\n"
                     "order=4\n[[folder]]\nid=3\nname='柱'\norder=2\n[[formula]]\nname='剪切'\n"
                     "folder=1\n[[formula]]\nname='稳定'\nfolder=2\norder=6\n"
                     "[[value]]\nname='q'\nvalue='1'\n[[info]]\nname='x'\nvalue='y'\n"),
              u"2 2 0 1"_s);
    EXPECT_EQ(tree(), u"2|简支|5|1 5|梁|0|1 9|空|0|2 10|柱|0|3 11|柱|5|2"_s);
    EXPECT_EQ(rows(path(u"library"_s), u"Select Name,PID,OrderID From Formula Order By ID"_s),
              u"挠度|2|1 弯曲|5|1 挠度|2|2 弯曲|5|2 剪切|5|3 稳定|11|6"_s);
    EXPECT_EQ(rows(path(u"library"_s), u"Select PropID,FilterID From Property Order By PropID"_s),
              u"0|3 1|8 3|16"_s);
    EXPECT_EQ(rows(path(u"library"_s), u"Select PrptyName From TableInfo"_s), u"DBVersion"_s);
}

TEST_P(Merging, AddsAllOrNothing) {
    const QString library = built(beams);
    const QByteArray before = dump(library);
    const std::pair<QByteArray, const char*> cases[] = {
        {"[[folder]]\nname='a'\nparent=7\n", "below a folder that the text does not have"},
        {"[[folder]]\nid=1\nname='a'\nparent=2\n[[folder]]\nid=2\nname='b'\nparent=1\n",
         "below themselves"},
        {"[[folder]]\nname='a'\n[[formula]]\nname='f'\nfolder=8\n", "folder 8"},
        {"[[folder]]\nname='a'\n[[formula]]\nname='f'\npicture={file='none.bmp'}\n", "none.bmp"},
        {"[[folder]]\nname='a'\n[[formula]]\nname='f'\n[[property]]\nid=2147483647\nname='p'\n"
         "node=1\nnode_type=2\n",
         "no number is left"},
    };
    for (const auto& [text, message] : cases) {
        const QString refusal = refusalOf([&, &text = text] { merged(text); });
        EXPECT_TRUE(refusal.contains(QLatin1StringView(message))) << refusal.toStdString();
        EXPECT_EQ(dump(library), before) << message;
    }
    if (GetParam() != LibraryFormat::Sqlite) {
        const QByteArray longName = QByteArray("[[folder]]\nname='") + QByteArray(256, 'n') + "'\n";
        EXPECT_TRUE(refusalOf([&] { merged(longName); }).contains(u"255"));
        EXPECT_EQ(dump(library), before);
    }
    write(u"library"_s, "no library");
    EXPECT_NE(refusalOf([&] { merged(beams); }), QString());
    EXPECT_EQ(read(u"library"_s), "no library");
}

INSTANTIATE_TEST_SUITE_P(Formats, Merging,
                         testing::Values(LibraryFormat::Sqlite, LibraryFormat::Mdb,
                                         LibraryFormat::Accdb));

}  // namespace
}  // namespace varo
