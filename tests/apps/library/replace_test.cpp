#include "library_files.h"
#include "support/process.h"

#include <QFileInfo>

namespace varo {
namespace {

using Replace = LibraryFiles;

const QString name = QStringLiteral("a.mdb");

QByteArray formulas(int count) {
    QByteArray text;
    for (int id = 1; id <= count; ++id) {
        text += "[[formula]]\nname = \"f" + QByteArray::number(id) + "\"\nvalues = { x = \"1\" }\n";
    }
    return text;
}

TEST_F(Replace, BuildsOverALibraryWhoseWriterWasKilled) {
    const QString library = build(name, formulas(1));
    test::LibraryProcess writer({QStringLiteral("spill"), library});
    ASSERT_EQ(writer.readLine(), QStringLiteral("spilled"));
    writer.kill();
    writer.wait();
    ASSERT_GT(QFileInfo(library + QStringLiteral("-journal")).size(), 4096);

    build(name, formulas(2000));
    EXPECT_EQ(checkLibrary(library).faults, QStringList());
    EXPECT_EQ(dump(library), dump(build(QStringLiteral("fresh"), formulas(2000))));
}

TEST_F(Replace, ChecksNameWhatIsThereTwice) {
    const QString library = build(name, formulas(1));
    data::Connection connection = open(library);
    connection.execute(QStringLiteral("insert into RecentVar(VarName,FormulaID) values('X',1)"));
    connection.execute(QStringLiteral(
        "insert into Property(PropID,PropName,NodeID,NodeType) values(3,'p',1,2),(3,'q',1,2)"));
    connection.close();
    EXPECT_EQ(checkLibrary(library).faults,
              QStringList({QStringLiteral("variable \"x\" of formula 1 has 2 values"),
                           QStringLiteral("2 properties of formula 1 have the identifier 3")}));
}

}  // namespace
}  // namespace varo
