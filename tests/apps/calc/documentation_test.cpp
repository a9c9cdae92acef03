#include "calc/calc_process.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace varo::test {
namespace {

using namespace Qt::StringLiterals;

/// A command of the guide and what it shows as printed by it.
struct Example {
    QString command;
    QString output;
};

/// The commands after "$ " in the guide's blocks of the kind "console".
QList<Example> examplesOf(const QString& path) {
    QFile guide(path);
    EXPECT_TRUE(guide.open(QIODevice::ReadOnly)) << qPrintable(path);
    QList<Example> examples;
    bool inExample = false;
    for (const QString& line : QString::fromUtf8(guide.readAll()).split(u'\n')) {
        if (line.startsWith(u"```")) {
            inExample = line == u"```console";
        } else if (inExample && line.startsWith(u"$ ")) {
            examples.append({line.sliced(2), {}});
        } else if (inExample) {
            examples.last().output += line + u'\n';
        }
    }
    return examples;
}

TEST(Guide, ItsExamplesAreWhatTheProgramPrints) {
    const QTemporaryDir folder;
    int calculations = 0;
    for (const Example& example : examplesOf(QStringLiteral(VARO_CALC_GUIDE))) {
        // A table that the guide shows is there for the commands after it.
        if (example.command.startsWith(u"cat ")) {
            QFile table(folder.filePath(example.command.sliced(4)));
            ASSERT_TRUE(table.open(QIODevice::WriteOnly));
            table.write(example.output.toUtf8());
            continue;
        }
        QProcess shell;
        shell.setWorkingDirectory(folder.path());
        shell.setProcessChannelMode(QProcess::MergedChannels);
        const QString path = QFileInfo(QStringLiteral(VARO_CALC_PROGRAM)).path();
        shell.start(u"sh"_s, {u"-c"_s, u"PATH="_s + path + u":$PATH; "_s + example.command});
        ASSERT_TRUE(shell.waitForFinished());
        EXPECT_EQ(QString::fromUtf8(shell.readAll()).toStdString(), example.output.toStdString())
            << qPrintable(example.command);
        ++calculations;
    }
    EXPECT_GT(calculations, 5);
}

}  // namespace
}  // namespace varo::test
