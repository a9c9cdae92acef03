#pragma once

#include <QEvent>
#include <QMainWindow>
#include <QTemporaryDir>

namespace varo {
class Questions;
class Varo_CalcEx;
}  // namespace varo

namespace varo::host {

class CellInfoPanel;
class LineList;
class PropertyTable;

/// A window that embeds the control and plays the host's side of everything: it calls the control's
/// methods, answers GetPropValue from a table of properties, and lists the results that are passed
/// on.
class HostWindow : public QMainWindow {
    Q_OBJECT

  public:
    /// `questions` answers the control's messages and must outlive this; without one the user does,
    /// in message boxes.
    explicit HostWindow(Questions* questions = nullptr);
    ~HostWindow() override;

    /// The embedded control; another one after openFolder.
    Varo_CalcEx& control() { return *control_; }

    /// Embeds a fresh control and starts it on this configuration folder; "" gives it none.
    void openFolder(const QString& folder);

    PropertyTable& properties() { return *properties_; }
    LineList& results() { return *results_; }
    LineList& log() { return *log_; }

  protected:
    bool event(QEvent* event) override;

  private:
    void embedControl();
    void buildFileMenu();
    void buildControlMenu();
    void buildDocks();
    void chooseFolder();
    void runCalc();
    void answer(const QString& property, bool& answered);
    void writeCellInfo();
    void readCellInfo();

    Questions* questions_;
    QEvent::Type calcMessage_;
    /// Takes the control's working files, so that two hosts of one program do not share them.
    QTemporaryDir workFolder_;
    Varo_CalcEx* control_ = nullptr;
    PropertyTable* properties_ = nullptr;
    CellInfoPanel* cellInfo_ = nullptr;
    LineList* results_ = nullptr;
    LineList* log_ = nullptr;
};

}  // namespace varo::host
