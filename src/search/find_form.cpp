#include "search/find_form.h"

#include "library/node_search.h"
#include "platform/ui/icons.h"
#include "platform/ui/named_widgets.h"
#include "platform/ui/picture_grid.h"
#include "search/hit_delegate.h"

#include <QBoxLayout>
#include <QCheckBox>
#include <QComboBox>
#include <QCompleter>
#include <QDialog>
#include <QFrame>
#include <QGridLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QTabBar>
#include <QToolButton>
#include <QTreeView>

namespace varo {

namespace {

QFrame* makePane(const char* name, QWidget* parent) {
    auto* pane = ui::makeNamed<QFrame>(name, parent);
    pane->setFrameShape(QFrame::NoFrame);
    return pane;
}

/// A text box and the choice where its text is to stand.
QFrame* makeTextPane(const char* paneName, QWidget* parent, const char* textName, QLineEdit*& text,
                     const char* optionName, std::array<QRadioButton*, 3>& options) {
    const QString captions[] = {QStringLiteral("前几个字符"), QStringLiteral("后几个字符"),
                                QStringLiteral("包含")};
    QFrame* pane = makePane(paneName, parent);
    auto* row = new QHBoxLayout(pane);
    row->setContentsMargins(0, 0, 0, 0);
    text = ui::makeNamed<QLineEdit>(textName, pane);
    text->setMaxLength(kFindTextLimit);
    constexpr int kShownAtLeast = 8;  // wide characters
    text->setMinimumWidth(kShownAtLeast * text->fontMetrics().horizontalAdvance(u'字'));
    row->addWidget(text, 1);
    for (std::size_t i = 0; i < options.size(); ++i) {
        options[i] = ui::makeNamed<QRadioButton>(optionName, pane, captions[i]);
        options[i]->setObjectName(QString::fromLatin1(optionName) + QString::number(i));
        row->addWidget(options[i]);
    }
    options[0]->setChecked(true);
    return pane;
}

void buildCriteria(FindForm& form, QVBoxLayout& column) {
    QFrame* pane = form.PicFind;
    form.lblFindContent =
        ui::makeNamed<QLabel>("lblFindContent", pane, QStringLiteral("查询范围："));
    form.ChkFolder = ui::makeNamed<QCheckBox>("ChkFolder", pane, QStringLiteral("公式夹"));
    form.ChkFormula = ui::makeNamed<QCheckBox>("ChkFormula", pane, QStringLiteral("公式"));
    form.ChkName = ui::makeNamed<QCheckBox>("ChkName", pane);
    form.PicFindName =
        makeTextPane("PicFindName", pane, "txtName", form.txtName, "OptFindName", form.OptFindName);
    form.ChkMemo = ui::makeNamed<QCheckBox>("ChkMemo", pane, QStringLiteral("公式说明"));
    form.PicFindMemo =
        makeTextPane("PicFindMemo", pane, "txtMemo", form.txtMemo, "OptFindMemo", form.OptFindMemo);
    form.ChkPrpty = ui::makeNamed<QCheckBox>("ChkPrpty", pane, QStringLiteral("属性名称"));
    form.CmbPrpty = ui::makeNamed<QComboBox>("CmbPrpty", pane);
    form.CmbPrpty->setEditable(true);
    form.CmbPrpty->setInsertPolicy(QComboBox::NoInsert);
    form.CmbPrpty->lineEdit()->setMaxLength(kFindTextLimit);
    // The name is searched as a whole: it is not to be completed while it is typed.
    form.CmbPrpty->completer()->setCompletionMode(QCompleter::PopupCompletion);
    form.txtName->setAccessibleName(QStringLiteral("名称"));
    form.txtMemo->setAccessibleName(form.ChkMemo->text());
    form.CmbPrpty->setAccessibleName(form.ChkPrpty->text());

    auto* grid = new QGridLayout;
    auto* kinds = new QHBoxLayout;
    kinds->addWidget(form.ChkFolder);
    kinds->addWidget(form.ChkFormula);
    kinds->addStretch();
    grid->addWidget(form.lblFindContent, 0, 0);
    grid->addLayout(kinds, 0, 1);
    grid->addWidget(form.ChkName, 1, 0);
    grid->addWidget(form.PicFindName, 1, 1);
    grid->addWidget(form.ChkMemo, 2, 0);
    grid->addWidget(form.PicFindMemo, 2, 1);
    grid->addWidget(form.ChkPrpty, 3, 0);
    grid->addWidget(form.CmbPrpty, 3, 1);
    grid->setColumnStretch(1, 1);
    // The caption changes; the boxes beside it are to stay where they are.
    form.ChkName->setText(QStringLiteral("公式夹名称"));
    grid->setColumnMinimumWidth(0, form.ChkName->sizeHint().width());
    column.addLayout(grid);
}

void buildResults(FindForm& form, QVBoxLayout& column) {
    QFrame* pane = form.PicFind;
    form.lblFindResult = ui::makeNamed<QLabel>("lblFindResult", pane, QStringLiteral("查询结果："));
    form.lblFindCount = ui::makeNamed<QLabel>("lblFindCount", pane);
    form.lblFindCount->setTextFormat(Qt::PlainText);
    form.PrgFind = ui::makeNamed<QProgressBar>("PrgFind", pane);
    form.PrgFind->setTextVisible(false);
    form.PrgFind->setMaximumHeight(form.lblFindCount->sizeHint().height());
    form.PrgFind->hide();
    auto* row = new QHBoxLayout;
    row->addWidget(form.lblFindResult);
    row->addWidget(form.lblFindCount);
    row->addStretch();
    row->addWidget(form.PrgFind);
    column.addLayout(row);

    auto* list = form.lvFindResult = ui::makeNamed<QTreeView>("lvFindResult", pane);
    list->setAccessibleName(QStringLiteral("查询结果"));
    list->setRootIsDecorated(false);
    list->setUniformRowHeights(true);
    list->setItemsExpandable(false);
    list->setEditTriggers(QAbstractItemView::NoEditTriggers);
    list->setIconSize(ui::iconSizeFor(*list));
    list->setItemDelegate(new HitDelegate(list));
    list->header()->setStretchLastSection(false);
    list->header()->setSectionsMovable(false);
    column.addWidget(list, 1);
}

QToolButton* makeZoomButton(FindForm& form, const char* icon, const QString& toolTip, int steps) {
    auto* button = new QToolButton(form.PicImage);
    button->setIcon(ui::themeIcon(QString::fromLatin1(icon)));
    button->setToolTip(toolTip);
    button->setAccessibleName(toolTip);
    button->setAutoRaise(true);
    QObject::connect(button, &QToolButton::clicked, form.ImageGridFind,
                     [grid = form.ImageGridFind, steps] { grid->zoom(steps); });
    return button;
}

void buildPictures(FindForm& form) {
    auto* column = new QVBoxLayout(form.PicImage);
    column->setContentsMargins(0, 0, 0, 0);
    form.ImageGridFind = ui::makeNamed<ui::PictureGrid>("ImageGridFind", form.PicImage);
    form.ImageGridFind->setAccessibleName(QStringLiteral("公式图片"));
    form.lblImageCount = ui::makeNamed<QLabel>("lblImageCount", form.PicImage);
    form.lblImageCount->setTextFormat(Qt::PlainText);
    form.lblImageCount->setWordWrap(true);
    auto* row = new QHBoxLayout;
    row->addWidget(form.lblImageCount, 1);
    row->addWidget(makeZoomButton(form, "zoom-out", QStringLiteral("缩小图片（Ctrl+-）"), -1));
    row->addWidget(makeZoomButton(form, "zoom-in", QStringLiteral("放大图片（Ctrl++）"), 1));
    column->addWidget(form.ImageGridFind, 1);
    column->addLayout(row);
}

}  // namespace

FindForm buildFindForm(QDialog& dialog) {
    FindForm form{};
    auto* column = new QVBoxLayout(&dialog);
    form.lblTitle = ui::makeNamed<QLabel>("lblTitle", &dialog, dialog.windowTitle());
    form.TabFind = ui::makeNamed<QTabBar>("TabFind", &dialog);
    form.TabFind->setDrawBase(false);
    form.TabFind->setExpanding(false);
    form.TabFind->setUsesScrollButtons(false);  // both captions can be seen in a narrow dialog
    form.TabFind->addTab(ui::themeIcon(QStringLiteral("edit-find")), QStringLiteral("查找"));
    form.TabFind->addTab(ui::themeIcon(QStringLiteral("view-preview")), QStringLiteral("图片"));
    form.PicFind = makePane("PicFind", &dialog);
    auto* find = new QVBoxLayout(form.PicFind);
    find->setContentsMargins(0, 0, 0, 0);
    buildCriteria(form, *find);
    buildResults(form, *find);
    form.PicImage = makePane("PicImage", &dialog);
    form.PicImage->hide();
    buildPictures(form);

    form.CmdFind = ui::makeNamed<QPushButton>("CmdFind", &dialog, QStringLiteral("查找(&F)"));
    form.CmdFind->setDefault(true);
    form.CmdPosition =
        ui::makeNamed<QPushButton>("CmdPosition", &dialog, QStringLiteral("定位(&P)"));
    form.CmdPosition->setEnabled(false);
    form.CmdQuit = ui::makeNamed<QPushButton>("CmdQuit", &dialog, QStringLiteral("退出(&Q)"));
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    for (QPushButton* button : {form.CmdFind, form.CmdPosition, form.CmdQuit}) {
        buttons->addWidget(button);
    }
    column->addWidget(form.lblTitle);
    column->addWidget(form.TabFind);
    column->addWidget(form.PicFind, 1);
    column->addWidget(form.PicImage, 1);
    column->addLayout(buttons);
    return form;
}

}  // namespace varo
