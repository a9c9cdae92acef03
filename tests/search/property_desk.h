#pragma once

#include "driver/dialog_driver.h"
#include "support/beam_desk.h"

#include <QComboBox>
#include <QLabel>
#include <QPlainTextEdit>
#include <QTreeView>

namespace varo::test {

/// Works with the property-conditions dialog on the beam libraries as a user does.
class PropertyDesk : public BeamDesk {
  protected:
    /// Opens the dialog on a formula, or on a node where that is "", and runs `use` in it.
    void edit(const QString& node, const QString& formula, const std::function<void()>& use) {
        withDialog(
            "frmLocateNode",
            [&] {
                if (selected() != node) {
                    desk->clickNode(node);
                }
                if (formula.isEmpty()) {
                    desk->openMenu(desk->tree(), node);
                    desk->choose("mnuPopLocateNode");
                } else {
                    desk->openMenu(desk->list(), formula);
                    desk->choose("mnuPopLocateFormula");
                }
            },
            [&](QDialog& opened) {
                dialog = &opened;
                use();
            });
        dialog = nullptr;
        settle();
    }

    template <class Part = QWidget>
    Part& part(const char* name) {
        return partOf<Part>(*dialog, name);
    }
    /// An editor in place; one that has been closed may still be there.
    template <class Editor>
    Editor& open(const char* name) {
        for (auto* editor : dialog->findChildren<Editor*>(QString::fromLatin1(name))) {
            if (editor->isVisible()) {
                return *editor;
            }
        }
        throw DriverError(u"no editor is open"_s);
    }
    void click(const char* name) { desk->click(part(name)); }
    bool can(const char* name) { return part(name).isEnabled(); }
    void key(Qt::Key pressed, Qt::KeyboardModifiers modifiers = {}) {
        desk->pressKey(pressed, modifiers);
    }

    ui::NodeView& properties() { return part<ui::NodeView>("lvProp"); }
    void selectProperty(const QString& name) {
        desk->clickItem(properties(), Desk::find(properties(), name));
    }
    /// Types over the open label of a property.
    void typeName(const QString& name, Qt::Key end = Qt::Key_Return) {
        auto& label = open<QLineEdit>("labelEditor");
        label.selectAll();
        label.insert(name);
        QTest::keyClick(&label, end);
        settle();
    }
    void addProperty(const QString& name) {
        click("cmdAddProp");
        typeName(name);
    }
    QString names() {
        QStringList listed;
        for (int row = 0; row < properties().model()->rowCount(); ++row) {
            listed.append(properties().model()->index(row, 0).data().toString());
        }
        return listed.join(u',');
    }

    QTreeView& tree() { return part<QTreeView>("tvCondition"); }
    QString words() { return part<QPlainTextEdit>("txtCondition").toPlainText(); }
    QString remarks() { return part<QLabel>("lblRemarks").text(); }
    /// Every node from top to bottom.
    QModelIndexList nodes(const QModelIndex& parent = {}) {
        QModelIndexList found;
        for (int row = 0; row < tree().model()->rowCount(parent); ++row) {
            const QModelIndex node = tree().model()->index(row, 0, parent);
            found.append(node);
            found += nodes(node);
        }
        return found;
    }
    /// What a column shows, from top to bottom.
    QString column(int number) {
        QStringList texts;
        for (const QModelIndex& node : nodes()) {
            texts.append(node.siblingAtColumn(number).data().toString());
        }
        return texts.join(u'|');
    }
    void clickNode(int number, int column = 0) {
        const QModelIndex node = nodes().at(number).siblingAtColumn(column);
        tree().scrollTo(node);
        desk->click(*tree().viewport(), Qt::LeftButton, tree().visualRect(node).center());
    }
    /// Fills the comparison whose name is being edited, by the keys that lead through it.
    void typeTerm(const QString& name, const QString& comparison, const QString& constant) {
        typeHere(name);
        key(Qt::Key_Tab);
        auto& box = open<QComboBox>("cmbCompare");
        box.setCurrentText(comparison);
        key(Qt::Key_Tab);
        typeHere(constant);
        key(Qt::Key_Return);
    }
    void addTerm(const QString& name, const QString& comparison, const QString& constant) {
        click("cmdAddCompare");
        typeTerm(name, comparison, constant);
    }

    /// Adds a property with the condition a = 1, which is stored.
    void addSaved(const QString& name) {
        addProperty(name);
        addTerm(u"a"_s, u"等于"_s, u"1"_s);
        click("cmdSearch");
        click("cmdSaveFilter");
    }

    /// Whether the host finds something with the property 用途.
    QString located() {
        desk->clickNode(u"柱"_s);
        desk->control().SetDesignProp(u"用途"_s);
        settle();
        return desk->list().selectedIndex().data().toString();
    }
    /// As a program reads the file that has had it open all the time.
    QString stored() {
        return (first.rows(u"Select * From Property Order By PropID"_s) +
                first.rows(u"Select ID,UserID,ParentID,Type From FilterCond Order By ID"_s) +
                first.rows(u"Select FilterID,ExpID,FieldName,CompareType,TheConst "
                           "From FilterExpressions Order By ExpID"_s))
            .join(u' ');
    }
    bool hasBackup() { return QFile::exists(work.filePath(u"BackupDB.def"_s)); }

    QDialog* dialog = nullptr;

  private:
    static void typeHere(const QString& text) {
        QWidget* editor = QApplication::focusWidget();
        auto* line = qobject_cast<QLineEdit*>(editor);
        if (auto* box = qobject_cast<QComboBox*>(editor)) {
            line = box->lineEdit();
        }
        if (line == nullptr) {
            throw DriverError(u"nothing is being typed"_s);
        }
        line->selectAll();
        line->insert(text);
    }
};

}  // namespace varo::test
