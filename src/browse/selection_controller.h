#pragma once

#include "browse/locate_highlight.h"
#include "form/selection_state.h"
#include "formula/formula_pane.h"

#include <QObject>

#include <optional>
#include <variant>

namespace varo {

/// The one path by which a node or a formula is selected: stores what is being typed, makes the
/// library of the node the current one, lists its formulas, shows the formula, and says what is
/// selected; each once. Tree, list and panel then show the same, unless the host has turned the
/// control to something else while it was asked for a value.
class SelectionController : public QObject {
    Q_OBJECT

  public:
    /// What the user is told of a library that cannot be opened.
    static inline const QString kNotOpened = QStringLiteral("无法打开用户指定的数据库！");

    /// What edit commands act on: a node, a listed formula, or nothing.
    using Item = std::variant<std::monostate, NodeId, qint32>;

    /// Everything handed in must outlive this.
    SelectionController(LibraryTree& tree, FormulaList& list, FormulaPane& pane,
                        CurrentLibrary& library, Questions& questions);

    /// Where a node is that was read from a library at some time.
    enum class NodePlace {
        Tree,
        Gone,     ///< the library does not have it any more
        Unknown,  ///< the library cannot be read
    };

    /// Looks a node up in the tree, into which its library is read first when it has not been read
    /// yet, or when another file has taken its place; what is listed of the former file is then
    /// removed. To be called right after what was being typed has been stored.
    NodePlace findNode(const NodeId& node);

    /// Selects a node as if the user had clicked it. Returns whether its formulas are listed then;
    /// an unknown node does nothing.
    bool selectNode(const NodeId& node);

    /// Shows and calculates a listed formula; one that is not listed only ends the locate
    /// highlight.
    void selectFormula(qint32 id);

    /// The same, right after what was being typed has been stored (see nodeForCommand()).
    /// `notOpened` is what the user is told when the library cannot be opened.
    bool showNode(NodeId node, const QString& notOpened = kNotOpened);
    void showFormula(qint32 id);

    /// Shows the first listed formula, or that there is none.
    void showFirstFormula();

    /// Deselects the formula, and empties the panel.
    void deselectFormula();

    /// Lists the formulas of the listed node again and shows one of them. Returns false when
    /// reading fails; list and panel are then empty.
    bool relist(qint32 id);

    /// Empties list and panel.
    void showNothing();

    /// Empties the panel, and says that `state` is selected.
    void SetSelectionState(SelectionState state);

    /// Stores what is being typed: labels, values, formula, description. Returns false when the
    /// user has to correct something first and must stay where it is.
    bool storeEdits();

    /// For a command on the tree: stores what is being typed and makes sure that the list shows the
    /// selected node, which may have been selected by opening it only. Returns that node; an
    /// invalid one, the user having been told, when the command cannot go on.
    NodeId nodeForCommand();

    /// For a command on the list: stores what is being typed and returns the selected formula; none
    /// when there is none or the command cannot go on. The tree then shows the listed node.
    std::optional<qint32> formulaForCommand();

    /// The node whose formulas are listed; an invalid one when none are.
    const NodeId& listedNode() const { return listedNode_; }
    bool listsFormulas() const { return !list_.isEmpty(); }
    QString listedText() const { return tree_.text(listedNode_); }
    /// Whether `node` is listed and selected still, and so what a command acts on.
    bool isSelected(const NodeId& node) const {
        return node == listedNode_ && node == tree_.selectedNode();
    }

    /// The formula that is selected and shown.
    std::optional<qint32> formula() const { return pane_.shown(); }

    /// The last thing that was selected, or that a menu was opened on.
    const Item& currentItem() const { return current_; }

    /// Makes the selected node, or formula, the one that edit commands act on. Without a selected
    /// formula the current item stays.
    void makeNodeCurrent();
    void makeFormulaCurrent();

    /// Whether the user has chosen a formula in the list: set by a click on one and by the commands
    /// on it, ended by a click on empty space and by listing another folder.
    bool isFormulaSelected() const { return isFormulaSelected_; }
    void setFormulaSelected(bool selected) { isFormulaSelected_ = selected; }

    SelectionState state() const { return state_; }
    LocateHighlight& highlight() { return highlight_; }

  signals:
    /// What is selected, and so what is offered, has been decided anew.
    void stateChanged(SelectionState state);

  private:
    void display(qint32 id, HeldMessages& messages);
    void showEmptyPanel();
    void setState(SelectionState state);

    LibraryTree& tree_;
    FormulaList& list_;
    FormulaPane& pane_;
    CurrentLibrary& library_;
    Questions& questions_;
    LocateHighlight highlight_;
    NodeId listedNode_;
    Item current_;
    SelectionState state_ = SelectionState::Nothing;
    bool isFormulaSelected_ = false;
};

}  // namespace varo
