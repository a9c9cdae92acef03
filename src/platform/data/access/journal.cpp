#include "platform/data/access/journal.h"

#include "platform/data/access/checksum.h"
#include "platform/data/access/file_layer.h"
#include "platform/data/error.h"

#include <QFile>
#include <QRandomGenerator>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <set>
#include <sys/stat.h>
#include <unistd.h>

namespace varo::access {

namespace {

constexpr QByteArrayView kMagic("Varo journal 1\0\0", 16);

// The header, all numbers of which are little-endian.
constexpr int kPageSizePlace = 16;
constexpr int kNewPageCount = 20;
constexpr int kFormerSize = 24;
// At 32: a random number, so that no two journals have the same checksums.
constexpr int kRecordCount = 40;
constexpr int kHeaderLength = 48;

// A record: the number of the page, 1 if it has an old content, that, and the checksums of the
// sectors of the new one. Behind the last record is the checksum of all that is before it.
constexpr int kHasContent = 4;
constexpr int kRecordHead = 8;
constexpr int kChecksumLength = 8;

/// What a disk writes whole or not at all.
constexpr int kSector = 512;

constexpr qsizetype kPiece = 1 << 20;

quint64 checksumOf(QByteArrayView bytes) {
    Checksum checksum;
    checksum.add(bytes.data(), bytes.size());
    return checksum.value();
}

template <class Number>
void append(QByteArray& bytes, Number number) {
    char little[sizeof number];
    qToLittleEndian(number, little);
    bytes.append(little, sizeof number);
}

bool isZero(QByteArrayView bytes) {
    return std::all_of(bytes.begin(), bytes.end(), [](char byte) { return byte == 0; });
}

qint64 sizeOf(int descriptor) {
    struct stat found {};
    if (::fstat(descriptor, &found) != 0) {
        throwSystemError();
    }
    return found.st_size;
}

[[noreturn]] void throwNoJournal(const QString& path) {
    throw data::Error(QStringLiteral("%1: lies in the place of a journal but is none; move it away "
                                     "to open the database without it")
                          .arg(path));
}

/// Writes bytes to a file one after another, and sums them up.
class Writer {
  public:
    explicit Writer(int descriptor) : descriptor_(descriptor) {}

    /// Where the next byte comes.
    qint64 place() const { return written_ + buffer_.size(); }

    void add(const QByteArray& bytes) {
        checksum_.add(bytes.constData(), bytes.size());
        buffer_ += bytes;
        if (buffer_.size() >= kPiece) {
            flush();
        }
    }

    void finish() {
        append(buffer_, checksum_.value());
        flush();
        FileLayer::current().sync(descriptor_);
    }

  private:
    void flush() {
        FileLayer::current().write(descriptor_, buffer_, written_);
        written_ += buffer_.size();
        buffer_.clear();
    }

