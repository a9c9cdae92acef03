#pragma once

#include "library/property_names.h"
#include "search/find_form.h"
#include "search/find_locator.h"
#include "search/find_run.h"
#include "search/picture_list.h"

#include <QDialog>
#include <QElapsedTimer>

namespace varo {

/// The find dialog, `frmFind`: searches all libraries for folders and formulas, shows the pictures
/// of all formulas, and selects what the user has found in the control's tree and list. It changes
/// nothing in the libraries. What it finds stays in `results` when it is closed.
class FindDialog : public QDialog {
    Q_OBJECT

  public:
    /// Everything handed in must outlive this.
    FindDialog(const colFormulaDB& libraries, FindResults& results, FindLocator& locator,
               Questions& questions, QWidget* parent);
    ~FindDialog() override;

    /// Shows what was found last and by which criteria, and reads the names of the properties.
    void InitForm();

    /// Milliseconds for which a search keeps the program from going on; 0 shows its progress.
    void setSlice(int milliseconds) { run_.setSlice(milliseconds); }

    void reject() override;

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

  private:
    void connectCommands();
    void focusWork();
    void updateCriteria();
    void fillProperties();
    FindCriteria criteria() const;
    void showCriteria(const FindCriteria& wanted);
    void find();
    void showProgress();
    void showEnd();
    void locateSelected();
    void showTab(int tab);
    void showPictureCount();
    void locatePicture(int row);
    void fitColumn();

    const colFormulaDB& libraries_;
    FindResults& results_;
    FindLocator& locator_;
    Questions& questions_;
    PropertyNames properties_;
    PictureList pictures_;
    FindRun run_;
    bool wasStopped_ = false;
    QElapsedTimer sinceStart_;
    bool picturesLoaded_ = false;
    FindForm form_;
};

/// Opens the dialog over `parent` and waits until it is closed.
void openFindDialog(const colFormulaDB& libraries, FindResults& results, FindLocator& locator,
                    Questions& questions, QWidget* parent);

}  // namespace varo
