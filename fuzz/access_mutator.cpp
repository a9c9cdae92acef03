#include "access_mutator.h"

#include "platform/data/access/data_page.h"

#include <array>

namespace varo::fuzz {

namespace {

using namespace access;

std::string littleEndian(std::uint32_t number, std::size_t length) {
    std::string bytes;
    for (std::size_t i = 0; i < length; ++i) {
        bytes += static_cast<char>(number >> (8 * i));
    }
    return bytes;
}

/// A place in a page at which a field of the format may be.
std::size_t placeIn(const AccessBase& base, const access::Bytes& page, Chance& chance) {
    const Layout& layout = base.header.layout();
    const auto size = static_cast<std::size_t>(layout.pageSize);
    const auto at = [](int place) { return static_cast<std::size_t>(place); };
    switch (static_cast<PageKind>(page.byte(0))) {
        case PageKind::Data: {
            const int rows = rowCount(layout, page);
            if (rows == 0 || chance.below(4) == 0) {
                break;
            }
            const auto row = static_cast<int>(chance.below(at(rows)));
            if (chance.below(3) == 0) {
                return at(layout.rowOffsets + row * 2);
            }
            const RowEntry entry = rowEntry(layout, page, row);
            const std::size_t length = at(entry.end - entry.begin);
            const std::size_t skipped =
                std::min<std::size_t>(chance.below(24), length > 0 ? length - 1 : 0);
            return chance.below(2) == 0 ? at(entry.begin) + skipped : at(entry.end) - 1 - skipped;
        }
        case PageKind::Table:
            return chance.below(2) == 0 ? chance.below(at(layout.realIndexes)) : chance.below(size);
        case PageKind::IndexNode:
        case PageKind::IndexLeaf:
            switch (chance.below(3)) {
                case 0:
                    return chance.below(at(layout.indexMask));
                case 1:
                    return at(layout.indexMask) + chance.below(16);
                default:
                    return at(layout.indexEntries) + chance.below(96);
            }
        default:
            break;
    }
    return chance.below(chance.below(2) == 0 ? 24 : size);
}

/// Bytes for the place at `at` of a file.
std::string content(const AccessBase& base, qsizetype at, Chance& chance) {
    const QByteArray& file = base.content;
    constexpr std::array<std::size_t, 6> kLengths{1, 1, 2, 2, 3, 4};
    const std::size_t length = kLengths[chance.below(kLengths.size())];
    const auto pages = static_cast<std::size_t>(file.size() / base.pageSize());
    constexpr std::array<std::uint32_t, 14> kNumbers{
        0,      1,      2,      0xFF,       0x7F,       0x80,       0xFFFF,
        0x4000, 0x8000, 0xC000, 0x7FFFFFFF, 0x80000000, 0xC0000000, 0xFFFFFFFF};
    switch (chance.below(7)) {
        case 0:
            return littleEndian(kNumbers[chance.below(kNumbers.size())], length);
        case 1:
            return littleEndian(static_cast<std::uint32_t>(chance.below(pages + 2)), length);
        case 2:  // a place of a row
            return littleEndian(static_cast<std::uint32_t>(chance.below(pages + 2) << 8 |
                                                           chance.below(chance.below(256) + 1)),
                                4);
        case 3: {  // a bit
            const auto bit = static_cast<std::uint8_t>(1U << chance.below(8));
            return {1, static_cast<char>(static_cast<std::uint8_t>(file[at]) ^ bit)};
        }
        case 4: {  // a number of two bytes that is some more or less
            const auto low = static_cast<std::uint8_t>(file[at]);
            const auto high = static_cast<std::uint8_t>(file[std::min(at + 1, file.size() - 1)]);
            const auto number = static_cast<std::uint32_t>(low | high << 8);
            return littleEndian(number + static_cast<std::uint32_t>(chance.below(33)) - 16, 2);
        }
        case 5: {  // what is elsewhere
            const auto from =
                static_cast<qsizetype>(chance.below(static_cast<std::size_t>(file.size())));
            return file.mid(from, static_cast<qsizetype>(1 + chance.below(32))).toStdString();
        }
        default:
            return littleEndian(static_cast<std::uint32_t>(chance.below(0xFFFFFFFF)), length);
    }
}

AccessEdit newEdit(const AccessInput& input, const AccessBase& base, Chance& chance) {
    constexpr std::size_t kNumbers = 0x10000;
    AccessEdit edit;
    const std::size_t where = chance.below(40);
    edit.place = where == 0  ? AccessPlace::Cut
                 : where < 4 ? AccessPlace::AnyPage
                 : where < 8 ? AccessPlace::CatalogPage
                             : AccessPlace::TablePage;
    edit.page = static_cast<std::uint16_t>(chance.below(kNumbers));
    if (input.task == AccessTask::Journal && chance.below(2) == 0) {
        edit.place = AccessPlace::Journal;
        edit.page = 0;
        edit.offset = static_cast<std::uint16_t>(chance.below(2) == 0 ? chance.below(64)
                                                                      : chance.below(kNumbers));
        edit.bytes = content(base, edit.offset % base.content.size(), chance);
        return edit;
    }
    const qsizetype page = base.placeOf(input, edit);
    const access::Bytes bytes(base.content.constData() + page, base.pageSize());
    edit.offset = static_cast<std::uint16_t>(placeIn(base, bytes, chance));
    edit.bytes = content(base, base.placeOf(input, edit), chance);
    return edit;
}

}  // namespace

void changeAccess(AccessInput& input, Chance& chance, const std::vector<AccessBase>& bases) {
    const auto byte = [&] { return static_cast<std::uint8_t>(chance.below(256)); };
    const AccessBase& base = bases[input.base % bases.size()];
    const std::size_t kind = chance.below(16);
    if (kind == 0) {
        input.base = byte();
    } else if (kind == 1) {
        input.table = byte();
    } else if (kind == 2) {
        input.task = static_cast<AccessTask>(chance.below(kAccessTasks));
    } else if (kind == 3) {
        input.detail = byte();
    } else if (kind < 7 && !input.edits.empty()) {
        input.edits.erase(input.edits.begin() +
                          static_cast<std::ptrdiff_t>(chance.below(input.edits.size())));
    } else if (kind < 9 && !input.edits.empty()) {
        AccessEdit& edit = input.edits[chance.below(input.edits.size())];
        if (edit.place != AccessPlace::Journal) {
            edit.bytes = content(base, base.placeOf(input, edit), chance);
        }
    } else {
        input.edits.push_back(newEdit(input, base, chance));
    }
}

}  // namespace varo::fuzz
