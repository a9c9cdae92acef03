#pragma once

#include <QString>

#include <array>

class QAbstractItemView;
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
}  // namespace varo::ui

namespace varo {

/// The options of the description area.
enum DescOption { DescOptionText = 0, DescOptionPicture = 1 };

inline constexpr int SymbolTabs = 10;

/// The named widgets of the control. Each carries its name as objectName; all are owned by Qt's
/// parents.
struct Form {
    QWidget* PicControl = nullptr;
    QToolBar* tbEdit = nullptr;
    QWidget* picTreeContain = nullptr;
    ui::NodeView* tvFolder = nullptr;
    QFrame* picShowTreeSepar = nullptr;
    QFrame* picTreeSepar = nullptr;
    QWidget* picBackGround = nullptr;
    ui::NodeView* lvFormula = nullptr;
    QFrame* picShowFormulaSepar = nullptr;
    QFrame* picFormulaSepar = nullptr;
    QWidget* picFormula = nullptr;
    QFrame* frmDesc = nullptr;
    std::array<QRadioButton*, 2> optDesc{};
    QFrame* PicDesc = nullptr;
    QPlainTextEdit* txtDesc = nullptr;
    ui::PictureBox* imgDesc = nullptr;
    QLabel* lblDesc = nullptr;
    QWidget* picSymbol = nullptr;
    QTabBar* TabStripSymbol = nullptr;
    std::array<QToolBar*, SymbolTabs> tbSymbol{};
    QWidget* picInputFormula = nullptr;
    QFrame* frmFormula = nullptr;
    QLabel* lblFormula = nullptr;
    QLineEdit* txtFormula = nullptr;
    ui::EditGrid* MSFEditVarList = nullptr;
    QWidget* picResult = nullptr;
    QLabel* lblResult = nullptr;
    QLineEdit* txtResult = nullptr;
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

/// Most characters of a formula, a description and a variable's value.
inline constexpr int TextLimit = 255;

/// Makes all widgets below `parent`, with their texts, fonts, order of tabs and names.
Form buildForm(QWidget* parent);

}  // namespace varo
