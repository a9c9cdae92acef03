#pragma once

#include "library/library_files.h"
#include "manager/library_list_model.h"
#include "manager/library_manager_form.h"
#include "platform/ui/message_boxes.h"

#include <QDialog>

namespace varo {

/// The library manager, `frmLibraryManager`: edits a copy of a list of libraries. Nothing but the
/// copy changes, and the file of a new library appears, until CopyColData(false).
class LibraryManagerDialog : public QDialog {
    Q_OBJECT

  public:
    /// `libraries` is the list of the control; `questions` answers messages and questions, without
    /// one the user does. Both must outlive this.
    LibraryManagerDialog(colFormulaDB& libraries, QWidget* parent, Questions* questions = nullptr);

    /// Folder of the configuration file; to be set before InitForm().
    void setConfigFolder(const QString& folder) { configFolder_ = folder; }

    /// Fills the copy from the control's list, or the control's list from the copy.
    void CopyColData(bool fromControl);

    /// Shows the copy, and enables what can be done when there is a configuration file.
    void InitForm();

    /// Adds the files of libraries, each under the name of its file; those that are refused are
    /// told.
    void addFiles(const QStringList& files);

    /// Whether the dialog was closed without OK; false while it is open.
    bool Cancelled() const { return cancelled_; }

    void SelectDataBase(SelectMode mode, QString& path, bool& ok);
    void AddExistingLibrary();
    void DeleteSelectedLibraries();
    /// Moves the selected library up (1) or down (2) by one place. Returns whether it has moved.
    bool MoveLibrary(int direction);

    void accept() override;
    void reject() override;

  private:
    enum class State { Nothing = 0, List = 1, Item = 2 };

    void connectCommands();
    void createLibrary();
    void add(const QString& path);
    void setState(State state);
    void followSelection();
    void moveSelected(int before);
    void rename();
    bool storeText(const QString& key, const QString& text);
    QList<int> selectedPositions() const;
    int selectedPosition() const;
    void select(const QString& key);

    colFormulaDB& controlLibraries_;
    colFormulaDB libraries_;  ///< the copy
    ui::MessageBoxes boxes_;
    Questions& questions_;
    QString configFolder_;
    LibraryListModel model_;
    LibraryManagerForm form_;
    State state_ = State::Nothing;
    bool cancelled_ = false;
    bool refused_ = false;  ///< a text has been refused, and the user is about to be told
};

}  // namespace varo
