#include "platform/data/access/page_check.h"

#include "platform/data/access/catalog.h"
#include "platform/data/access/data_page.h"
#include "platform/data/access/index_page.h"
#include "platform/data/access/long_value_format.h"
#include "platform/data/access/row.h"

#include <algorithm>
#include <map>

namespace varo::access {

namespace {

using namespace Qt::Literals::StringLiterals;

/// What a page is for, by its place among the names of all uses; kNone for none.
using Use = quint32;
constexpr Use kNone = 0;

class PageCheck {
  public:
    explicit PageCheck(PageFile& file)
        : file_(file),
          use_(file.pageCount(), kNone),
          isFree_(file.pageCount(), false),
          marksLeft_(quint64{file.pageCount()} * kMostUses + kMostUses) {}

    QStringList findings() {
        try {
            readFreePages();
            note(u"the catalog"_s, [&] {
                for (const CatalogEntry& table : allTables(file_)) {
                    checkTable(table);
                }
            });
            checkUnused();
        } catch (const TooMany&) {
            add(&others_, u"the maps of pages mark more pages than the file can have"_s);
        }
        return dangers_ + others_;
    }

  private:
    struct TooMany {};

    static constexpr int kMostUses = 8;   ///< of a page on the average, in a file made to be slow
    static constexpr int kMostEach = 20;  ///< findings of a kind that are told

    void add(QStringList* list, const QString& finding) {
        if (list->size() < kMostEach) {
            list->append(finding);
        }
    }

    Use useNamed(const QString& name) {
        names_.append(name);
        return static_cast<Use>(names_.size() - 1);
    }

    /// Runs `check`; what is damaged becomes a finding about `name`.
    template <class Check>
    void note(const QString& name, Check check) {
        try {
            check();
        } catch (const data::Error& error) {
            if (error.isLocked() || error.isInterrupted()) {
                throw;
            }
            isIncomplete_ = true;
            add(&others_, name + u": "_s + error.description());
        }
    }

    /// The page is for this; false when it is for something else already, or not in the file.
    bool claim(PageNumber page, Use use) {
        if (page >= use_.size()) {
            add(&others_, u"page %1 (%2) is not in the file"_s.arg(page).arg(names_[use]));
            return false;
        }
        if (use_[page] != kNone && use_[page] != use) {
            add(&others_, u"page %1 is used twice: %2, and %3"_s.arg(page).arg(names_[use_[page]],
                                                                               names_[use]));
            return false;
        }
        if (isFree_[page] && use_[page] == kNone) {
            addDanger(page, use);
        }
        use_[page] = use;
        return true;
    }

    /// The pages that a map marks. The map itself is one that no other part has.
    std::vector<PageNumber> pagesOf(RowPlace map, const QString& owner) {
        if (map.page == 0) {
            return {};
        }
        const auto [place, isNew] = maps_.try_emplace({map.page, map.row}, owner);
        if (!isNew) {
            add(&others_, u"%1 and %2 have the same map of pages"_s.arg(place->second, owner));
            isIncomplete_ = true;
            return {};
        }
        claim(map.page, kMaps);
        const std::vector<PageNumber> bits = bitPages(file_, map);
        const Use use = bits.empty() ? kNone : useNamed(u"the map of pages of "_s + owner);
        for (const PageNumber page : bits) {
            claim(page, use);
        }
        std::vector<PageNumber> pages = markedPages(file_, map);
        if (pages.size() > marksLeft_) {
            throw TooMany();
        }
        marksLeft_ -= pages.size();
        return pages;
    }

    void readFreePages() {
        constexpr PageNumber kHeaderPage = 0;
        claim(kHeaderPage, useNamed(u"the header of the file"_s));
        note(u"the map of free pages"_s, [&] {
            const std::vector<PageNumber> pages =
                pagesOf({kMapsPage, 0}, u"the free pages of the file"_s);
            for (const PageNumber page : pages) {
                isFree_[page] = true;
            }
            pagesOf({kMapsPage, 1}, u"the released pages of the file"_s);
        });
        for (PageNumber page = 0; page < use_.size(); ++page) {
            if (isFree_[page] && use_[page] != kNone) {
                addDanger(page, use_[page]);
            }
        }
    }

    void addDanger(PageNumber page, Use use) {
        add(&dangers_, QStringLiteral("page %1 is in use (%2) and marked as free: the next change "
                                      "may overwrite it")
                           .arg(page)
                           .arg(names_[use]));
    }

    /// A name of the file, no longer than one is allowed to be.
    static QString shown(const QString& name) {
        constexpr int kLongestName = 64;
        return name.left(kLongestName);
    }

    void checkTable(const CatalogEntry& entry) {
        const QString of = u" of the table "_s + shown(entry.name);
        note(u"the table "_s + shown(entry.name), [&] {
            if (!tables_.emplace(entry.page, shown(entry.name)).second) {
                throwDamaged("another table has the same definition");
            }
            const TableDefinition table = readTable(file_, entry.page);
            const Use use = useNamed(u"the definition"_s + of);
            for (const PageNumber page : definitionPages(file_, entry.page)) {
                claim(page, use);
            }
            checkRows({table.ownedPages, table.pagesWithRoom}, table.page, u"the rows"_s + of);
            std::map<int, Use> uses;
            for (const LongValuePages& pages : table.longValuePages) {
                const Column* column = table.columnByNumber(pages.column);
                const QString name =
                    column == nullptr ? u"a deleted column"_s : shown(column->name);
                uses[pages.column] =
                    checkRows({pages.owned, pages.withRoom}, kLongValueOwner,
                              u"the long values of the column %1"_s.arg(name) + of);
            }
            for (const Index& index : table.indexes) {
                const QString name = u"the index %1"_s.arg(shown(index.names.value(0))) + of;
                note(name, [&] { checkIndex(table.page, index, name); });
            }
            checkLongValues(table, uses);
        });
    }

