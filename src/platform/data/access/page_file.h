#pragma once

#include "platform/data/access/bytes.h"
#include "platform/data/access/format.h"

#include <QString>

#include <list>
#include <memory>
#include <unordered_map>

namespace varo::access {

using PageNumber = quint32;

/// What the first byte of a page says.
enum class PageKind : quint8 {
    Header = 0,
    Data = 1,
    Table = 2,
    IndexNode = 3,
    IndexLeaf = 4,
    UsageMap = 5
};

/// A page in memory. It stays as it is while somebody holds it, whatever is written.
using Page = std::shared_ptr<const QByteArray>;

/// The pages of an open Access file. Those that were read last are kept, kCachedBytes of them.
/// Everything that fails throws data::Error.
class PageFile {
  public:
    /// Opens the file at `path`, which has this header, for reading only.
    PageFile(const QString& path, const Header& header);
    ~PageFile();
    Q_DISABLE_COPY_MOVE(PageFile)

    const Header& header() const noexcept { return header_; }
    const Layout& layout() const noexcept { return layout_; }
    quint32 pageCount() const noexcept { return pageCount_; }

    /// The page with this number. Throws Error when the file has no such page.
    Page page(PageNumber number);

    /// The same; throws Error when it is not of this kind.
    Page page(PageNumber number, PageKind kind);

    /// Keeps other programs of ours from writing until endReading(), which is to be called as
    /// often. Forgets the pages that were read before when the file has been changed since. Throws
    /// Error that isLocked() when another program is writing.
    void beginReading();
    void endReading() noexcept;

  private:
    static constexpr qint64 kCachedBytes = 8 << 20;

    struct Kept {
        Page page;
        std::list<PageNumber>::iterator used;
    };

    struct State {
        qint64 size;
        qint64 modified;  ///< in nanoseconds
        qint64 changed;
        bool operator==(const State&) const = default;
    };

    State state() const;
    void setState(const State& state);
    QByteArray readPage(PageNumber number) const;

    Header header_;
    const Layout& layout_;
    int descriptor_;
    quint32 pageCount_ = 0;
    State state_{};
    int readers_ = 0;
    std::unordered_map<PageNumber, Kept> kept_;
    std::list<PageNumber> used_;  ///< the last one first
};

}  // namespace varo::access
