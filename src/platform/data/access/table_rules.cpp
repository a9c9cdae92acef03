#include "platform/data/access/table_rules.h"

#include "platform/data/access/catalog.h"
#include "platform/data/access/text.h"
#include "platform/data/access/value.h"

#include <algorithm>

namespace varo::access {

namespace {

constexpr int kMark = 4;
constexpr quint16 kNames = 0x80;
constexpr quint16 kOfTable = 0;
constexpr quint16 kOfColumn = 1;
constexpr QLatin1StringView kRequiredName("Required");
constexpr QLatin1StringView kAllowsEmptyName("AllowZeroLength");
constexpr QLatin1StringView kDefaultName("DefaultValue");

/// One property of the table or of a column.
struct Property {
    QString owner;  ///< the column; empty for the table
    QString name;
    Bytes value;

    bool isTrue() const { return !value.isEmpty() && value.byte(0) != 0; }
};

/// Takes the property lists apart. They are blocks, each with its length and kind: the names that
/// occur, then the properties of the table and of each column, which refer to the names by number.
class PropertyReader {
  public:
    explicit PropertyReader(const Bytes& bytes) {
        constexpr int kBlockHeader = 6;
        for (qsizetype at = kMark; at < bytes.size();) {
            const quint32 length = bytes.u32(at);
            const quint16 kind = bytes.u16(at + 4);
            if (length < kBlockHeader) {
                throwDamaged("a list of properties has no end");
            }
            const Bytes block = bytes.part(at, length).from(kBlockHeader);
            if (kind == kNames) {
                readNames(block);
            } else if (kind == kOfTable || kind == kOfColumn) {
                readProperties(block, kind == kOfColumn);
            }
            at += length;
        }
    }

    const std::vector<Property>& properties() const { return properties_; }

  private:
    void readNames(const Bytes& block) {
        for (qsizetype at = 0; at < block.size();) {
            const quint16 length = block.u16(at);
            names_.append(plainText(block.part(at + 2, length)));
            at += 2 + length;
        }
    }

    void readProperties(const Bytes& block, bool isOfColumn) {
        constexpr int kOwner = 6;
        constexpr int kEntry = 8;
        const QString owner = plainText(block.part(kOwner, block.u16(4)));
        for (qsizetype at = block.u32(0); at < block.size();) {
            const quint16 length = block.u16(at);
            const quint16 name = block.u16(at + 4);
            if (length < kEntry || name >= names_.size()) {
                throwDamaged("a property has no name");
            }
            properties_.push_back({isOfColumn ? owner : QString(), names_[name],
                                   block.part(at, length).part(kEntry, block.u16(at + 6))});
            at += length;
        }
    }

    QStringList names_;
    std::vector<Property> properties_;
};

bool isNamed(const Property& property, QLatin1StringView name) {
    return property.name.compare(name, Qt::CaseInsensitive) == 0;
}

void apply(const Property& property, const TableDefinition& table, TableRules& rules) {
    using namespace Qt::Literals::StringLiterals;
    if (isNamed(property, "ValidationRule"_L1) && !property.value.isEmpty()) {
        rules.refusal = QStringLiteral(
            "the table has a validation rule, which only the Access program can check");
    }
    const int column = property.owner.isEmpty() ? -1 : table.column(property.owner);
    if (column < 0) {
        return;
    }
    ColumnRules& of = rules.columns[static_cast<std::size_t>(column)];
    if (isNamed(property, kRequiredName)) {
        of.isRequired = property.isTrue();
    } else if (isNamed(property, kAllowsEmptyName)) {
        of.allowsEmpty = property.isTrue();
    } else if (isNamed(property, kDefaultName)) {
        of.defaultExpression = plainText(property.value).trimmed();
        rules.hasRandomNumbers |=
            table.columns[static_cast<std::size_t>(column)].isAutoNumber &&
            of.defaultExpression.contains("GenUniqueID"_L1, Qt::CaseInsensitive);
    }
}

/// Bytes that end with numbers and texts appended one after the other.
class PropertyWriter {
  public:
    void addU16(qsizetype number) { add(static_cast<quint16>(number)); }
    void addU32(qsizetype number) { add(static_cast<quint32>(number)); }

