#pragma once

#include "support/beam_libraries.h"
#include "support/desk.h"

#include <QTest>

#include <gtest/gtest.h>

namespace varo::test {

/// Whether tree, list and formula box show what a control that has just been started shows when the
/// same node and formula are selected in it: texts, keys, order and pictures.
testing::AssertionResult showsWhatIsStored(Desk& desk);

/// The beam libraries on a desk, with every folder to be seen. Checks at the end that what is shown
/// is what is stored.
class BeamDesk : public testing::Test, protected BeamLibraries {
  protected:
    BeamDesk() { start(); }
    ~BeamDesk() override { EXPECT_TRUE(showsWhatIsStored(*desk)); }

    void start() {
        desk.reset();
        desk = std::make_unique<Desk>();
        desk->control().setWorkFolder(work.path());
        desk->run(configuration.folder());
        desk->tree().expandAll();
        settle();
    }

    static QString folder(qint32 id) { return u"FormulaNode%1->DBNode1"_s.arg(id); }
    QString selected() { return desk->tree().selectedIndex().data().toString(); }

    /// What the user was told, and asked, since the last time.
    QString told() { return std::exchange(desk->questions().informed, {}).join(u'|'); }
    QString asked() { return std::exchange(desk->questions().asked, {}).join(u'|'); }

    /// Gives the command of a button; what is asked is answered so.
    void press(const QString& button, bool answer = true) {
        desk->questions().answers = {answer};
        desk->clickEditButton(button);
    }
    /// Selects a node, and a formula in its folder unless that is "".
    void select(const QString& node, const QString& formula = {}) {
        desk->clickNode(node);
        if (!formula.isEmpty()) {
            desk->clickFormula(formula);
        }
    }

    TestConfiguration configuration{&first, &second};
    QTemporaryDir work;
    std::unique_ptr<Desk> desk;
};

}  // namespace varo::test
