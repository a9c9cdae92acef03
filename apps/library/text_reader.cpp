#include "library/condition_lines.h"
#include "library/input_file.h"
#include "library/library_rows.h"
#include "library/sibling_order.h"
#include "library/text_entry.h"
#include "library/toml_scan.h"

#include <QHash>
#include <QSet>
#include <QStringDecoder>

#include <algorithm>
#include <initializer_list>
#include <string_view>
#include <toml++/toml.h>
#include <utility>

namespace varo {

namespace {

/// Gives identifiers: those in the text, each once, and to the other entries the numbers left free,
/// from 1 up.
class Identifiers {
  public:
    explicit Identifiers(const std::vector<Entry>& entries) {
        QHash<qint32, int> firstLine;
        for (const Entry& entry : entries) {
            if (!entry.has("id")) {
                continue;
            }
            const qint32 id = entry.integer("id");
            const Position at = entry.position("id");
            if (const int line = firstLine.value(id, 0)) {
                entry.fail(
                    at, QStringLiteral("id %1 is used twice, first on line %2").arg(id).arg(line));
            }
            firstLine.insert(id, at.line);
            taken_.insert(id);
        }
    }

    qint32 of(const Entry& entry) {
        if (entry.has("id")) {
            return entry.integer("id");
        }
        while (taken_.contains(nextFree_)) {
            ++nextFree_;
        }
        return nextFree_++;
    }

  private:
    QSet<qint32> taken_;
    qint32 nextFree_ = 1;
};

qint32 orderOf(const Entry& entry, qint32 parent, SiblingOrder& siblings) {
    const qint64 order = entry.has("order") ? entry.integer("order") : siblings.next(parent);
    if (!fits(order)) {
        entry.fail(entry.position(), QStringLiteral("no order number is left behind its siblings"));
    }
    siblings.note(parent, static_cast<qint32>(order));
    return static_cast<qint32>(order);
}

QByteArray base64Of(const Entry& entry) {
    QByteArray encoded = entry.text("base64").toUtf8();
    encoded.removeIf([](char c) { return c == ' ' || c == '\n' || c == '\r' || c == '\t'; });
    auto result = QByteArray::fromBase64Encoding(encoded, QByteArray::AbortOnBase64DecodingErrors);
    if (!result) {
        entry.fail(entry.position("base64"), QStringLiteral("\"base64\" is not base64"));
    }
    if ((*result).isEmpty()) {
        entry.fail(entry.position("base64"), QStringLiteral("the picture is empty"));
    }
    return *std::move(result);
}

PictureText readPicture(const Entry& entry) {
    PictureText picture;
    picture.at = entry.position();
    if (entry.has("file") == entry.has("base64")) {
        entry.fail(picture.at, QStringLiteral("a picture needs either \"file\" or \"base64\""));
    }
    if (entry.has("base64")) {
        for (const auto* key : {"format", "width", "height"}) {
            if (entry.has(key)) {
                entry.fail(entry.position(key),
                           quoted(key) + QStringLiteral(" goes with a drawing"));
            }
        }
        picture.bytes = base64Of(entry);
        return picture;
    }
    picture.at = entry.position("file");
    picture.file = entry.text("file");
    if (picture.file.isEmpty()) {
        entry.fail(picture.at, QStringLiteral("\"file\" is empty"));
    }
    picture.format = entry.textOr("format", {});
    if (entry.has("format") && picture.format != u"jpg" && picture.format != u"bmp") {
        entry.fail(entry.position("format"),
                   QStringLiteral("\"format\" must be \"jpg\" or \"bmp\""));
    }
    picture.width = entry.integerIfAny("width");
    picture.height = entry.integerIfAny("height");
    return picture;
}

/// Reads the file's tables one kind after the other.
class TextReader {
  public:
    TextReader(const QString& path, const toml::table& root) : path_(path), root_(root) {
        Entry(path_, QStringLiteral("a library text"), root_,
              {"folder", "formula", "value", "property", "condition", "expression", "info"});
    }

    LibraryRows read() {
        readFolders();
        readFormulas();
        readRest();
        return std::move(rows_);
    }

