#include "platform/data/access/text_key.h"

#include "platform/data/access/text_key_data.h"

#include <algorithm>

namespace varo::access {

namespace {

constexpr quint16 kGeneralOrder = 0x0409;
constexpr quint8 kLegacyVersion = 0;
constexpr quint8 kGeneralVersion = 1;

constexpr qsizetype kMostCharacters = 255;
/// Bytes of a key that is known to be written whole.
constexpr qsizetype kMostBytes = 255;

constexpr char kEndOfPart = 1;
constexpr char kEnd = 0;
constexpr char kNoMark = 2;
constexpr int kTrails = 254;  ///< values of the second byte of a code: 2 to 255

const SortTable* sortTable(quint16 order, quint8 version) {
    if (order != kGeneralOrder || version > kGeneralVersion) {
        return nullptr;
    }
    return version == kLegacyVersion ? &legacySortTable() : &generalSortTable();
}

void appendCode(quint16 code, QByteArray& key) {
    if (code > 0xFF) {
        key += static_cast<char>(code >> 8);
    }
    key += static_cast<char>(code);
}

void appendIdeograph(const SortTable& table, char16_t character, QByteArray& key) {
    const auto after = std::upper_bound(
        table.ideographs.begin(), table.ideographs.end(), character,
        [](char16_t sought, const IdeographRun& run) { return sought < run.first; });
    const IdeographRun& run = *std::prev(after);
    const int trail = (run.code & 0xFF) - 2 + (character - run.first);
    if (table.hasWideIdeographs) {
        key += "\xFD\xFF";
    }
    appendCode(
        static_cast<quint16>(((run.code >> 8) + trail / kTrails) << 8 | (trail % kTrails + 2)),
        key);
}

/// Collects the parts of a key: the codes, the marks, the punctuation with its places.
class TextKeyWriter {
  public:
    explicit TextKeyWriter(const SortTable& table) : table_(table) {}

    /// False when the character's code is not known.
    bool add(char16_t character) {
        if (character >= kFirstIdeograph && character <= kLastIdeograph) {
            appendIdeograph(table_, character, codes_);
            marks_ += kNoMark;
            return true;
        }
        const auto found = std::lower_bound(
            table_.characters.begin(), table_.characters.end(), character,
            [](const CharacterKey& key, char16_t sought) { return key.character < sought; });
        if (found == table_.characters.end() || found->character != character) {
            return false;
        }
        if (found->isPunctuation) {
            addPunctuation(*found);
            return true;
        }
        appendCode(found->code, codes_);
        marks_ += found->mark == 0 ? kNoMark : static_cast<char>(found->mark);
        return true;
    }

    QByteArray key() const {
        QByteArray key = codes_ + kEndOfPart;
        qsizetype count = marks_.size();
        while (count > 0 && marks_.at(count - 1) == kNoMark) {
            --count;
        }
        key += marks_.left(count);
        if (!punctuation_.isEmpty()) {
            key += QByteArray(3, kEndOfPart) + punctuation_;
        }
        return key + kEnd;
    }

  private:
    void addPunctuation(const CharacterKey& character) {
        constexpr int kFirstPlace = 0x8007;
        constexpr int kPlaces = 4;
        constexpr char kPunctuation = 6;
        appendCode(static_cast<quint16>(kFirstPlace + kPlaces * static_cast<int>(marks_.size())),
                   punctuation_);
        punctuation_ += kPunctuation;
        appendCode(character.code, punctuation_);
    }

    const SortTable& table_;
    QByteArray codes_;
    QByteArray marks_;  ///< one for each code
    QByteArray punctuation_;
};

}  // namespace

std::optional<QByteArray> textKey(quint16 sortOrder, quint8 sortVersion, QStringView text) {
    const SortTable* table = sortTable(sortOrder, sortVersion);
    if (table == nullptr || text.size() > kMostCharacters) {
        return std::nullopt;
    }
    TextKeyWriter writer(*table);
    for (const QChar character : text) {
        if (!writer.add(character.unicode())) {
            return std::nullopt;
        }
    }
    QByteArray key = writer.key();
    return key.size() > kMostBytes ? std::nullopt : std::optional(std::move(key));
}

}  // namespace varo::access