    /// The long values to which the rows refer are on the pages that are for them.
    void checkLongValues(const TableDefinition& table, const std::map<int, Use>& uses) {
        RowScan rows(file_, table);
        while (const auto found = uses.empty() ? std::nullopt : rows.next()) {
            const Row row(file_.layout(), table, found->page, found->bytes);
            for (const auto& [number, use] : uses) {
                const Column* column = table.columnByNumber(number);
                const auto field = column == nullptr ? std::nullopt : row.field(*column);
                if (!field || field->isEmpty() || (field->u32(0) & kLongInRow) != 0) {
                    continue;
                }
                const PageNumber page = RowPlace::read(*field, kLongPlace).page;
                if (page == 0 || (page < use_.size() && use_[page] == use)) {
                    continue;
                }
                if (page < use_.size() && isFree_[page] && use_[page] == kNone) {
                    addDanger(page, use);
                } else {
                    add(&others_,
                        QStringLiteral("page %1 has some of %2, but is not marked as one of them")
                            .arg(page)
                            .arg(names_[use]));
                }
            }
        }
    }

    /// The pages of rows or long values that name `owner`, by their map and the one of those with
    /// room.
    Use checkRows(const std::pair<RowPlace, RowPlace>& maps, PageNumber owner,
                  const QString& name) {
        const Use use = useNamed(name);
        const std::vector<PageNumber> pages = pagesOf(maps.first, name);
        for (const PageNumber page : pages) {
            const Page bytes = file_.page(page);
            if (static_cast<PageKind>(bytes->at(0)) == PageKind::Data &&
                ownerOf(Bytes(*bytes)) == owner) {
                claim(page, use);
            } else {
                addWrong(page, name);
            }
        }
        for (const PageNumber page : pagesOf(maps.second, name + u", with room"_s)) {
            if (!std::binary_search(pages.begin(), pages.end(), page)) {
                add(&others_,
                    QStringLiteral("page %1 is marked as one with room for %2, but is none of them")
                        .arg(page)
                        .arg(name));
            }
        }
        return use;
    }

    void addWrong(PageNumber page, const QString& name) {
        add(&others_,
            QStringLiteral("page %1 is marked as one of %2, but is of another kind or table")
                .arg(page)
                .arg(name));
    }

    /// The pages of an index, from the root on.
    void checkIndex(PageNumber owner, const Index& index, const QString& name) {
        const Use use = useNamed(name);
        const std::vector<PageNumber> marked = pagesOf(index.pages, name);
        std::vector<PageNumber> left{index.root};
        while (!left.empty()) {
            const PageNumber number = left.back();
            left.pop_back();
            if (number < use_.size() && use_[number] == use) {
                add(&others_, u"page %1 is twice in %2"_s.arg(number).arg(name));
                isIncomplete_ = true;
                continue;
            }
            if (!claim(number, use)) {
                isIncomplete_ = true;
                continue;
            }
            if (!std::binary_search(marked.begin(), marked.end(), number)) {
                add(&others_, u"page %1 is not marked as one of %2"_s.arg(number).arg(name));
            }
            const Page bytes = file_.page(number);
            const IndexPage page = readIndexPage(file_.layout(), Bytes(*bytes));
            if (page.owner != owner) {
                add(&others_, u"page %1 of %2 is of another table"_s.arg(number).arg(name));
            }
            for (const IndexChild& child : page.children) {
                left.push_back(child.page);
            }
        }
        for (const PageNumber page : marked) {
            const auto kind = static_cast<PageKind>(file_.page(page)->at(0));
            if (kind != PageKind::IndexNode && kind != PageKind::IndexLeaf) {
                addWrong(page, name);
            }
        }
    }

    /// Pages that nothing uses. They are lost to the file, unless they have rows.
    void checkUnused() {
        quint32 unused = 0;
        for (PageNumber number = 0; number < use_.size() && !isIncomplete_; ++number) {
            if (use_[number] != kNone || isFree_[number]) {
                continue;
            }
            ++unused;
            const Page page = file_.page(number);
            const bool isData = static_cast<PageKind>(page->at(0)) == PageKind::Data;
            const auto table = isData ? tables_.find(ownerOf(Bytes(*page))) : tables_.end();
            if (table != tables_.end()) {
                add(&others_, QStringLiteral("page %1 has rows of the table %2, but is not marked "
                                             "as one of its pages")
                                  .arg(number)
                                  .arg(table->second));
                --unused;
            }
        }
        if (unused > 0) {
            add(&others_, QStringLiteral("pages that nothing uses and that are not marked as free: "
                                         "%1 (the file is only larger for them)")
                              .arg(unused));
        }
    }

    static constexpr Use kMaps = 1;

    PageFile& file_;
    std::vector<Use> use_;  ///< of each page
    std::vector<bool> isFree_;
    quint64 marksLeft_;  ///< that maps may have, so that one file does not take for ever
    QStringList names_{u"nothing"_s, u"maps of pages"_s};  ///< of the uses
    std::map<std::pair<PageNumber, int>, QString> maps_;   ///< what they are of
    std::map<PageNumber, QString> tables_;                 ///< by the page of the definition
    QStringList dangers_;
    QStringList others_;
    bool isIncomplete_ = false;  ///< not every use of a page is known
};

}  // namespace

QStringList checkPages(PageFile& file) {
    return PageCheck(file).findings();
}

}  // namespace varo::access
