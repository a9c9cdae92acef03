#include "platform/data/access/format.h"

#include "platform/data/access/bytes.h"
#include "platform/data/access/rc4.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

namespace varo::access {

namespace {

constexpr Layout kJet3{
    .pageSize = 2048,
    .rowCount = 8,
    .rowOffsets = 10,
    .definitionHeader = 8,
    .tableRowCount = 12,
    .autoNumber = 16,
    .complexAutoNumber = 0,
    .tableType = 20,
    .columnCount = 25,
    .indexCount = 27,
    .ownedPages = 35,
    .realIndexes = 43,
    .realIndexEntry = 8,
    .columnEntry = 18,
    .columnNumber = 1,
    .columnVariable = 3,
    .columnPrecision = 11,
    .columnFlags = 13,
    .columnMoreFlags = 0,
    .columnFixed = 14,
    .columnSize = 16,
    .indexEntry = 39,
    .indexColumns = 0,
    .indexPages = 30,
    .indexRoot = 34,
    .indexFlags = 38,
    .indexNameEntry = 20,
    .indexNameNumber = 0,
    .indexOther = 8,
    .indexNameKind = 19,
    .indexPrevious = 8,
    .indexNext = 12,
    .indexTail = 16,
    .indexPrefix = 20,
    .indexMask = 22,
    .indexEntries = 248,
    .hasWideNumbers = false,
};

constexpr Layout kJet4{
    .pageSize = 4096,
    .rowCount = 12,
    .rowOffsets = 14,
    .definitionHeader = 8,
    .tableRowCount = 16,
    .autoNumber = 20,
    .complexAutoNumber = 28,
    .tableType = 40,
    .columnCount = 45,
    .indexCount = 47,
    .ownedPages = 55,
    .realIndexes = 63,
    .realIndexEntry = 12,
    .columnEntry = 25,
    .columnNumber = 5,
    .columnVariable = 7,
    .columnPrecision = 11,
    .columnFlags = 15,
    .columnMoreFlags = 16,
    .columnFixed = 21,
    .columnSize = 23,
    .indexEntry = 52,
    .indexColumns = 4,
    .indexPages = 34,
    .indexRoot = 38,
    .indexFlags = 46,
    .indexNameEntry = 28,
    .indexNameNumber = 4,
    .indexOther = 12,
    .indexNameKind = 23,
    .indexPrevious = 12,
    .indexNext = 16,
    .indexTail = 20,
    .indexPrefix = 24,
    .indexMask = 27,
    .indexEntries = 480,
    .hasWideNumbers = true,
};

// The first page, from the beginning of the file; what is masked is read after applyMask().
constexpr int kName = 4;
constexpr int kNameLength = 16;
constexpr int kVersion = 0x14;
constexpr int kMasked = 0x18;
constexpr int kFreePages = 0x18;
constexpr int kReleasedPages = 0x1C;
constexpr int kSystemTables = 0x20;
constexpr int kMaskedLengthJet3 = 126;
constexpr int kMaskedLength = 128;
constexpr int kSortOrderJet3 = 0x3A;
constexpr int kCodePage = 0x3C;
constexpr int kKey = 0x3E;
constexpr int kPassword = 0x42;
constexpr int kPasswordLengthJet3 = 20;
constexpr int kPasswordLength = 40;
constexpr int kBuild = 0x6A;
constexpr int kSortOrder = 0x6E;
constexpr int kSortVersion = 0x71;
constexpr int kCreated = 0x72;
constexpr int kMark = 0x98;
constexpr int kEngine = 0x9C;
constexpr int kCommits = 0xE00;

/// Takes the mask on `length` bytes of the header away, or lays it over them: it is the same for
/// all files.
void applyMask(QByteArray& start, int length) {
    constexpr std::array<quint8, 4> kMaskKey{0xC7, 0xDA, 0x39, 0x6B};
    applyRc4(kMaskKey, {start.data() + kMasked, static_cast<std::size_t>(length)});
}

/// What is laid over each four bytes of a password: the day on which the file was made.
quint32 passwordMask(const Bytes& clear) {
    double created = 0;
    const quint64 bits = clear.u64(kCreated);
    std::memcpy(&created, &bits, sizeof created);
    const bool isDate = std::isfinite(created) && std::abs(created) < 2147483648.0;
    return isDate ? static_cast<quint32>(static_cast<qint32>(created)) : 0;
}

/// Whether the header has a password: each of its characters is masked with the date on which the
/// file was made.
bool hasPassword(const QByteArray& start, Version version) {
    const Bytes bytes(start);
    if (version == Version::Jet3) {
        const Bytes password = bytes.part(kPassword, kPasswordLengthJet3);
        return std::any_of(password.data(), password.data() + password.size(),
                           [](char c) { return c != 0; });
    }
    const quint32 mask = passwordMask(bytes);
    for (int at = 0; at < kPasswordLength; at += 4) {
        if (bytes.u32(kPassword + at) != mask) {
            return true;
        }
    }
    return false;
}

}  // namespace

const Layout& Header::layout() const {
    return isJet3() ? kJet3 : kJet4;
}

std::optional<Header> readHeader(const QByteArray& start) {
    const QByteArray name = start.mid(kName, kNameLength);
    const bool isJet = name == QByteArray("Standard Jet DB\0", kNameLength);
    const bool isAce = name == QByteArray("Standard ACE DB\0", kNameLength);
    if (start.size() < kHeaderLength || (!isJet && !isAce)) {
        return std::nullopt;
    }
    const quint32 number = Bytes(start).byte(kVersion);
    if (number > static_cast<quint32>(Version::Ace17)) {
        throw data::Error(
            QStringLiteral("the Access database is of version %1, which is not known").arg(number));
    }
    Header header{};
    header.version = static_cast<Version>(number);
    QByteArray clear = start;
    applyMask(clear, header.isJet3() ? kMaskedLengthJet3 : kMaskedLength);
    const Bytes bytes(clear);
    header.codePage = bytes.u16(kCodePage);
    header.sortOrder = bytes.u16(header.isJet3() ? kSortOrderJet3 : kSortOrder);
    header.sortVersion = header.isJet3() ? 0 : bytes.byte(kSortVersion);
    header.isEncoded = bytes.u32(kKey) != 0;
    header.hasPassword = !header.isEncoded && hasPassword(clear, header.version);
    return header;
}

QByteArray newHeaderPage(Version version, double created) {
    const Layout& layout = Header{version, 0, 0, 0, false, false}.layout();
    const bool isJet = version == Version::Jet4;
    QByteArray page(layout.pageSize, '\0');
    const auto put = [&page](int at, auto number) { qToLittleEndian(number, page.data() + at); };
    put(1, quint8{1});
    page.replace(kName, kNameLength, QByteArray(isJet ? "Standard Jet DB" : "Standard ACE DB", 16));
    put(kVersion, static_cast<quint8>(version));
    put(kFreePages, quint32{kMapsPage} << 8);
    put(kReleasedPages, quint32{kMapsPage} << 8 | 1);
    for (quint32 table = 0; table < kSystemTableCount; ++table) {
        put(kSystemTables + static_cast<int>(table) * 4, kCatalogPage + table);
    }
    put(kCodePage, kWesternCodePage);
    // The builds 4.0.8618 and 12.0.4518 of the two engines; nothing depends on them.
    put(kBuild, isJet ? quint32{8618} : quint32{4518});
    put(kSortOrder, kGeneralSortOrder);
    quint64 bits = 0;
    std::memcpy(&bits, &created, sizeof bits);
    put(kCreated, bits);
    for (int at = 0; at < kPasswordLength; at += 4) {
        put(kPassword + at, passwordMask(Bytes(page)));
    }
    applyMask(page, kMaskedLength);
    put(kMark, quint32{0x654});
    page.replace(kEngine, 3, "4.0");
    // For each user who has the file open: that none is in the middle of writing.
    for (int at = kCommits; at < layout.pageSize; at += 2) {
        put(at, quint16{0x0100});
    }
    return page;
}

QByteArray maskedSid(const QByteArray& start, const QByteArray& sid) {
    constexpr int kRounds = 40;
    constexpr int kShifts = 24;
    QByteArray clear = start.left(kHeaderLength);
    applyMask(clear, kMaskedLength);
    const quint32 mask = passwordMask(Bytes(clear));
    for (int at = 0; at < kPasswordLength; at += 4) {
        qToLittleEndian(Bytes(clear).u32(kPassword + at) ^ mask, clear.data() + kPassword + at);
    }
    quint32 number = Bytes(clear).u32(kCreated);
    for (int i = 0; i < kRounds; ++i) {
        number ^= quint32{Bytes(clear).byte(kPassword + i * 2)} << (i % kShifts);
    }
    std::array<quint8, sizeof number> key{};
    qToLittleEndian(number, key.data());
    QByteArray masked = sid;
    applyRc4(key, {masked.data(), static_cast<std::size_t>(masked.size())});
    return masked;
}

}  // namespace varo::access
