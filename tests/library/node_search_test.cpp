#include "library/node_search.h"

#include "library/open_libraries.h"
#include "library/picture_catalog.h"
#include "library/property_names.h"
#include "support/no_waiting.h"
#include "support/process.h"

namespace varo::test {
namespace {

class Find : public testing::Test, protected NoWaiting, protected OpenLibraries {
  protected:
    /// Names of what is found, joined by blanks; read in parts of `most` hits.
    QString found(const FindCriteria& criteria, int most = 1000) {
        NodeSearch search(libraries, criteria);
        search.setPatience(patience);
        hits.clear();
        steps = 0;
        double fraction = 0;
        for (std::size_t before = 0; search.advance(most, hits); before = hits.size()) {
            EXPECT_LE(hits.size() - before, static_cast<std::size_t>(most));
            EXPECT_GE(search.fraction(), std::exchange(fraction, search.fraction()));
            ++steps;
            if (pauses) {
                search.pause();
                first.connection().execute(u"Update Tree Set Name = Name"_s);
            }
        }
        failure = search.failure();
        QStringList names;
        for (std::size_t i = 0; i < hits.size(); ++i) {
            names.append(hits.at(i).name);
        }
        return names.join(u' ');
    }
    static FindCriteria byName(const QString& name, TextPlace place = TextPlace::Anywhere) {
        return {.inFolders = true, .inFormulas = true, .name = name, .namePlace = place};
    }
    static FindCriteria byMemo(const QString& memo, TextPlace place) {
        return {.inFormulas = true, .memo = memo, .memoPlace = place};
    }

