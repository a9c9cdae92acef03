// Takes the bytes that libFuzzer generates as a library file, with a journal or a write-ahead log
// beside it or without (see library_input.h), and does with it what the control and varo-library
// do.

#include "library/data_files.h"
#include "library/data_table.h"
#include "library/folders.h"
#include "library/formula_reader.h"
#include "library/formulas.h"
#include "library/library_text.h"
#include "library/properties.h"
#include "library/property_search.h"
#include "library/stored_values.h"
#include "library/text_error.h"
#include "library_mutator.h"
#include "platform/questions/held_messages.h"
#include "sandbox.h"
#include "sqlite_memory.h"

#include <QBuffer>
#include <QFile>

#include <algorithm>
#include <optional>

using namespace varo;
using fuzz::require;

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* bytes, std::size_t size, std::size_t most);

namespace {

constexpr auto kName = "library.mdb";
constexpr int kMostFolders = 20;  // whose formulas are read

const fuzz::Sandbox& sandbox() {
    static const fuzz::Sandbox instance;
    return instance;
}

QString pathOf(const char* name) {
    return QString::fromStdString(sandbox().path(name));
}

/// What varo-library says of the library: its text and its faults, or why there are none.
QStringList told() {
    QStringList lines;
    const CheckReport report = checkLibrary(pathOf(kName));
    lines << report.faults << report.warnings;
    QBuffer out;
    out.open(QIODevice::WriteOnly);
    try {
        lines << dumpLibrary(pathOf(kName), out);
    } catch (const TextError& error) {
        lines << error.description();
    } catch (const data::Error& error) {
        lines << error.description();
    }
    return lines << QString::fromUtf8(out.data());
}

bool tellsDamage(const QStringList& said) {
    return !said.filter(QStringLiteral("the file is damaged: ")).isEmpty();
}

class Host : public PropertySource {
  public:
    QString propertyValue(const QString& name) override {
        return name == u"x" ? QStringLiteral("1") : QStringLiteral("a");
    }
};

/// The library as the control has it open.
class OpenLibrary {
  public:
    OpenLibrary() {
        QString key;
        bool added = false;
        libraries_.Add(QString::fromLatin1(kName), pathOf(""), QStringLiteral("library"), key, {},
                       added);
        library_.open(1);
    }

    CurrentLibrary& current() { return library_; }

    /// Everything that is shown of it.
    QStringList content() {
        QStringList shown{QString::number(static_cast<int>(library_.openResult().failure))};
        if (!library_.isOpen()) {
            return shown;
        }
        FolderRows folders;
        shown << QString::number(readFolders(library_, folders));
        folders.sort();
        listFormulas(0, shown);
        for (const FolderRows::Row& row :
             folders.rows().first(std::min<std::size_t>(folders.rows().size(), kMostFolders))) {
            shown << folders.name(row).toString() << QString::number(row.id);
            listFormulas(row.id, shown);
            require(folders.subtreeOf(row.id).size() <= folders.rows().size(),
                    "a folder is in a subtree once");
        }
        listProperties(shown);
        listTables(shown);
        return shown;
    }

  private:
    void listFormulas(qint32 folder, QStringList& shown) {
        colFormulaInfo formulas;
        shown << QString::number(readFormulas(
            library_, folder, FormulaTexts::Shown,
            [](qint32) { return pathOf("../temporary/listed"); }, formulas));
        for (int place = 1; place <= formulas.Count(); ++place) {
            clsFormulaInfo& formula = formulas.Item(place);
            shown << QString::number(readWholeTexts(library_, formula)) << formula.FormulaName
                  << formula.FormulaExpression << formula.FormulaMemo;
            listValues(formula.FormulaID, shown);
            showPicture(formula.FormulaID, shown);
        }
    }

    void listValues(qint32 formula, QStringList& shown) {
        StoredValues values(library_);
        for (const StoredValue& value : values.valuesOf({"F", "E", "L", "a"}, formula)) {
            shown << value.value << value.parameter << QString::number(value.source);
        }
    }

    void showPicture(qint32 formula, QStringList& shown) {
        const QString file = pathOf("../temporary/picture");
        const bool isThere = extractPicture(library_, formula, file, messages_);
        require(isThere || !QFile::exists(file), "a picture that is not read leaves no file");
        const qint64 size = QFile(file).size();
        require(size <= QFile(pathOf(kName)).size(), "a picture is no larger than its library");
        shown << QString::number(size);
        QFile::remove(file);
    }

    void listProperties(QStringList& shown) {
        for (const NodeType kind : {NodeTypeFolder, NodeTypeFormula}) {
            std::vector<qint32> ids;
            shown << QString::number(readNodesWithProperty(library_, kind, ids));
            for (const qint32 id : ids) {
                shown << QString::number(id);
            }
        }
        Host host;
        colLocateProp located;
        shown << PropertySearch(libraries_, host).run(QStringLiteral("p"), located);
        for (const clsLocateProp& each : located) {
            shown << each.Key;
        }
    }

