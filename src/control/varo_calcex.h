#pragma once

#include <QString>
#include <QWidget>

#include <memory>

namespace varo {

class Questions;

/// The formula calculator as a control that a host places in one of its windows. The host names the
/// configuration folder, starts the control with RunCalc, and may then select nodes and formulas,
/// ask for a locate, and answer GetPropValue; results that the user passes on arrive at the host's
/// window as the registered message "WM_CALCMSG" (see ui::RegisteredMessage). Everything runs on
/// the user-interface thread. No method throws; what fails is told to the user. The control must
/// not be destroyed while one of its messages or questions is open.
class Varo_CalcEx : public QWidget {
    Q_OBJECT

  public:
    /// `questions` answers the control's modal messages and questions and must outlive it; without
    /// one the user does, in message boxes.
    explicit Varo_CalcEx(QWidget* parent = nullptr, Questions* questions = nullptr);
    ~Varo_CalcEx() override;

    /// Names the folder of the configuration file, unchecked. Counts at the next RunCalc.
    void SetDeployFolder(const QString& strFolder);

    /// Reads the configuration file, builds the tree of all libraries and selects the first one.
    /// What fails is told to the user and leaves the control ready for another RunCalc. Once
    /// started, and while the library manager is open, it only removes the locate highlight.
    void RunCalc();

    /// Selects the tree node with this key as if the user had clicked it; an unknown key does
    /// nothing.
    void ClickTreeNode(const QString& TheKey);

    /// Shows and calculates the formula of the listed folder with this key; an unknown key does
    /// nothing.
    void SelFormula(const QString& TheKey);

    /// Goes through all libraries for the folders and formulas whose property `TheLocationPropName`
    /// suits the host's values.
    void SetDesignProp(const QString& TheLocationPropName);

    /// The host's answer, from within its handler of GetPropValue.
    void SetSelPropValue(const QString& ThePropValue);

    /// Stores the six numbers, asks the host again for the properties that feed the shown formula's
    /// variables, and recalculates.
    void SetCellInfo(qint32 UnitContentID, qint32 UnitTypeID, qint32 PrptysetID, qint32 RecordsetID,
                     qint32 FieldID, qint32 RecNum);

    /// The six numbers of the last SetCellInfo, 0 before.
    void GetCellInfo(qint32& UnitContentID, qint32& UnitTypeID, qint32& PrptysetID,
                     qint32& RecordsetID, qint32& FieldID, qint32& RecNum) const;

    /// Folder for the control's working picture files, which no other control may use; "" chooses
    /// the folder of the program, or the user's own for the program when that cannot be written to
    /// or another control uses it, or else a temporary one. Counts from the next listing on.
    void setWorkFolder(const QString& folder);

    /// Name of the message that brings a result to the host's window: word argument 0, long
    /// argument the handle of the result box, whose text ui::windowText reads.
    static constexpr auto kCalcMessage = "WM_CALCMSG";

    QSize sizeHint() const override;

  signals:
    /// The control needs the value of a property that only the host knows. The host calls
    /// SetSelPropValue and sets `TheFlag` before its handler returns; it calls no other method of
    /// the control there. A handler that does neither gives no value.
    void GetPropValue(const QString& PropName, bool& TheFlag);

  protected:
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;

  private:
    struct Parts;
    std::unique_ptr<Parts> parts_;
};

}  // namespace varo