  private:
    std::vector<Entry> entries(std::string_view kind,
                               std::initializer_list<std::string_view> keys) const {
        const QString title = QStringLiteral("[[%1]]").arg(toText(kind));
        std::vector<Entry> found;
        const toml::node* node = root_.get(kind);
        if (!node) {
            return found;
        }
        const toml::array* tables = node->as_array();
        if (!tables) {
            throw TextError(path_, positionOf(node->source()),
                            QStringLiteral("%1 must be written as %2").arg(quoted(kind), title));
        }
        for (const toml::node& item : *tables) {
            if (!item.is_table()) {
                throw TextError(path_, positionOf(item.source()),
                                QStringLiteral("%1 holds something else than tables").arg(title));
            }
            found.emplace_back(path_, title, *item.as_table(), keys);
        }
        return found;
    }

    void readFolders() {
        const auto folders = entries("folder", {"id", "name", "parent", "order"});
        Identifiers identifiers(folders);
        SiblingOrder siblings;
        for (const Entry& entry : folders) {
            FolderRow row;
            row.id = identifiers.of(entry);
            row.name = entry.text("name");
            row.parent = entry.integerOr("parent", 0);
            row.order = orderOf(entry, row.parent, siblings);
            rows_.folders.push_back(std::move(row));
        }
    }

    void readFormulas() {
        const auto formulas = entries("formula", {"id", "name", "folder", "order", "expression",
                                                  "memo", "picture", "picture_type", "values"});
        Identifiers identifiers(formulas);
        SiblingOrder siblings;
        for (const Entry& entry : formulas) {
            FormulaRow row;
            row.id = identifiers.of(entry);
            row.name = entry.text("name");
            row.folder = entry.integerOr("folder", 0);
            row.order = orderOf(entry, row.folder, siblings);
            row.expression = entry.textOr("expression", {});
            row.memo = entry.textOr("memo", {});
            if (entry.has("picture")) {
                row.picture =
                    readPicture(Entry(path_, QStringLiteral("\"picture\""), entry.table("picture"),
                                      {"base64", "file", "format", "width", "height"}));
            }
            row.pictureType = entry.integerOr("picture_type", row.picture ? 2 : 0);
            if (entry.has("values")) {
                readInlineValues(entry.table("values"), row.id);
            }
            rows_.formulas.push_back(std::move(row));
        }
    }

    void readInlineValues(const toml::table& values, qint32 formula) {
        const Entry entry = Entry::free(path_, QStringLiteral("\"values\""), values);
        for (auto& [name, value] : entry.textPairs()) {
            rows_.values.push_back({name, formula, value, 0, {}});
        }
    }

    void readRest() {
        for (const Entry& entry :
             entries("value", {"name", "formula", "value", "source", "memo"})) {
            rows_.values.push_back({entry.text("name"), entry.integerOr("formula", 0),
                                    entry.text("value"), entry.integerOr("source", 0),
                                    entry.textOr("memo", {})});
        }
        const auto properties = entries(
            "property", {"id", "name", "filter", "node", "node_type", "condition", "condition_id"});
        for (const Entry& entry : properties) {
            rows_.properties.push_back({entry.integer("id"), entry.text("name"),
                                        entry.integerOr("filter", 0), entry.integer("node"),
                                        entry.integer("node_type")});
        }
        for (const Entry& entry : entries("condition", {"id", "user", "parent", "type"})) {
            rows_.conditions.push_back({entry.integer("id"), entry.integer("user"),
                                        entry.integerOr("parent", 0), entry.integer("type")});
        }
        for (const Entry& entry : entries("expression", {"filter", "id", "table", "field",
                                                         "field_type", "compare", "constant"})) {
            rows_.expressions.push_back({entry.integer("filter"), entry.integer("id"),
                                         entry.textOr("table", {}), entry.text("field"),
                                         entry.integerOr("field_type", 0), entry.integer("compare"),
                                         entry.textOr("constant", {})});
        }
        addConditionLines(properties, rows_);
        for (const Entry& entry : entries("info", {"name", "value"})) {
            rows_.info.push_back({entry.text("name"), entry.textOr("value", {})});
        }
    }

    const QString& path_;
    const toml::table& root_;
    LibraryRows rows_;
};

}  // namespace

LibraryRows readLibraryText(const QString& path) {
    const QByteArray content = readInputFile(path, kTextFileLimit);
    const std::string_view text(content.constData(), static_cast<std::size_t>(content.size()));
    const TomlScan scan = scanToml(text);
    if (scan.refusal) {
        throw TextError(path, scan.refusal->at, scan.refusal->message);
    }
    try {
        const toml::table root = toml::parse(std::string_view(scan.text));
        return TextReader(path, root).read();
    } catch (const toml::parse_error& error) {
        throw TextError(path, scan.placeInText(positionOf(error.source())),
                        toText(error.description()));
    }
}

}  // namespace varo
