#include "search/property_locator.h"

#include "platform/ui/node_view.h"
#include "search/condition.h"
#include "store/attempt.h"
#include "store/keys.h"

namespace varo {

PropertyLocator::PropertyLocator(ControlState& state, Questions& questions,
                                 PropertySource& properties, LibraryTree& tree, FormulaList& list)
    : state_(state), questions_(questions), properties_(properties), tree_(tree), list_(list) {}

void PropertyLocator::locate(const QString& property) {
    if (!list_.storeEdits()) {
        return;
    }
    emit stepsChanged(false, false);
    state_.located.Clear();
    shown_ = 0;
    const QString path = state_.currentLibraryPath;
    const QString name = state_.currentLibraryName;
    state_.locationPropName = property;
    bool complete = collectAll();
    if (!path.isEmpty() && !tree_.openLibrary(path, name)) {
        complete = tellCannotOpen();
    }
    if (const QString selected = list_.selectedKey(); !selected.isEmpty()) {
        list_.SelFormula(selected);
    }
    if (complete && state_.located.Count() > 0) {
        showItem(1);
        emit stepsChanged(state_.located.Count() > 1, false);
    }
}

bool PropertyLocator::tellCannotOpen() {
    questions_.inform(QStringLiteral("无法打开用户选择的数据库！"));
    return false;
}

bool PropertyLocator::collectAll() {
    for (const clsFormulaDB& library : state_.libraries) {
        if (!tree_.openLibrary(library.FormulaDBPath, library.FormulaDBName)) {
            return tellCannotOpen();
        }
        state_.variables.Clear();
        if (!collect(library.NodeKey, NodeTypeFormula) ||
            !collect(library.NodeKey, NodeTypeFolder) || !filter(library.NodeKey)) {
            return false;
        }
    }
    return true;
}

bool PropertyLocator::collect(const QString& libraryKey, qint32 nodeType) {
    data::Recordset rs;
    const bool read =
        state_.dbFuncs.GetLocateInfoByPropName(state_.locationPropName, nodeType, rs,
                                               state_.connection) &&
        attempt([&] {
            for (; !rs.atEnd(); rs.moveNext()) {
                const qint32 filterID = rs.integer(u"FilterID");
                const qint32 nodeID = rs.integer(u"NodeID");
                const qint32 parentID = nodeType == NodeTypeFormula ? rs.integer(u"PID") : 0;
                if (state_.located.Find(filterID, nodeID, nodeType, libraryKey) == nullptr) {
                    bool added = false;
                    state_.located.Add(filterID, nodeID, nodeType, parentID, libraryKey, QString(),
                                       added);
                }
            }
        });
    rs.close();
    if (!read) {
        questions_.inform(
            QStringLiteral("无法读取用户指定属性“%1”的信息！").arg(state_.locationPropName));
    }
    return read;
}

bool PropertyLocator::filter(const QString& libraryKey) {
    Condition condition(state_, properties_);
    QStringList unsuited;
    bool holds = false;
    for (const clsLocateProp& candidate : state_.located) {
        if (candidate.RootKey != libraryKey || candidate.FilterID == 0) {
            continue;
        }
        if (!condition.evaluate(candidate.FilterID, holds)) {
            questions_.inform(QStringLiteral("无法形成合成后的查找条件！"));
            return false;
        }
        if (!holds) {
            unsuited.append(candidate.Key);
        }
    }
    for (const QString& key : unsuited) {
        state_.located.Remove(key);
    }
    return true;
}

void PropertyLocator::step(int by) {
    const int wanted = shown_ + by;
    if (wanted < 1 || wanted > state_.located.Count()) {
        return;
    }
    showItem(wanted);
    emit stepsChanged(shown_<state_.located.Count(), shown_> 1);
}

void PropertyLocator::showItem(int position) {
    if (!list_.storeEdits()) {
        return;
    }
    tree_.removeHighlight();
    const clsLocateProp& item = state_.located.Item(position);
    const clsFormulaDB& library = state_.libraries.Item(item.RootKey);
    shown_ = position;
    const bool isFormula = item.NodeType == NodeTypeFormula;
    const qint32 folder = isFormula ? item.PID : item.NodeID;
    const QString node = folder == 0 ? item.RootKey : folderKey(folder, item.RootKey);
    if (tree_.GetRootKey(node).isEmpty()) {
        return;  // a property that its folder has left behind: tree and list stay where they are
    }
    if (!tree_.openLibrary(library.FormulaDBPath, library.FormulaDBName)) {
        tellCannotOpen();
        return;
    }
    state_.variables.Clear();
    tree_.selectNode(node);
    if (!isFormula) {
        tree_.highlightNode(node);
    } else if (!list_.isEmpty()) {
        const QString formula = formulaKey(item.NodeID);
        list_.SelFormula(formula);
        tree_.highlightFormula(formula);
    }
}

}  // namespace varo