    void addText(const QString& text) {
        addU16(text.size() * 2);
        for (const QChar character : text) {
            addU16(character.unicode());
        }
    }

    void addBlock(quint16 kind, const QByteArray& content) {
        addU32(content.size() + 6);
        addU16(kind);
        bytes_ += content;
    }

    /// A property that is true or false, by the number of its name.
    void addFlag(int name, bool isTrue) {
        addProperty(name, FieldType::YesNo, 1);
        bytes_ += static_cast<char>(isTrue);
    }

    /// One that is an expression.
    void addExpression(int name, const QString& text) {
        addProperty(name, FieldType::Memo, text.size() * 2);
        for (const QChar character : text) {
            addU16(character.unicode());
        }
    }

    const QByteArray& bytes() const { return bytes_; }

  private:
    void addProperty(int name, FieldType type, qsizetype length) {
        constexpr char kOfDefinition = 1;
        addU16(8 + length);
        bytes_ += kOfDefinition;
        bytes_ += static_cast<char>(type);
        addU16(name);
        addU16(length);
    }

    template <class Number>
    void add(Number number) {
        bytes_.append(sizeof number, '\0');
        qToLittleEndian(number, bytes_.data() + bytes_.size() - sizeof number);
    }

    QByteArray bytes_;
};

TableRules noRules(const TableDefinition& table) {
    TableRules rules;
    rules.columns.resize(table.columns.size());
    return rules;
}

TableRules refused(const TableDefinition& table, const QString& reason) {
    TableRules rules = noRules(table);
    rules.refusal = reason;
    return rules;
}

}  // namespace

TableRules rulesOf(const TableDefinition& table, const QByteArray& properties) {
    TableRules rules = noRules(table);
    if (properties.isEmpty()) {
        return rules;
    }
    if (!properties.startsWith(QByteArray("MR2\0", kMark)) &&
        !properties.startsWith(QByteArray("KKD\0", kMark))) {
        throwDamaged("a list of properties is of no known kind");
    }
    const PropertyReader reader{Bytes(properties)};
    for (const Property& property : reader.properties()) {
        apply(property, table, rules);
    }
    return rules;
}

QByteArray propertiesOf(const TableDefinition& table, const TableRules& rules) {
    // All names stand there in any case. Without them the list could be so short that it would be
    // kept in the row of the catalog, where the Access program does not look for it.
    PropertyWriter names;
    names.addText(kRequiredName);
    names.addText(kAllowsEmptyName);
    names.addText(kDefaultName);
    PropertyWriter blocks;
    for (std::size_t i = 0; i < table.columns.size(); ++i) {
        const Column& column = table.columns[i];
        PropertyWriter flags;
        if (rules.columns[i].isRequired) {
            flags.addFlag(0, true);
        }
        if (column.type == FieldType::Text || column.type == FieldType::Memo) {
            flags.addFlag(1, rules.columns[i].allowsEmpty);
        }
        if (!rules.columns[i].defaultExpression.isEmpty()) {
            flags.addExpression(2, rules.columns[i].defaultExpression);
        }
        if (flags.bytes().isEmpty()) {
            continue;
        }
        PropertyWriter owner;
        owner.addU32(6 + column.name.size() * 2);
        owner.addText(column.name);
        blocks.addBlock(kOfColumn, owner.bytes() + flags.bytes());
    }
    if (blocks.bytes().isEmpty()) {
        return {};
    }
    PropertyWriter all;
    all.addBlock(kNames, names.bytes());
    return QByteArray("MR2\0", kMark) + all.bytes() + blocks.bytes();
}

TableRules readTableRules(PageFile& file, const TableDefinition& table) {
    if (file.header().isJet3()) {
        return refused(table, QStringLiteral("files of Access 97 are read only"));
    }
    if (table.isSystem) {
        return refused(table, QStringLiteral("the table belongs to the Access program"));
    }
    const TableDetails details = tableDetails(file, table.page);
    if (details.hasMacros) {
        return refused(table, QStringLiteral("the table has data macros, which only the Access "
                                             "program can run"));
    }
    try {
        return rulesOf(table, details.properties);
    } catch (const data::Error&) {
        return refused(table, QStringLiteral("the properties of the table cannot be read"));
    }
}

}  // namespace varo::access