    int descriptor_;
    qint64 written_ = 0;
    QByteArray buffer_;
    Checksum checksum_;
};

QByteArray recordOf(PageNumber number, const Page& before, const QByteArray& after) {
    QByteArray record;
    append(record, number);
    append(record, quint32{before != nullptr});
    if (before) {
        record += *before;
    }
    for (qsizetype at = 0; at < after.size(); at += kSector) {
        append(record, checksumOf(QByteArrayView(after).sliced(at, kSector)));
    }
    return record;
}

}  // namespace

QString Journal::pathOf(const QString& path) {
    return path + QStringLiteral("-varo-journal");
}

bool Journal::exists(const QString& journalPath) {
    struct stat found {};
    return ::lstat(QFile::encodeName(journalPath).constData(), &found) == 0;
}

Journal::Journal(const QString& journalPath, int descriptor)
    : path_(journalPath), descriptor_(descriptor) {}

Journal::Journal(const QString& journalPath)
    : Journal(journalPath, ::open(QFile::encodeName(journalPath).constData(),
                                  O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC)) {
    if (descriptor_ < 0) {
        if (errno == ELOOP) {
            throwNoJournal(path_);
        }
        throw data::Error(QStringLiteral("%1: %2").arg(path_, qt_error_string(errno)));
    }
    struct stat found {};
    if (::fstat(descriptor_, &found) != 0 || !S_ISREG(found.st_mode) || found.st_nlink > 1) {
        throwNoJournal(path_);
    }
}

Journal::~Journal() {
    if (descriptor_ >= 0) {
        ::close(descriptor_);
    }
}

std::unique_ptr<Journal> Journal::write(const QString& journalPath, int pageSize,
                                        const Former& before, PageChanges& changes) {
    FileLayer& layer = FileLayer::current();
    std::unique_ptr<Journal> journal(
        new Journal(journalPath, layer.create(journalPath, before.permissions)));
    journal->pageSize_ = pageSize;
    journal->formerSize_ = before.size;
    journal->newPageCount_ = changes.pageCount();
    const auto formerCount = static_cast<PageNumber>(before.size / pageSize);
    try {
        std::set<PageNumber> numbers;
        for (const PageNumber number : changes.numbers()) {
            numbers.insert(number);
        }
        // The header and the map of free pages: by them another file is told, and one in which
        // another program has taken or released a page since.
        for (PageNumber number = 0; number < std::min<PageNumber>(2, formerCount); ++number) {
            numbers.insert(number);
        }
        QByteArray header(kMagic.data(), kMagic.size());
        append(header, static_cast<quint32>(pageSize));
        append(header, journal->newPageCount_);
        append(header, static_cast<quint64>(before.size));
        append(header, QRandomGenerator::system()->generate64());
        append(header, static_cast<quint64>(numbers.size()));
        Writer writer(journal->descriptor_);
        writer.add(header);
        for (const PageNumber number : numbers) {
            const Page old = number < formerCount ? before.page(number) : nullptr;
            const Page changed = changes.find(number);
            const qint64 content = writer.place() + kRecordHead;
            journal->records_[number] = {old ? content : 0, content + (old ? pageSize : 0)};
            writer.add(recordOf(number, old, changed ? *changed : *old));
        }
        writer.finish();
        layer.syncFolderOf(journalPath);
    } catch (...) {
        try {
            journal->remove();
        } catch (const data::Error&) {
            // What is left is not whole, or is that of a file that has not been changed.
        }
        throw;
    }
    return journal;
}

bool Journal::isWhole(qint64 size) const {
    Checksum checksum;
    const qint64 end = size - kChecksumLength;
    for (qint64 at = 0; at < end; at += kPiece) {
        const QByteArray piece = readAt(descriptor_, at, std::min<qint64>(kPiece, end - at));
        if (piece.size() % 8 != 0) {
            return false;
        }
        checksum.add(piece.constData(), piece.size());
    }
    const QByteArray stated = readAt(descriptor_, end, kChecksumLength);
    return stated.size() == kChecksumLength &&
           qFromLittleEndian<quint64>(stated.constData()) == checksum.value();
}

bool Journal::readRecords(int pageSize) {
    const qint64 size = sizeOf(descriptor_);
    const QByteArray header = readAt(descriptor_, 0, kHeaderLength);
    QByteArrayView magic = QByteArrayView(header).first(std::min(header.size(), kMagic.size()));
    if (magic != kMagic.first(magic.size()) && !isZero(magic)) {
        throwNoJournal(path_);
    }
    if (header.size() < kHeaderLength || size < kHeaderLength + kChecksumLength ||
        magic != kMagic || !isWhole(size)) {
        return false;
    }
    const Bytes stated(header);
    pageSize_ = static_cast<int>(stated.u32(kPageSizePlace));
    newPageCount_ = stated.u32(kNewPageCount);
    formerSize_ = static_cast<qint64>(stated.u64(kFormerSize));
    const quint64 count = stated.u64(kRecordCount);
    const qint64 checksums = pageSize / kSector * kChecksumLength;
    if (pageSize_ != pageSize || formerSize_ < 0 || formerSize_ % pageSize != 0) {
        throwNoJournal(path_);
    }
    qint64 at = kHeaderLength;
    qint64 last = -1;
    for (quint64 i = 0; i < count; ++i) {
        const QByteArray head = readAt(descriptor_, at, kRecordHead);
        const auto number =
            head.size() < kRecordHead ? 0 : qFromLittleEndian<quint32>(head.constData());
        const bool hasContent = number < formerSize_ / pageSize;
        const qint64 content = hasContent ? pageSize : 0;
        const qint64 end = at + kRecordHead + content + checksums;
        if (head.size() < kRecordHead || number <= last || number >= newPageCount_ ||
            end > size - kChecksumLength ||
            hasContent != (qFromLittleEndian<quint32>(head.constData() + kHasContent) != 0)) {
            throwNoJournal(path_);
        }
        records_[number] = {hasContent ? at + kRecordHead : 0, at + kRecordHead + content};
        last = number;
        at = end;
    }
    return true;
}

bool Journal::matches(PageNumber number, const Record& record, const QByteArray& found) const {
    const Page before = record.content == 0 ? nullptr : formerPage(number);
    if (before && found.size() != pageSize_) {
        return false;
    }
    const QByteArray checksums =
        readAt(descriptor_, record.checksums, pageSize_ / kSector * kChecksumLength);
    for (qsizetype at = 0; at < found.size(); at += kSector) {
        const QByteArrayView sector =
            QByteArrayView(found).sliced(at, std::min<qsizetype>(kSector, found.size() - at));
        const bool isBefore = before
                                  ? sector == QByteArrayView(*before).sliced(at, sector.size())
                                  // A file that grows can be of any length when its disk is full.
                                  : isZero(sector) || sector.size() < kSector;
        if (!isBefore &&
            checksumOf(sector) != qFromLittleEndian<quint64>(checksums.constData() +
                                                             at / kSector * kChecksumLength)) {
            return false;
        }
    }
    return true;
}

Journal::Finding Journal::find(int file, int pageSize) {
    if (!readRecords(pageSize)) {
        return Finding::Incomplete;
    }
    const qint64 size = sizeOf(file);
    if (size < formerSize_ || size > qint64{newPageCount_} * pageSize) {
        return Finding::Unknown;
    }
    const bool allMatch = std::all_of(records_.begin(), records_.end(), [&](const auto& entry) {
        const auto& [number, record] = entry;
        return matches(number, record, readAt(file, qint64{number} * pageSize, pageSize));
    });
    return allMatch ? Finding::Applicable : Finding::Unknown;
}

Page Journal::formerPage(PageNumber number) const {
    const auto found = records_.find(number);
    if (found == records_.end() || found->second.content == 0) {
        return nullptr;
    }
    auto page =
        std::make_shared<const QByteArray>(readAt(descriptor_, found->second.content, pageSize_));
    if (page->size() != pageSize_) {
        throwNoJournal(path_);
    }
    return page;
}

void Journal::rollBack(int file) {
    FileLayer& layer = FileLayer::current();
    for (const auto& [number, record] : records_) {
        if (const Page page = formerPage(number)) {
            layer.write(file, *page, qint64{number} * pageSize_);
        }
    }
    if (sizeOf(file) > formerSize_) {
        layer.resize(file, formerSize_);
    }
    layer.sync(file);
    remove();
}

void Journal::remove() {
    FileLayer& layer = FileLayer::current();
    layer.remove(path_);
    try {
        layer.syncFolderOf(path_);
    } catch (const data::Error&) {
        // Should the journal come back after a power failure, it takes the file back to a state
        // that was whole, or it does not fit the file any more.
    }
}

}  // namespace varo::access
