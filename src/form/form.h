#pragma once

#include <array>

class QFrame;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QRadioButton;
class QSpinBox;
class QTabBar;
class QToolBar;
class QWidget;

namespace varo::ui {
class EditGrid;
class NodeView;
class PictureBox;
class ResultBox;
}  // namespace varo::ui

namespace varo {

/// The options of the description area.
enum DescOption { DescOptionText = 0, DescOptionPicture = 1 };

inline constexpr int kSymbolTabs = 10;

/// Columns of MSFEditVarList.
inline constexpr int kNameColumn = 0;
inline constexpr int kValueColumn = 1;

/// The named widgets of the control. Each carries its name as objectName; all are owned by Qt's
/// parents.

/// The description area.
struct DescriptionForm {
    QFrame* frmDesc = nullptr;
    std::array<QRadioButton*, 2> optDesc{};
    QFrame* PicDesc = nullptr;
    QPlainTextEdit* txtDesc = nullptr;
    ui::PictureBox* imgDesc = nullptr;
    QLabel* lblDesc = nullptr;
};

/// The symbol palette.
struct SymbolForm {
    QWidget* picSymbol = nullptr;
    QTabBar* TabStripSymbol = nullptr;
    std::array<QToolBar*, kSymbolTabs> tbSymbol{};
};

/// The result area.
struct ResultForm {
    QWidget* picResult = nullptr;
    QLabel* lblResult = nullptr;
    ui::ResultBox* txtResult = nullptr;
    QLabel* lblPrecision = nullptr;
    QLineEdit* txtPrecision = nullptr;  ///< the text of UpDownPrecision
    QSpinBox* UpDownPrecision = nullptr;
    QPushButton* cmdCalCulate = nullptr;
    QPushButton* cmdSaveResult = nullptr;
    QPushButton* CmdAddResult = nullptr;
    QPushButton* cmdClearResult = nullptr;
    QPushButton* cmdCopy = nullptr;
    QPushButton* cmdSend = nullptr;
};

/// The panel that shows one formula.
struct PanelForm {
    DescriptionForm description;
    SymbolForm symbols;
    QLineEdit* txtFormula = nullptr;
    ui::EditGrid* MSFEditVarList = nullptr;
    ResultForm result;
};

/// All of them, with the containers that hold them in their places.
struct Form {
    QWidget* PicControl = nullptr;
    QToolBar* tbEdit = nullptr;
    QWidget* picTreeContain = nullptr;
    ui::NodeView* tvFolder = nullptr;
    QLabel* lblReading = nullptr;  ///< below the tree
    QFrame* picShowTreeSepar = nullptr;
    QFrame* picTreeSepar = nullptr;
    QWidget* picBackGround = nullptr;
    ui::NodeView* lvFormula = nullptr;
    QFrame* picShowFormulaSepar = nullptr;
    QFrame* picFormulaSepar = nullptr;
    QWidget* picFormula = nullptr;
    QWidget* picInputFormula = nullptr;
    QFrame* frmFormula = nullptr;
    QLabel* lblFormula = nullptr;
    PanelForm panel;
};

/// Makes all widgets below `parent`, with their texts, fonts, order of tabs and names.
Form buildForm(QWidget* parent);

}  // namespace varo
