#include "library/library_tool.h"

#include "library/input_file.h"
#include "library/library_text.h"
#include "library/output_file.h"
#include "platform/data/create_database.h"

#include <exception>
#include <optional>
#include <utility>

namespace varo {

namespace {

enum ExitCode { Done = 0, Failed = 1, WrongUsage = 2 };

constexpr auto usage =
    "Usage:\n"
    "  varo-library build [--force] [--format FORMAT] TEXT FILE\n"
    "                                 make the library FILE from the text TEXT; --force replaces\n"
    "                                 also a regular file that is no library; FORMAT is sqlite, "
    "mdb\n"
    "                                 (Access 2000 to 2003) or accdb (Access 2007 and later)\n"
    "  varo-library merge TEXT FILE   add the folders and formulas of the text TEXT to the library "
    "FILE\n"
    "  varo-library dump FILE         write the text of the library FILE\n"
    "  varo-library check FILE        look for faults in the library FILE\n"
    "  varo-library tables TEXT FILE  make the file FILE of the data tables that TEXT creates in "
    "SQL\n"
    "  varo-library --help            show this\n"
    "\n"
    "Exit code: 0 done, 1 failed or faults found, 2 wrong arguments.\n";

void print(QIODevice& device, const QString& text) {
    device.write((text + u'\n').toUtf8());
}

ExitCode check(const QString& path, QIODevice& out) {
    const CheckReport report = checkLibrary(path);
    for (const QString& fault : report.faults) {
        print(out, fault);
    }
    for (const QString& warning : report.warnings) {
        print(out, QStringLiteral("warning: ") + warning);
    }
    if (!report.faults.isEmpty()) {
        return Failed;
    }
    print(out, QStringLiteral("%1 folders, %2 formulas, %3 pictures")
                   .arg(report.folders)
                   .arg(report.formulas)
                   .arg(report.pictures));
    return Done;
}

void makeTables(const QString& textPath, const QString& filePath) {
    requireFree(filePath);
    data::createDatabase(filePath, QString::fromUtf8(readInputFile(textPath, kTextFileLimit)));
}

/// The format with this name; nothing when there is none.
std::optional<LibraryFormat> formatNamed(const QString& name) {
    constexpr std::pair<const char*, LibraryFormat> kFormats[] = {
        {"sqlite", LibraryFormat::Sqlite},
        {"mdb", LibraryFormat::Mdb},
        {"accdb", LibraryFormat::Accdb},
    };
    for (const auto& [known, format] : kFormats) {
        if (name == QLatin1StringView(known)) {
            return format;
        }
    }
    return std::nullopt;
}

/// `arguments` are those behind "build".
ExitCode build(QStringList arguments, QIODevice& err) {
    bool force = false;
    LibraryFormat format = LibraryFormat::Sqlite;
    while (arguments.value(0).startsWith(QLatin1StringView("--"))) {
        const QString option = arguments.takeFirst();
        const auto named = formatNamed(arguments.value(0));
        if (option == u"--force") {
            force = true;
        } else if (option == u"--format" && named) {
            format = *named;
            arguments.removeFirst();
        } else {
            err.write(usage);
            return WrongUsage;
        }
    }
    if (arguments.size() != 2) {
        err.write(usage);
        return WrongUsage;
    }
    for (const QString& warning : buildLibrary(arguments[0], arguments[1], force, format)) {
        print(err, warning);
    }
    return Done;
}

ExitCode merge(const QString& textPath, const QString& path, QIODevice& out, QIODevice& err) {
    const MergeReport report = mergeLibrary(textPath, path);
    for (const QString& warning : report.warnings) {
        print(err, warning);
    }
    QString added =
        QStringLiteral("%1 folders and %2 formulas added").arg(report.folders).arg(report.formulas);
    if (report.namesakes > 0) {
        added += QStringLiteral(", %1 of them beside one of the same name").arg(report.namesakes);
    }
    print(out, added);
    return Done;
}

ExitCode run(const QStringList& arguments, QIODevice& out, QIODevice& err) {
    const QString command = arguments.value(0);
    if (arguments == QStringList{QStringLiteral("--help")} ||
        arguments == QStringList{QStringLiteral("-h")}) {
        out.write(usage);
        return Done;
    }
    if (command == u"build") {
        return build(arguments.sliced(1), err);
    }
    if (command == u"merge" && arguments.size() == 3) {
        return merge(arguments[1], arguments[2], out, err);
    }
    if (command == u"dump" && arguments.size() == 2) {
        const QStringList leftOut = dumpLibrary(arguments[1], out);
        for (const QString& line : leftOut) {
            print(err, line);
        }
        return leftOut.isEmpty() ? Done : Failed;
    }
    if (command == u"check" && arguments.size() == 2) {
        return check(arguments[1], out);
    }
    if (command == u"tables" && arguments.size() == 3) {
        makeTables(arguments[1], arguments[2]);
        return Done;
    }
    err.write(usage);
    return WrongUsage;
}

}  // namespace

int runLibraryTool(const QStringList& arguments, QIODevice& out, QIODevice& err) {
    try {
        return run(arguments, out, err);
    } catch (const std::exception& error) {
        print(err, QString::fromUtf8(error.what()));
        return Failed;
    }
}

}  // namespace varo
