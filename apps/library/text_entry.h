#pragma once

#include "library/text_error.h"

#include <QByteArrayView>
#include <QList>
#include <QString>
#include <QStringDecoder>

#include <algorithm>
#include <initializer_list>
#include <optional>
#include <string_view>
#include <toml++/toml.h>
#include <utility>
#include <vector>

namespace varo {

inline Position positionOf(const toml::source_region& region) {
    return {static_cast<int>(region.begin.line), static_cast<int>(region.begin.column)};
}

/// A U+FEFF at the beginning is part of the text.
inline QString toText(std::string_view utf8) {
    QStringDecoder decoder(QStringConverter::Utf8, QStringConverter::Flag::ConvertInitialBom);
    return decoder(QByteArrayView(utf8.data(), static_cast<qsizetype>(utf8.size())));
}

inline QString quoted(std::string_view name) {
    return u'"' + toText(name) + u'"';
}

inline bool fits(qint64 number) {
    return std::in_range<qint32>(number);
}

/// One table of the text. Every member throws TextError with the place at fault.
class Entry {
  public:
    /// `kind` names the table in messages; a key that is not in `keys` is an error.
    Entry(const QString& path, const QString& kind, const toml::table& table,
          std::initializer_list<std::string_view> keys)
        : path_(path), kind_(kind), table_(table) {
        for (const auto& [key, node] : table_) {
            if (std::find(keys.begin(), keys.end(), key.str()) == keys.end()) {
                fail(positionOf(key.source()),
                     QStringLiteral("%1 has no key %2").arg(kind_, quoted(key.str())));
            }
        }
    }

    Position position() const { return positionOf(table_.source()); }

    Position position(std::string_view key) const {
        const toml::node* node = table_.get(key);
        return node ? positionOf(node->source()) : position();
    }

    bool has(std::string_view key) const { return table_.contains(key); }

    QString text(std::string_view key) const { return textOf(key, required(key)); }

    QString textOr(std::string_view key, const QString& absent) const {
        const toml::node* node = table_.get(key);
        return node ? textOf(key, *node) : absent;
    }

    qint32 integer(std::string_view key) const { return integerOf(key, required(key)); }

    qint32 integerOr(std::string_view key, qint32 absent) const {
        const toml::node* node = table_.get(key);
        return node ? integerOf(key, *node) : absent;
    }

    std::optional<qint32> integerIfAny(std::string_view key) const {
        return has(key) ? std::optional(integer(key)) : std::nullopt;
    }

    const toml::table& table(std::string_view key) const {
        const toml::table* inner = required(key).as_table();
        if (!inner) {
            fail(position(key), QStringLiteral("%1 must be a table { ... }").arg(quoted(key)));
        }
        return *inner;
    }

    /// The text entries of a table of free keys, in the order in which they are written.
    std::vector<std::pair<QString, QString>> textPairs() const {
        std::vector<std::pair<const toml::key*, const toml::node*>> pairs;
        for (const auto& [key, node] : table_) {
            pairs.emplace_back(&key, &node);
        }
        std::sort(pairs.begin(), pairs.end(), [](const auto& a, const auto& b) {
            return a.first->source().begin < b.first->source().begin;
        });
        std::vector<std::pair<QString, QString>> texts;
        for (const auto& [key, node] : pairs) {
            requireStorable(positionOf(key->source()), key->str());
            texts.emplace_back(toText(key->str()), textOf(key->str(), *node));
        }
        return texts;
    }

    /// The place of the character at `line` and `column` of the text `key`, or that of the text
    /// when it is not written as it stands.
    Position position(std::string_view key, int line, int column) const {
        const toml::source_region& region = required(key).source();
        const QList<uint> characters = text(key).toUcs4();
        const bool isPlain = region.begin.line == region.end.line &&
                             region.end.column - region.begin.column == characters.size() + 2;
        Position at = positionOf(region);
        if (isPlain && line == 1) {
            at.column += static_cast<int>(text(key).left(column - 1).toUcs4().size()) + 1;
        }
        return at;
    }

    /// `message` with its place, as the errors have it.
    QString described(Position at, const QString& message) const {
        return TextError(path_, at, message).description();
    }

    [[noreturn]] void fail(Position at, const QString& message) const {
        throw TextError(path_, at, message);
    }

    /// A table whose keys are free.
    static Entry free(const QString& path, const QString& kind, const toml::table& table) {
        return Entry(path, kind, table);
    }

  private:
    Entry(const QString& path, const QString& kind, const toml::table& table)
        : path_(path), kind_(kind), table_(table) {}

    const toml::node& required(std::string_view key) const {
        const toml::node* node = table_.get(key);
        if (!node) {
            fail(position(), QStringLiteral("%1 needs %2").arg(kind_, quoted(key)));
        }
        return *node;
    }

    QString textOf(std::string_view key, const toml::node& node) const {
        const auto* text = node.as_string();
        if (!text) {
            fail(positionOf(node.source()),
                 QStringLiteral("%1 must be a text in quotes").arg(quoted(key)));
        }
        requireStorable(positionOf(node.source()), text->get());
        return toText(text->get());
    }

    void requireStorable(Position at, std::string_view text) const {
        if (text.find('\0') != std::string_view::npos) {
            fail(at, QStringLiteral("a text cannot hold U+0000"));
        }
    }

    qint32 integerOf(std::string_view key, const toml::node& node) const {
        const auto* number = node.as_integer();
        if (!number || !fits(number->get())) {
            fail(positionOf(node.source()),
                 QStringLiteral("%1 must be a whole number of 32 bits").arg(quoted(key)));
        }
        return static_cast<qint32>(number->get());
    }

    const QString& path_;
    const QString kind_;
    const toml::table& table_;
};

}  // namespace varo
