// Damage to the maps of pages, and what the check says of it.

#include "platform/data/access/index_page.h"
#include "platform/data/access/page_check.h"
#include "platform/data/access/tree_index_keeper.h"
#include "platform/data/access_created_file.h"

#include <gtest/gtest.h>

namespace varo::access {
namespace {

/// A table of some pages of rows, long values and indexes, whose maps are to be damaged.
class AccessPageCheck : public testing::Test {
  protected:
    AccessPageCheck()
        : created(Version::Jet4, {{.name = u"T"_s,
                                   .columns = {textColumn(u"a"_s, 200),
                                               {.name = u"b"_s, .type = FieldType::Memo},
                                               {.name = u"c"_s, .type = FieldType::Ole}},
                                   .indexes = {{.name = u"I"_s, .columns = {u"a"_s}}}}}),
          file(*created.file),
          table(created.table(u"T"_s)) {
        TableRules rules;
        rules.columns.resize(table.columns.size());
        TreeIndexKeeper indexes(file, table, u"T"_s);
        TableWriter writer(file, table, rules, indexes);
        file.begin();
        for (int i = 0; i < 60; ++i) {
            const Value memo = Text{QByteArray(900, 'm')};
            writer.insert({Text{QByteArray(150, static_cast<char>('A' + i % 26))}, memo,
                           Value(QByteArray(9000, 'p'))});
        }
        rowPages = markedPages(file, table.ownedPages);
        memoPages = markedPages(file, table.longValuePages[0].owned);
        indexPages = markedPages(file, table.indexes[0].pages);
    }

    /// Marks a page as free, though it is used.
    void free(PageNumber page) {
        setFree(file, {kMapsPage, 0}, page, true, [&] { return file.add(); });
    }

    /// Puts bytes onto the page of the definition.
    void define(int at, RowPlace place) { place.write(file.change(table.page) + at); }

    Created created;
    PageFile& file;
    TableDefinition table;
    std::vector<PageNumber> rowPages;
    std::vector<PageNumber> memoPages;
    std::vector<PageNumber> indexPages;
};

TEST_F(AccessPageCheck, NamesWhatIsWrongWithTheMaps) {
    ASSERT_TRUE(rowPages.size() > 2 && memoPages.size() > 2 && indexPages.size() > 2);
    ASSERT_EQ(checkPages(file), QStringList());
    const PageNumber definition = table.page;
    const LongValuePages& memo = table.longValuePages[0];
    const LongValuePages& ole = table.longValuePages[1];
    const Index& index = table.indexes[0];
    const QString danger =
        u"page %1 is in use (%2) and marked as free: the next change may "
        "overwrite it"_s;
    const QString wrong = u"page %1 is marked as one of %2, but is of another kind or table"_s;
    const QString rows = u"the rows of the table T"_s;
    const QString memos = u"the long values of the column b of the table T"_s;
    const QString oles = u"the long values of the column c of the table T"_s;
    const QString entries = u"the index I of the table T"_s;
    const auto at = [](const QString& text, PageNumber page, const QString& what) {
        return text.arg(page).arg(what);
    };
    const struct {
        std::function<void()> damage;
        QStringList findings;
    } kCases[] = {
        {[&] { free(rowPages[1]); }, {at(danger, rowPages[1], rows)}},
        {[&] { free(indexPages[1]); }, {at(danger, indexPages[1], entries)}},
        {[&] { free(kMapsPage); }, {at(danger, kMapsPage, u"maps of pages"_s)}},
        {[&] { free(definition); }, {at(danger, definition, u"the definition of the table T"_s)}},
        {[&] {  // a danger comes first
             setMarked(file, table.ownedPages, definition, true);
             free(memoPages[0]);
         },
         {at(danger, memoPages[0], memos), at(wrong, definition, rows)}},
        {[&] { setMarked(file, table.ownedPages, indexPages[0], true); },
         {at(wrong, indexPages[0], rows)}},
        {[&] { setMarked(file, table.ownedPages, kMapsPage, true); }, {at(wrong, kMapsPage, rows)}},
        {[&] { setMarked(file, index.pages, rowPages[0], true); },
         {at(wrong, rowPages[0], entries)}},
        {[&] { setMarked(file, index.pages, indexPages[1], false); },
         {at(u"page %1 is not marked as one of %2"_s, indexPages[1], entries)}},
        {[&] { setMarked(file, ole.owned, memoPages[0], true); },
         {at(u"page %1 is used twice: %2, and "_s, memoPages[0], memos) + oles}},
        {[&] { setMarked(file, memo.withRoom, rowPages[0], true); },
         {at(u"page %1 is marked as one with room for %2, but is none of them"_s, rowPages[0],
             memos)}},
        {[&] {
             setMarked(file, table.ownedPages, rowPages[1], false);
             setMarked(file, table.pagesWithRoom, rowPages[1], false);
         },
         {at(u"page %1 has rows of the table %2, but is not marked as one of its pages"_s,
             rowPages[1], u"T"_s)}},
        {[&] { define(file.layout().ownedPages + 4, table.ownedPages); },
         {u"%1 and %1, with room have the same map of pages"_s.arg(rows)}},
        {[&] { file.add(); },
         {u"pages that nothing uses and that are not marked as free: 1 (the file is only larger "
          "for them)"_s}},
    };
    for (const auto& [damage, findings] : kCases) {
        SCOPED_TRACE(findings.front().toStdString());
        const int savepoint = file.setSavepoint();
        damage();
        EXPECT_EQ(checkPages(file), findings);
        file.undoTo(savepoint);
        file.releaseSavepoint(savepoint);
    }
}

TEST_F(AccessPageCheck, FindsLongValuesOnPagesThatMayBeTaken) {
    const LongValuePages& memo = table.longValuePages[0];
    setMarked(file, memo.owned, memoPages[0], false);
    setMarked(file, memo.withRoom, memoPages[0], false);
    EXPECT_TRUE(checkPages(file).value(0).startsWith(u"page %1 has some of"_s.arg(memoPages[0])));
    free(memoPages[0]);
    EXPECT_TRUE(checkPages(file).value(0).startsWith(u"page %1 is in use"_s.arg(memoPages[0])));
}

TEST_F(AccessPageCheck, EndsForPagesThatLeadInCircles) {
    const PageNumber root = table.indexes[0].root;
    IndexPage node = readIndexPage(file.layout(), Bytes(*file.page(root)));
    ASSERT_TRUE(node.isNode);
    node.children.back().page = root;
    writeIndexPage(file.layout(), node, file.change(root));
    EXPECT_EQ(checkPages(file),
              QStringList(u"page %1 is twice in the index I of the table T"_s.arg(root)));
}

}  // namespace
}  // namespace varo::access