    static void listTables(QStringList& shown) {
        data::Connection connection;
        if (!openDataFile(pathOf(""), QString::fromLatin1(kName), connection)) {
            return;
        }
        try {
            for (const QString& name : connection.tables()) {
                DataTable table;
                shown << name << QString::number(table.open(connection, name));
                shown << QString::number(table.list({QStringLiteral("a"), 0, true}));
                shown << QString::number(table.list({}));
                for (int row = 0; row < std::min(table.rowCount(), 5); ++row) {
                    for (int column = 0; column < table.columnCount(); ++column) {
                        shown << table.cell(row, column).text;
                    }
                }
            }
        } catch (const data::Error& error) {
            shown << error.description();
        }
    }

    HeldMessages messages_;
    colFormulaDB libraries_;
    CurrentLibrary library_{libraries_, messages_};
};

QStringList damagesOf(CurrentLibrary& library) {
    try {
        return library.connection().damages();
    } catch (const data::Error& error) {
        return {error.description()};
    }
}

/// The cheap changes, after which a sound library is sound.
void change() {
    OpenLibrary opened;
    CurrentLibrary& library = opened.current();
    if (!library.isOpen()) {
        return;
    }
    const bool wasSound = damagesOf(library).isEmpty();
    qint32 folder = 0;
    qint32 formula = 0;
    const bool isAdded = addFolder(library, 1, QStringLiteral("new"), folder);
    addFormula(library, folder, QStringLiteral("new"), formula);
    renameFolder(library, 2, QStringLiteral("renamed"));
    renameFormula(library, 1, QStringLiteral("renamed"));
    storeExpression(library, 2, QStringLiteral("1+1"));
    StoredValues(library).store(QStringLiteral("F"), 1, QStringLiteral("5"));
    FolderOrder order;
    exchangeFolders(library, 2, 3, order);
    FolderRows rows;
    if (isAdded && wasSound && readFolders(library, rows)) {
        require(std::ranges::any_of(rows.rows(),
                                    [&](const auto& row) {
                                        return row.id == folder && row.parentId == 1 &&
                                               rows.name(row) == u"new";
                                    }),
                "a folder that was added is there");
    }
    const SubtreeDeletion deletion = deleteSubtree(library, 1);
    FolderRows left;
    if (deletion.complete && deletion.committed && wasSound && readFolders(library, left)) {
        require(std::ranges::none_of(left.rows(), [](const auto& row) { return row.id == 1; }),
                "a folder that was deleted is gone");
    }
    deleteFormula(library, 3);
    require(!wasSound || damagesOf(library).isEmpty(), "a sound library stays sound");
}

void requireNoFilesBut(const fuzz::Files& given) {
    for (const auto& [name, content] : sandbox().files()) {
        require(given.count(name) == 1, "no file appears");
    }
    require(sandbox().files().count(kName) == 1, "the library stays");
    sandbox().requireNothingOutside();
}

void check(const fuzz::LibraryInput& input) {
    // What an input is tried for besides follows from it, so that it costs little and repeats.
    enum { TellAgain, OpenAgain, Change };
    const std::size_t trial = Chance(input.library).below(3);
    const fuzz::Files given = sandbox().files();
    const QStringList said = told();
    if (trial == TellAgain) {
        const QStringList again = told();
        // SQLite reads some bytes behind a damaged page, and what lies there in memory differs.
        require(again == said || (tellsDamage(said) && tellsDamage(again)),
                "telling again tells the same");
    }
    require(sandbox().files() == given, "check and dump change nothing");
    const QStringList shown = OpenLibrary().content();
    // What lies beside the library, and its place in the header, are applied by opening it.
    const bool isAlone =
        input.side == fuzz::SideFile::None &&
        (input.library.size() < 20 || (input.library[18] != 2 && input.library[19] != 2));
    const fuzz::Files opened = sandbox().files();
    require(!isAlone || opened == given, "reading changes nothing");
    if (trial == OpenAgain) {
        require(OpenLibrary().content() == shown, "opening again shows the same");
        require(sandbox().files() == opened, "opening again changes nothing");
    } else if (trial == Change) {
        change();
    }
    requireNoFilesBut(given);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    fuzz::SqliteMemory::install();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const fuzz::LibraryInput input(fuzz::asText(bytes, size));
    sandbox().clear();
    sandbox().write(kName, input.library);
    if (input.side != fuzz::SideFile::None) {
        const char* suffix = input.side == fuzz::SideFile::Journal ? "-journal" : "-wal";
        sandbox().write(std::string(kName) + suffix, input.sideContent);
    }
    const sqlite3_int64 before = sqlite3_memory_used();
    check(input);
    require(sqlite3_memory_used() == before, "SQLite has given back its memory");
    return 0;
}

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* bytes, std::size_t size,
                                               std::size_t most, unsigned seed) {
    Chance chance(std::to_string(seed));
    if (chance.below(4) == 0) {
        return LLVMFuzzerMutate(bytes, size, most);
    }
    fuzz::LibraryInput input(fuzz::asText(bytes, size));
    fuzz::changeLibrary(input, chance, sandbox().path("../outside/victim"));
    const std::string changed = input.bytes();
    if (changed.size() > most) {
        return size;
    }
    std::copy(changed.begin(), changed.end(), bytes);
    return changed.size();
}
