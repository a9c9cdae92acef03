#pragma once

#include "control/varo_calcex.h"
#include "driver/grid_driver.h"
#include "platform/ui/node_view.h"

#include <QLineEdit>
#include <QMenu>
#include <QString>
#include <QStringList>
#include <QToolButton>

namespace varo {

/// Works with the control as a user does, with mouse and keyboard, and reads what it shows. What is
/// not there, or cannot be used, throws DriverError. Every operation returns after all that it
/// causes has happened.
class ControlDriver {
  public:
    explicit ControlDriver(Varo_CalcEx& control) : control_(&control) {}

    Varo_CalcEx& control() const { return *control_; }

    /// The named part of the control.
    template <class Part = QWidget>
    Part& child(const QString& name) const {
        auto* found = control_->findChild<Part*>(name);
        if (found == nullptr) {
            throw DriverError(QStringLiteral("there is no '%1'").arg(name));
        }
        return *found;
    }
    template <class Part = QWidget>
    Part& child(const char* name) const {
        return child<Part>(QString::fromLatin1(name));
    }

    ui::NodeView& tree() const { return child<ui::NodeView>("tvFolder"); }
    ui::NodeView& list() const { return child<ui::NodeView>("lvFormula"); }
    ui::EditGrid& grid() const { return child<ui::EditGrid>("MSFEditVarList"); }
    QLineEdit& formulaBox() const { return child<QLineEdit>("txtFormula"); }
    QString result() const { return child<QLineEdit>("txtResult").text(); }
    bool isEnabled(const char* name) const { return child(name).isEnabled(); }
    bool isShown(const char* name) const { return !child(name).isHidden(); }

    /// Texts of the whole tree, two blanks a level; of the list; of the grid as "name=value".
    QStringList treeTexts() const;
    QStringList listTexts() const;
    QStringList gridTexts() const { return textsOf(grid()); }
    /// Value of a variable as the grid shows it.
    QString value(const QString& variable) const;

    /// Index of the first item with this text, or this key, anywhere in the view; invalid when
    /// there is none.
    static QModelIndex find(const ui::NodeView& view, const QString& text);
    static QModelIndex findKey(const ui::NodeView& view, const QString& key);

    /// Clicks on a widget that can be used: in its middle, or at `place` in it.
    void click(QWidget& target, Qt::MouseButton button = Qt::LeftButton, QPoint place = {});
    /// Clicks on a text of a view, `along` pixels from its start at most.
    void clickItem(ui::NodeView& view, const QModelIndex& item,
                   Qt::MouseButton button = Qt::LeftButton, int along = 8);
    void clickNode(const QString& text) { clickItem(tree(), find(tree(), text)); }
    void clickFormula(const QString& text) { clickItem(list(), find(list(), text)); }
    void clickEmptySpace(QAbstractItemView& view, Qt::MouseButton button = Qt::LeftButton);
    void clickButton(const char* name) { click(child(name)); }

    /// Clicks with the right button on the first item with this text.
    void openMenu(ui::NodeView& view, const QString& text);
    QMenu& menu() const { return child<QMenu>("PopTreeMnu"); }
    /// Clicks on an entry of the open menu, by the name of its action.
    void choose(const char* entry);

    /// A button of the edit tool bar.
    QToolButton& editButton(const QString& key) const;
    void clickEditButton(const QString& key) { click(editButton(key)); }

    /// The open editor of a label in tree or list; null when there is none.
    QLineEdit* labelEditor() const;
    /// Types into the open editor of a label, replacing its text, and ends with `key`.
    void typeLabel(const QString& text, Qt::Key key = Qt::Key_Return);

    /// Types a value into the variable's row of the grid and ends with Enter.
    void typeValue(const QString& variable, const QString& value);

    /// Types into a widget, which then has the focus; or into the one that has it.
    void type(QWidget& widget, const QString& text);
    void type(const QString& text);
    void pressKey(Qt::Key key, Qt::KeyboardModifiers modifiers = {});

  protected:
    ControlDriver() = default;
    void setControl(Varo_CalcEx& control) { control_ = &control; }

  private:
    Varo_CalcEx* control_ = nullptr;
};

}  // namespace varo