    FindHits hits;
    NodeSearch::Failure failure = NodeSearch::Failure::None;
    std::chrono::milliseconds patience{1000};
    bool pauses = false;
    int steps = 0;  ///< that ended before the search did
};

TEST_F(Find, ComparesTextsByTheirCharactersWhereTheyStand) {
    for (const QString& name : {u"abc"_s, u"cab"_s, u"a%b"_s, u"a_b"_s, u"a\\b"_s, u"it's"_s,
                                u"\"q\""_s, u"AB"_s, u"Ä"_s}) {
        second.addFormula(0, name, {}, u"m"_s + name);
    }
    const struct {
        FindCriteria criteria;
        QString names;
    } cases[] = {
        {byName(u"ab"_s, TextPlace::Start), u"abc AB"_s},
        {byName(u"ab"_s, TextPlace::End), u"cab AB"_s},
        {byName(u"ab"_s), u"abc cab AB"_s},
        {byName(u"%"_s), u"a%b"_s},
        {byName(u"_"_s), u"a_b"_s},
        {{.inFolders = true, .memo = u"m"_s}, {}},
        {byName(u"\\"_s), u"a\\b"_s},
        {byName(u"a\\b"_s, TextPlace::Start), u"a\\b"_s},
        {byName(u"'"_s), u"it's"_s},
        {byName(u"' Or 1 Or '"_s), {}},
        {byName(QString(QChar(0xD800))), {}},
        {byName(QString(QChar(0))), {}},
        {byName(QString(kFindTextLimit, u'梁')), {}},
        {byName(QString(kFindTextLimit, u'%')), {}},
        {byMemo(u"mab"_s, TextPlace::Start), u"abc AB"_s},
        {byMemo(u"ab"_s, TextPlace::Start), {}},
        {byMemo(u"b"_s, TextPlace::End), u"cab a%b a_b a\\b AB"_s},
        {{.inFormulas = true, .name = u"a"_s, .memo = u"c"_s, .memoPlace = TextPlace::End},
         u"abc"_s},
        {{.inFolders = true, .inFormulas = true, .memo = u"mcab"_s}, u"cab"_s},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(found(each.criteria), each.names)
            << qPrintable(each.criteria.name + u'/' + each.criteria.memo);
        EXPECT_EQ(failure, NodeSearch::Failure::None);
    }
}

TEST_F(Find, ListsANodeOnceForALibraryAndKind) {
    for (const int property : {1, 2}) {
        first.addProperty(property, u"用途"_s, 0, beams, NodeTypeFolder);
        first.addProperty(property, u"用途"_s, 0, shear, NodeTypeFormula);
    }
    first.addProperty(3, u"用途"_s, 0, columns, NodeTypeFolder);
    first.addProperty(4, u"用途2"_s, 0, plates, NodeTypeFolder);
    first.addProperty(5, u"用途"_s, 0, 99, NodeTypeFolder);
    second.addProperty(1, u"用途"_s, 0, pipes, NodeTypeFolder);
    const FindCriteria wanted{.inFolders = true, .inFormulas = true, .property = u"用途"_s};
    for (const int most : {1, 2, 1000}) {
        EXPECT_EQ(found(wanted, most), u"梁 柱 剪切 管"_s);
    }
    QStringList keys;
    for (std::size_t i = 0; i < hits.size(); ++i) {
        keys.append(hits.at(i).key() + u' ' + hits.at(i).tag());
    }
    EXPECT_EQ(keys,
              (QStringList{u"FindItem1->DBNode1->1 1->0"_s, u"FindItem2->DBNode1->1 1->0"_s,
                           u"FindItem2->DBNode1->2 2->1"_s, u"FindItem1->DBNode2->1 1->0"_s}));
    FindCriteria both = wanted;
    both.name = u"柱"_s;
    EXPECT_EQ(found(both), u"柱"_s);
    EXPECT_EQ(readPropertyNames(libraries).ofFolders, (QStringList{u"用途"_s, u"用途2"_s}));
    EXPECT_EQ(readPropertyNames(libraries).ofFormulas, QStringList{u"用途"_s});
}

TEST_F(Find, AStatementThatTakesLongGoesOnInPartsAndFindsTheSame) {
    first.connection().execute(
        u"With Recursive n(i) As (Select 100 Union All Select i + 1 From n Where i < 12000) "
        "Insert Into Formula (ID, Name, PID) "
        "Select Case When i > 11000 Then 2000000000 + i Else i End, "
        "Case When i % 3000 = 0 Then '端' Else '中' End || i, 0 From n"_s);
    first.connection().execute(
        u"Insert Into Property (PropID, PropName, NodeID, NodeType) "
        "Select ID, '用途', ID, 2 From Formula Where ID % 100 = 0"_s);
    const FindCriteria byProperty{.inFormulas = true, .property = u"用途"_s};
    const struct {
        FindCriteria criteria;
        qsizetype found;
    } cases[] = {{byName(u"端"_s), 4},
                 {byName(u"没有"_s), 0},
                 {byName(u"端2000012000"_s), 0},
                 {byName(u"中"_s, TextPlace::Start), 11'897},
                 {byProperty, 120}};
    for (const auto& each : cases) {
        patience = std::chrono::seconds(1000);
        pauses = false;
        const QString whole = found(each.criteria);
        EXPECT_EQ(hits.size(), each.found);
        for (const bool isPaused : {false, true}) {
            patience = {};
            pauses = isPaused;
            EXPECT_EQ(found(each.criteria), whole);
            // Bounded also behind the gap between the identifiers.
            EXPECT_GT(steps, each.criteria == byProperty ? 0 : 3);
            EXPECT_LT(steps, 300);
        }
    }
}

TEST_F(Find, TellsALibraryThatHasAnotherNodeUnderTheIdentifier) {
    const auto hit = [this](const QString& name) {
        found(byName(name));
        return hits.at(0);
    };
    const FindHit formula = hit(u"弯曲"_s);
    const FindHit folder = hit(u"柱"_s);
    const auto rewrite = [this](const QString& change) { first.connection().execute(change); };
    rewrite(u"Update Formula Set Name = '改名'"_s);
    EXPECT_TRUE(isStillThere(formula, {})) << "renamed";
    rewrite(u"Update Formula Set Formula = 'x'"_s);
    EXPECT_FALSE(isStillThere(formula, {})) << "another one";
    EXPECT_TRUE(isStillThere(formula, u"改名"_s)) << "renamed and edited in the list";
    rewrite(u"Delete From Formula Where Name = '改名'"_s);
    EXPECT_TRUE(isStillThere(formula, {})) << "its folder is shown";
    rewrite(u"Update Tree Set Name = '拱' Where Name = '柱'"_s);
    EXPECT_FALSE(isStillThere(folder, u"柱"_s)) << "another one";
    EXPECT_TRUE(isStillThere(folder, u"拱"_s)) << "renamed in the tree";
    rewrite(u"Delete From Tree Where Name = '拱'"_s);
    EXPECT_FALSE(isStillThere(folder, u"柱"_s));
    rewrite(u"Insert Into Formula (ID, Name) Values (%1, '弯曲')"_s.arg(formula.id));
    rewrite(u"Insert Into Tree (ID, Name) Values (%1, '柱')"_s.arg(folder.id));
    const auto replaceBy = [this](const QString& change) {
        const QByteArray content = fileContent(first.path());
        ASSERT_TRUE(QFile::remove(first.path()));
        first.addFile(first.fileName(), content);
        data::Connection other;
        other.open(first.path());
        other.execute(change);
    };
    replaceBy(u"Update Formula Set Name = '弯曲'"_s);
    EXPECT_TRUE(isStillThere(formula, {}) && isStillThere(folder, {})) << "a copy";
    replaceBy(u"Update Formula Set Name = '别的'"_s);
    EXPECT_FALSE(isStillThere(formula, {}));
    replaceBy(u"Update Tree Set Name = '别的'"_s);
    EXPECT_FALSE(isStillThere(folder, u"柱"_s));
    EXPECT_TRUE(isStillThere(folder, u"别的"_s)) << "renamed in the tree";
    replaceBy(u"Delete From Tree"_s);
    EXPECT_FALSE(isStillThere(folder, u"柱"_s));
    ASSERT_TRUE(QFile::remove(first.path()));
    EXPECT_TRUE(isStillThere(folder, {})) << "that the library is gone is told elsewhere";
}

TEST_F(Find, EndsAtALibraryThatCannotBeRead) {
    second.addProperty(1, u"用途"_s, 0, pipes, NodeTypeFolder);
    {
        const MissingColumn missing(second, "Tree", "PID");
        EXPECT_EQ(found(byName(u"梁"_s)), u"梁"_s);
        EXPECT_EQ(failure, NodeSearch::Failure::NotRead);
    }
    {
        const MissingColumn missing(second, "Property", "NodeType");
        EXPECT_EQ(readPropertyNames(libraries).failure, u"读取“属性”信息失败！"_s);
    }
    const auto refused = [&] {
        EXPECT_EQ(found(byName(u"梁"_s)), u"梁"_s);
        EXPECT_EQ(failure, NodeSearch::Failure::NotOpened);
        EXPECT_EQ(readPropertyNames(libraries).failure,
                  u"无法打开指定的数据库，不能进行查找操作！"_s);
    };
    {
        LibraryProcess other({u"lock"_s, second.path()});
        other.readLine();
        refused();
    }
    EXPECT_EQ(found(byName(u"管"_s)), u"管"_s);
    ASSERT_TRUE(QFile::remove(second.path()));
    refused();
    second.addFile(second.fileName(), "no library");
    refused();
}

class ListedPictures : public Find {
  protected:
    ListedPictures() {
        first.addPicture(stability, pictureBytes(3));
        first.addPicture(bending, pictureBytes(1'200'000));
        first.addPicture(shear, {});
        second.addPicture(flow, pictureBytes(5));
    }
    static QString listed(PictureCatalog& catalog, int most) {
        while (catalog.readEntries(most) != PictureCatalog::Listing::Complete) {
        }
        QStringList names;
        for (const PictureCatalog::Entry& entry : catalog.entries()) {
            names.append(entry.name + QString::number(entry.library));
        }
        return names.join(u' ');
    }
    /// All bytes of a picture, of which `read` has been read, or "" when they cannot be read.
    static QByteArray bytes(PictureCatalog& catalog, std::size_t entry, QByteArray read = {}) {
        PictureCatalog::Bytes result;
        do {
            result = catalog.readBytes(entry, read);
        } while (result == PictureCatalog::Bytes::Part);
        return result == PictureCatalog::Bytes::All ? read : QByteArray();
    }
};

TEST_F(ListedPictures, AreListedByIdentifierLibraryByLibrary) {
    for (const int most : {1, 2, 100}) {
        PictureCatalog catalog(libraries);
        EXPECT_EQ(listed(catalog, most), u"弯曲1 稳定1 流量2"_s);
        EXPECT_TRUE(catalog.unreadable().empty());
    }
    ASSERT_TRUE(QFile::remove(first.path()));
    PictureCatalog catalog(libraries);
    EXPECT_EQ(listed(catalog, 1), u"流量2"_s);
    EXPECT_EQ(catalog.unreadable(), std::vector{1});
}

TEST_F(ListedPictures, AreReadInPartsAndLockNothingAfterwards) {
    PictureCatalog catalog(libraries);
    listed(catalog, 100);
    QByteArray part;
    EXPECT_EQ(catalog.readBytes(0, part), PictureCatalog::Bytes::Part);
    EXPECT_EQ(bytes(catalog, 2), pictureBytes(5));
    EXPECT_EQ(catalog.readBytes(0, part), PictureCatalog::Bytes::Part);
    EXPECT_EQ(part, pictureBytes(1'200'000).first(part.size())) << "anew after another one";
    EXPECT_EQ(bytes(catalog, 0), pictureBytes(1'200'000));
    first.lock();
    for (int i = 0; i < 2; ++i) {
        part.clear();
        EXPECT_EQ(catalog.readBytes(0, part), PictureCatalog::Bytes::Locked);
    }
    EXPECT_EQ(catalog.folderOf(1), std::nullopt);
    EXPECT_EQ(bytes(catalog, 2), pictureBytes(5));
    first.unlock();
    EXPECT_EQ(bytes(catalog, 0), pictureBytes(1'200'000));
    EXPECT_EQ(catalog.folderOf(1), columns);
    first.funcs().DelFormula(bending, first.connection());
    part.clear();
    EXPECT_EQ(catalog.readBytes(0, part), PictureCatalog::Bytes::None);
    EXPECT_EQ(bytes(catalog, 1), pictureBytes(3));
}

TEST_F(ListedPictures, ListingGoesOnBetweenThePartsOfAPicture) {
    PictureCatalog catalog(libraries);
    catalog.readEntries(1);
    QByteArray read;
    EXPECT_EQ(catalog.readBytes(0, read), PictureCatalog::Bytes::Part);
    for (int parts = 1; catalog.readEntries(1) != PictureCatalog::Listing::Complete;) {
        if (parts < 3) {
            const qsizetype before = read.size();
            catalog.readBytes(0, read);
            EXPECT_GT(read.size(), before) << "not read from its beginning again";
            ++parts;
        }
    }
    EXPECT_EQ(read, pictureBytes(1'200'000));
}

TEST_F(ListedPictures, FewLibrariesAreOpenAndOtherFilesInTheirPlacesNotRead) {
    constexpr int kCopies = 40;
    const QString directory = QDir(first.folder()).canonicalPath();
    const auto openFiles = [&] {
        const QFileInfoList open = QDir(u"/proc/self/fd"_s).entryInfoList();
        return std::ranges::count_if(open, [&](const QFileInfo& file) {
            return file.symLinkTarget().startsWith(directory);
        });
    };
    const auto own = openFiles();
    libraries.Clear();
    for (int i = 0; i < kCopies; ++i) {
        const QString name = u"%1.vdb"_s.arg(i);
        first.addFile(name, fileContent(first.path()));
        addTo(libraries, first.folder(), name);
    }
    PictureCatalog catalog(libraries);
    listed(catalog, 10);
    ASSERT_EQ(catalog.entries().size(), std::size_t{2 * kCopies});
    QByteArray begun;
    EXPECT_EQ(catalog.readBytes(0, begun), PictureCatalog::Bytes::Part);
    for (std::size_t entry = 1; entry < 2 * kCopies; entry += 2) {
        EXPECT_EQ(catalog.folderOf(entry), columns);
        EXPECT_LE(openFiles(), own + 16);
    }
    EXPECT_EQ(bytes(catalog, 0, begun), pictureBytes(1'200'000)) << "anew";
    for (std::size_t entry = 1; entry < 2 * kCopies; entry += 2) {
        EXPECT_EQ(bytes(catalog, entry), pictureBytes(3));
    }
    ASSERT_TRUE(QFile::rename(first.pathOf(u"0.vdb"_s), first.pathOf(u"aside"_s)));
    first.addFile(u"0.vdb"_s, fileContent(first.path()));
    EXPECT_TRUE(bytes(catalog, 1).isEmpty());
}

TEST_F(ListedPictures, ALockedLibraryIsListedLaterAndNotWaitedFor) {
    PictureCatalog catalog(libraries);
    waits = 0;
    first.lock();
    EXPECT_EQ(catalog.readEntries(1), PictureCatalog::Listing::Part);
    EXPECT_EQ(catalog.readEntries(1), PictureCatalog::Listing::Part);
    second.lock();
    EXPECT_EQ(catalog.readEntries(1), PictureCatalog::Listing::Part);
    EXPECT_EQ(catalog.readEntries(1), PictureCatalog::Listing::AllLocked);
    EXPECT_EQ(catalog.locked(), (std::vector{2, 1}));
    QByteArray read;
    EXPECT_EQ(catalog.readBytes(0, read), PictureCatalog::Bytes::Locked);
    EXPECT_EQ(waits, 0);
    first.unlock();
    second.unlock();
    EXPECT_EQ(listed(catalog, 1), u"流量2 弯曲1 稳定1"_s);
    EXPECT_TRUE(catalog.locked().empty() && catalog.unreadable().empty());
}

TEST_F(ListedPictures, AreLocatedAsLongAsTheirNameIsThere) {
    PictureCatalog catalog(libraries);
    listed(catalog, 100);
    qint32 folder = 0;
    EXPECT_EQ(catalog.findFolder(1, folder), PictureCatalog::Found::Formula);
    EXPECT_EQ(folder, columns);
    first.connection().execute(u"Update Formula Set Name = '改名'"_s);
    EXPECT_EQ(catalog.findFolder(1, folder), PictureCatalog::Found::Formula);
    ASSERT_TRUE(QFile::rename(first.path(), first.pathOf(u"aside"_s)));
    EXPECT_EQ(catalog.findFolder(1, folder), PictureCatalog::Found::NotOpened);
    first.addFile(first.fileName(), fileContent(first.pathOf(u"aside"_s)));
    EXPECT_EQ(catalog.findFolder(1, folder), PictureCatalog::Found::Gone) << "another file";
}

}  // namespace
}  // namespace varo::test
