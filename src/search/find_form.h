#pragma once

#include <array>

class QCheckBox;
class QComboBox;
class QDialog;
class QFrame;
class QLabel;
class QLineEdit;
class QProgressBar;
class QPushButton;
class QRadioButton;
class QTabBar;
class QTreeView;

namespace varo::ui {
class PictureGrid;
}

namespace varo {

/// The widgets of the find dialog. Each carries its name as object name, an option button followed
/// by its number.
struct FindForm {
    QLabel* lblTitle;
    QTabBar* TabFind;

    QFrame* PicFind;
    QLabel* lblFindContent;
    QCheckBox* ChkFolder;
    QCheckBox* ChkFormula;
    QCheckBox* ChkName;
    QFrame* PicFindName;
    QLineEdit* txtName;
    std::array<QRadioButton*, 3> OptFindName;
    QCheckBox* ChkMemo;
    QFrame* PicFindMemo;
    QLineEdit* txtMemo;
    std::array<QRadioButton*, 3> OptFindMemo;
    QCheckBox* ChkPrpty;
    QComboBox* CmbPrpty;
    QLabel* lblFindResult;
    QLabel* lblFindCount;
    QProgressBar* PrgFind;  ///< libraries searched, during a long search
    QTreeView* lvFindResult;

    QFrame* PicImage;
    ui::PictureGrid* ImageGridFind;
    QLabel* lblImageCount;

    QPushButton* CmdFind;
    QPushButton* CmdPosition;
    QPushButton* CmdQuit;
};

/// Makes the widgets in `dialog`, which owns them, and lays them out; the find pane is in front.
FindForm buildFindForm(QDialog& dialog);

}  // namespace varo
