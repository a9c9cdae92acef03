#pragma once

#include "control/varo_calcex.h"
#include "platform/ui/edit_grid.h"
#include "platform/ui/node_view.h"
#include "support/grid_input.h"
#include "support/recording_questions.h"
#include "support/test_library.h"

#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QTemporaryDir>
#include <QToolButton>
#include <QWidget>

#include <functional>
#include <vector>

namespace varo::test {

/// A configuration folder whose file names libraries.
class TestConfiguration {
  public:
    TestConfiguration() = default;
    explicit TestConfiguration(std::initializer_list<const TestLibrary*> libraries);

    QString folder() const { return folder_.path(); }
    void addLibrary(const QString& text, const QString& folder, const QString& fileName);
    void addLibrary(const TestLibrary& library, const QString& text);
    /// Replaces the file by these bytes.
    void write(const QByteArray& bytes) const;
    void removeFile() const;

  private:
    QTemporaryDir folder_;
    QByteArray entries_;
    int count_ = 0;
};

/// A host window on the screen with the control in it, as a user would work with it. Messages are
/// recorded; the host answers properties from a table.
class Desk : public QWidget {
  public:
    explicit Desk(const QString& configurationFolder = {}, QSize size = {1000, 700});
    ~Desk() override;

    /// Names the folder and starts the control.
    void run(const QString& configurationFolder);

    Varo_CalcEx& control() { return *control_; }
    QString configurationFolder() const { return configurationFolder_; }
    RecordingQuestions& questions() { return questions_; }
    QStringList messages() const { return questions_.informed; }

    /// What the host answers when it is asked for a property, and what it was asked for.
    QHash<QString, QString> properties;
    QStringList askedProperties;

    template <class Widget>
    Widget& child(const char* name) {
        auto* found = control_->findChild<Widget*>(QString::fromLatin1(name));
        if (found == nullptr) {
            throw std::logic_error(name);
        }
        return *found;
    }

    ui::NodeView& tree() { return child<ui::NodeView>("tvFolder"); }
    ui::NodeView& list() { return child<ui::NodeView>("lvFormula"); }
    ui::EditGrid& grid() { return child<ui::EditGrid>("MSFEditVarList"); }
    QLineEdit& formulaBox() { return child<QLineEdit>("txtFormula"); }
    QString result() { return child<QLineEdit>("txtResult").text(); }
    bool isEnabled(const char* name) { return child<QWidget>(name).isEnabled(); }
    bool isShown(const char* name) { return !child<QWidget>(name).isHidden(); }

    /// Texts of the whole tree, two blanks a level; of the list; of the grid as "name=value".
    QStringList treeTexts();
    QStringList listTexts();
    QStringList gridTexts();

    /// Clicks with the mouse on the first tree node, or list item, with this text.
    void clickNode(const QString& text);
    void clickFormula(const QString& text);
    void clickEmptySpace(ui::NodeView& view, Qt::MouseButton button = Qt::LeftButton);
    void clickButton(const char* name);

    /// Clicks with the right button on the first item with this text, or on empty space.
    void openMenu(ui::NodeView& view, const QString& text);
    QMenu& menu() { return child<QMenu>("PopTreeMnu"); }
    /// Clicks with the mouse on an entry of the open menu, by the name of its action.
    void choose(const char* entry);

    /// A button of the edit tool bar, and a click on it.
    QToolButton& editButton(const QString& key);
    void clickEditButton(const QString& key);

    /// The open editor of a label in tree or list; null when there is none.
    QLineEdit* labelEditor();
    /// Types into the open editor of a label and ends with `key`.
    void typeLabel(const QString& text, Qt::Key key = Qt::Key_Return);

    /// Types a value into the variable's row of the grid and ends with Enter.
    void typeValue(const QString& variable, const QString& value);
    QString value(const QString& variable);

    /// Types into a widget that then has the focus, replacing what is selected.
    void type(QWidget& widget, const QString& text);

    /// Index of the first item with this text, anywhere in the view.
    static QModelIndex find(const ui::NodeView& view, const QString& text);

  private:
    RecordingQuestions questions_;
    QTemporaryDir workFolder_;
    QString configurationFolder_;
    Varo_CalcEx* control_;
};

/// Lets everything that is queued happen.
void settle();

}  // namespace varo::test
