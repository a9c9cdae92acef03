#include "form/form.h"

#include "library/limits.h"
#include "platform/ui/edit_grid.h"
#include "platform/ui/focus_label.h"
#include "platform/ui/fonts.h"
#include "platform/ui/named_widgets.h"
#include "platform/ui/node_view.h"
#include "platform/ui/picture_box.h"
#include "platform/ui/result_box.h"
#include "platform/ui/twips.h"

#include <QBoxLayout>
#include <QButtonGroup>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QTabBar>
#include <QToolBar>

namespace varo {

namespace {

/// A button that can shrink to its text where the row is narrow.
class TightButton : public QPushButton {
  public:
    explicit TightButton(QWidget* parent) : QPushButton(parent) {
        setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    }

    QSize minimumSizeHint() const override {
        constexpr int kFrame = 8;
        const QSize shown = fontMetrics().size(Qt::TextShowMnemonic, text());
        return {shown.width() + kFrame, sizeHint().height()};
    }
};

QPushButton* makeButton(const char* name, const QString& text, const QString& toolTip,
                        QWidget* parent) {
    auto* button = ui::makeNamed<TightButton>(name, parent);
    button->setText(text);
    button->setToolTip(toolTip);
    button->setAccessibleName(toolTip);
    button->setAutoDefault(false);
    return button;
}

QFrame* makeBar(const char* name, QWidget* parent) {
    auto* bar = ui::makeNamed<QFrame>(name, parent);
    bar->setCursor(Qt::SplitHCursor);
    return bar;
}

/// The bar that follows the pointer while a splitter is dragged.
QFrame* makeDragBar(const char* name, QWidget* parent) {
    auto* bar = ui::makeNamed<QFrame>(name, parent);
    bar->setAutoFillBackground(true);
    bar->setBackgroundRole(QPalette::Dark);
    bar->hide();
    return bar;
}

void buildOuterPanes(Form& form, QWidget* parent) {
    form.PicControl = ui::makeNamed<QWidget>("PicControl", parent);
    form.tbEdit = ui::makeNamed<QToolBar>("tbEdit", form.PicControl);
    form.tbEdit->setAccessibleName(QStringLiteral("编辑工具栏"));
    form.picTreeContain = ui::makeNamed<QWidget>("picTreeContain", form.PicControl);
    form.picBackGround = ui::makeNamed<QWidget>("picBackGround", form.PicControl);
    form.picShowTreeSepar = makeBar("picShowTreeSepar", form.PicControl);
    form.picTreeSepar = makeDragBar("picTreeSepar", form.PicControl);

    form.tvFolder = ui::makeNamed<ui::NodeView>("tvFolder", form.picTreeContain);
    form.tvFolder->setAccessibleName(QStringLiteral("公式库和公式夹"));
    form.tvFolder->setHeaderHidden(true);
    form.tvFolder->setRootIsDecorated(true);
    form.tvFolder->setIndentation(14);
    form.tvFolder->fitFirstColumn();
    form.lblReading = ui::makeNamed<QLabel>("lblReading", form.picTreeContain);
    form.lblReading->setTextFormat(Qt::PlainText);
    form.lblReading->setWordWrap(true);
    form.lblReading->setMargin(4);
    form.lblReading->hide();
    auto* rows = new QVBoxLayout(form.picTreeContain);
    rows->setContentsMargins(0, 0, 0, ui::toPixels(50));
    rows->setSpacing(0);
    rows->addWidget(form.tvFolder, 1);
    rows->addWidget(form.lblReading);
}

void buildList(Form& form) {
    QWidget* pane = form.picBackGround;
    form.lvFormula = ui::makeNamed<ui::NodeView>("lvFormula", pane);
    form.lvFormula->setAccessibleName(QStringLiteral("公式列表"));
    form.lvFormula->setRootIsDecorated(false);
    form.lvFormula->setItemsExpandable(false);
    form.lvFormula->header()->setStretchLastSection(false);
    form.picShowFormulaSepar = makeBar("picShowFormulaSepar", pane);
    form.picFormulaSepar = makeDragBar("picFormulaSepar", pane);
    form.picFormula = ui::makeNamed<QWidget>("picFormula", pane);
}

void buildDescriptionOptions(DescriptionForm& form, QWidget* panel) {
    form.frmDesc = ui::makeNamed<QFrame>("frmDesc", panel);
    auto* options = new QHBoxLayout(form.frmDesc);
    options->setContentsMargins(6, 2, 6, 2);
    const std::array texts{QStringLiteral("说明"), QStringLiteral("图片")};
    auto* group = new QButtonGroup(form.frmDesc);
    for (std::size_t i = 0; i < form.optDesc.size(); ++i) {
        auto* option = ui::makeNamed<QRadioButton>("optDesc", form.frmDesc);
        option->setObjectName(QStringLiteral("optDesc%1").arg(i));
        option->setText(texts[i]);
        group->addButton(option, static_cast<int>(i));
        options->addWidget(option);
        form.optDesc[i] = option;
    }
    options->addStretch();
    form.optDesc[DescOptionPicture]->setChecked(true);
}

void buildDescription(DescriptionForm& form, QWidget* panel) {
    buildDescriptionOptions(form, panel);
    form.PicDesc = ui::makeNamed<QFrame>("PicDesc", panel);
    form.txtDesc = ui::makeNamed<QPlainTextEdit>("txtDesc", form.PicDesc);
    form.txtDesc->setAccessibleName(QStringLiteral("公式说明"));
    form.txtDesc->setFrameShape(QFrame::NoFrame);
    form.txtDesc->setTabChangesFocus(true);
    form.txtDesc->hide();
    form.imgDesc = ui::makeNamed<ui::PictureBox>("imgDesc", form.PicDesc);
    form.imgDesc->setAccessibleName(QStringLiteral("公式图片"));
    form.imgDesc->setFocusPolicy(Qt::StrongFocus);
    form.imgDesc->hide();
    form.lblDesc = ui::makeNamed<ui::FocusLabel>("lblDesc", form.PicDesc);
    form.lblDesc->setFocusPolicy(Qt::StrongFocus);
    form.lblDesc->setText(QStringLiteral("无图片"));
    form.lblDesc->setAlignment(Qt::AlignCenter);

    auto* contents = new QVBoxLayout(form.PicDesc);
    contents->setContentsMargins(0, 0, 0, 0);
    contents->addWidget(form.txtDesc);
    contents->addWidget(form.imgDesc);
    contents->addWidget(form.lblDesc);
    auto* rows = new QVBoxLayout(panel);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(2);
    rows->addWidget(form.frmDesc);
    rows->addWidget(form.PicDesc, 1);
}

void buildSymbolBand(SymbolForm& form, QWidget* pane) {
    form.picSymbol = ui::makeNamed<QWidget>("picSymbol", pane);
    form.TabStripSymbol = ui::makeNamed<QTabBar>("TabStripSymbol", form.picSymbol);
    form.TabStripSymbol->setAccessibleName(QStringLiteral("符号类别"));
    form.TabStripSymbol->setExpanding(false);
    form.TabStripSymbol->setDrawBase(false);
    for (std::size_t i = 0; i < form.tbSymbol.size(); ++i) {
        form.tbSymbol[i] = ui::makeNamed<QToolBar>("tbSymbol", form.picSymbol);
        form.tbSymbol[i]->setObjectName(QStringLiteral("tbSymbol%1").arg(i));
        form.tbSymbol[i]->setVisible(i == 0);
    }
}

void buildFormulaBand(Form& form) {
    form.picInputFormula = ui::makeNamed<QWidget>("picInputFormula", form.picBackGround);
    form.frmFormula = ui::makeNamed<QFrame>("frmFormula", form.picInputFormula);
    form.lblFormula = ui::makeNamed<QLabel>("lblFormula", form.frmFormula);
    form.lblFormula->setText(QStringLiteral("公式:"));
    form.lblFormula->setFont(ui::songFont());
    auto* box = form.panel.txtFormula = ui::makeNamed<QLineEdit>("txtFormula", form.frmFormula);
    box->setAccessibleName(QStringLiteral("公式"));
    box->setFont(ui::songFont());
    box->setMaxLength(kTextLimit);
    form.lblFormula->setBuddy(box);
    auto* row = new QHBoxLayout(form.frmFormula);
    row->setContentsMargins(4, 2, 4, 2);
    row->addWidget(form.lblFormula);
    row->addWidget(box, 1);
    auto* band = new QHBoxLayout(form.picInputFormula);
    band->setContentsMargins(0, 0, 0, 0);
    band->addWidget(form.frmFormula);
}

ui::EditGrid* buildVariableGrid(QWidget* pane) {
    auto* grid = ui::makeNamed<ui::EditGrid>("MSFEditVarList", pane);
    grid->setAccessibleName(QStringLiteral("变量"));
    grid->SetCols(2);
    grid->SetRows(1);
    grid->SetCellText(0, kNameColumn, QStringLiteral("变量名称"));
    grid->SetCellText(0, kValueColumn, QStringLiteral("变量值"));
    grid->SetColEditable(kValueColumn, true);
    return grid;
}

void buildResultBoxes(ResultForm& form, QWidget* area) {
    form.lblResult = ui::makeNamed<QLabel>("lblResult", area);
    form.lblResult->setText(QStringLiteral("结果："));
    form.txtResult = ui::makeNamed<ui::ResultBox>("txtResult", area);
    form.txtResult->setAccessibleName(QStringLiteral("结果"));
    form.txtResult->setFont(ui::songFont());
    form.txtResult->setReadOnly(true);
    form.txtResult->setContextMenuPolicy(Qt::PreventContextMenu);
    form.lblPrecision = ui::makeNamed<QLabel>("lblPrecision", area);
    form.lblPrecision->setText(QStringLiteral("小数位："));
    form.UpDownPrecision = ui::makeNamed<QSpinBox>("UpDownPrecision", area);
    form.UpDownPrecision->setAccessibleName(QStringLiteral("小数位"));
    form.UpDownPrecision->setFont(ui::songFont());
    form.UpDownPrecision->setRange(0, 15);
    form.UpDownPrecision->setValue(2);
    form.lblPrecision->setBuddy(form.UpDownPrecision);
    form.txtPrecision = form.UpDownPrecision->findChild<QLineEdit*>();
    form.txtPrecision->setObjectName(QStringLiteral("txtPrecision"));
}

void buildResultButtons(ResultForm& form, QWidget* area) {
    form.cmdCalCulate =
        makeButton("cmdCalCulate", QStringLiteral("计算(&U)"), QStringLiteral("计算公式"), area);
    form.cmdSaveResult =
        makeButton("cmdSaveResult", QStringLiteral("M+"), QStringLiteral("存储结果"), area);
    form.CmdAddResult =
        makeButton("CmdAddResult", QStringLiteral("MR"), QStringLiteral("已存结果之和"), area);
    form.cmdClearResult =
        makeButton("cmdClearResult", QStringLiteral("MC"), QStringLiteral("清除已存结果"), area);
    form.cmdCopy = makeButton("cmdCopy", QStringLiteral("复制(&C)"),
                              QStringLiteral("把结果复制到剪贴板"), area);
    form.cmdSend = makeButton("cmdSend", QStringLiteral("传递(&P)"),
                              QStringLiteral("把结果传递给主程序"), area);
}

void buildResultArea(ResultForm& form, QWidget* pane) {
    QWidget* area = form.picResult = ui::makeNamed<QWidget>("picResult", pane);
    buildResultBoxes(form, area);
    buildResultButtons(form, area);
    auto* rows = new QVBoxLayout(area);
    rows->setContentsMargins(4, 2, 4, 2);
    rows->setSpacing(3);
    const auto addRow = [rows](std::initializer_list<QWidget*> widgets, QWidget* stretched) {
        auto* row = new QHBoxLayout;
        row->setSpacing(3);
        for (QWidget* widget : widgets) {
            row->addWidget(widget, stretched == nullptr || widget == stretched ? 1 : 0);
        }
        rows->addLayout(row);
    };
    addRow({form.lblResult, form.txtResult}, form.txtResult);
    addRow({form.lblPrecision, form.UpDownPrecision, form.cmdCalCulate}, form.cmdCalCulate);
    addRow({form.cmdSaveResult, form.CmdAddResult, form.cmdClearResult}, nullptr);
    addRow({form.cmdCopy, form.cmdSend}, nullptr);
    rows->addStretch();
}

void setTabOrder(const Form& form) {
    const auto& [description, symbols, txtFormula, MSFEditVarList, result] = form.panel;
    const std::initializer_list<QWidget*> order{form.tvFolder,
                                                form.lvFormula,
                                                description.optDesc[DescOptionText],
                                                description.optDesc[DescOptionPicture],
                                                description.txtDesc,
                                                description.imgDesc,
                                                description.lblDesc,
                                                symbols.TabStripSymbol,
                                                txtFormula,
                                                MSFEditVarList,
                                                result.cmdCalCulate,
                                                result.txtResult,
                                                result.UpDownPrecision,
                                                result.cmdSaveResult,
                                                result.CmdAddResult,
                                                result.cmdClearResult,
                                                result.cmdCopy,
                                                result.cmdSend};
    QWidget* previous = nullptr;
    for (QWidget* widget : order) {
        if (previous != nullptr) {
            QWidget::setTabOrder(previous, widget);
        }
        previous = widget;
    }
}

}  // namespace

Form buildForm(QWidget* parent) {
    Form form;
    buildOuterPanes(form, parent);
    buildList(form);
    buildDescription(form.panel.description, form.picFormula);
    buildSymbolBand(form.panel.symbols, form.picBackGround);
    buildFormulaBand(form);
    form.panel.MSFEditVarList = buildVariableGrid(form.picBackGround);
    buildResultArea(form.panel.result, form.picBackGround);
    setTabOrder(form);
    return form;
}

}  // namespace varo
