#pragma once

#include "library/condition_text.h"
#include "library/property_session.h"
#include "support/no_waiting.h"
#include "support/process.h"
#include "support/test_library.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>
#include <memory>

namespace varo::test {

using namespace Qt::StringLiterals;

inline ConditionTree condition(const QString& text) {
    return parseCondition(text).tree;
}

/// A library with formula 1, which has the properties 1 形 (filter 7) and 3 料; folder 1 has 形
/// with filter 8, which formula 2 shares. Nobody waits for locks.
struct Trial : NoWaiting {
    Trial() {
        folder = library.addFolder(0, u"梁"_s);
        formula = library.addFormula(folder, u"弯曲"_s);
        library.addFormula(folder, u"剪切"_s);
        FilterStore store(library.connection());
        EXPECT_EQ(store.saveNew(condition(u"a = 1"_s), 6), 7);
        EXPECT_EQ(store.saveNew(condition(u"b = 1"_s)), 8);
        library.addProperty(3, u"料"_s, 0, formula, NodeTypeFormula);
        library.addProperty(1, u"形"_s, 7, formula, NodeTypeFormula);
        library.addProperty(1, u"形"_s, 8, folder, NodeTypeFolder);
        library.addProperty(0, u"形"_s, 8, 2, NodeTypeFormula);
        library.connection().close();
        before = fileContent(library.path());
        library.connection().open(library.path());
    }

    QString open(qint32 node = 1, NodeType type = NodeTypeFormula) {
        session = std::make_unique<PropertySession>(ownFolder(), library.funcs());
        const QString failure = session->SetConnection(library.folder(), library.fileName(), {});
        return failure.isEmpty() ? session->InitForm(node, type) : failure;
    }

    QString ownFolder() const { return own.path() + u'/'; }
    QStringList ownFiles() const { return QDir(own.path()).entryList(QDir::Files); }
    /// The content of an own file, empty when it is not there.
    QByteArray ownFile(const QString& name) const {
        return ownFiles().contains(name) ? fileContent(own.filePath(name)) : QByteArray();
    }
    QByteArray backup() const { return ownFile(u"BackupDB.def"_s); }
    QByteArray keptAside() const { return ownFile(u"BackupDB-1.def"_s); }
    /// Whether the library is as it was before it was opened, but for the numbers by which others
    /// see that it has been written.
    bool isAsBefore() const {
        const auto withoutCounters = [](QByteArray content) {
            for (const auto& [at, length] : {std::pair{24, 4}, {40, 4}, {92, 8}}) {
                content.replace(at, length, QByteArray(length, '\0'));
            }
            return content;
        };
        return QFile::exists(library.path()) &&
               withoutCounters(fileContent(library.path())) == withoutCounters(before);
    }

    QString listed() const {
        QStringList items;
        for (const ListedProperty& each : session->properties()) {
            items.append(u"%1 %2 %3"_s.arg(each.id).arg(each.name).arg(each.filter));
        }
        return items.join(u", "_s);
    }

    /// The properties of formula 1 as they are stored, and what is stored of filters.
    QString stored() {
        library.connection().open(library.path());
        return library
                   .rows(
                       u"Select PropID||' '||PropName||' '||FilterID From Property Where "
                       "NodeID = 1 And NodeType = 2 Order By PropID"_s)
                   .join(u", "_s) +
               u"; "_s + filters();
    }
    QString filters() {
        return library
            .rows(
                u"Select Distinct UserID From FilterCond Union Select FilterID From "
                "FilterExpressions"_s)
            .join(u' ');
    }

    void expectSound() {
        library.connection().open(library.path());
        EXPECT_EQ(library.connection().damages(), QStringList());
    }

    TestLibrary library;
    QTemporaryDir own;
    qint32 folder = 0;
    qint32 formula = 0;
    QByteArray before;
    std::unique_ptr<PropertySession> session;
};

}  // namespace varo::test
