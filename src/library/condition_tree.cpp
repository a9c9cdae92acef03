#include "library/condition_tree.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace varo {

namespace {

using Nodes = std::vector<ConditionNode>;

Nodes::iterator at(Nodes& nodes, int position) {
    return nodes.begin() + position;
}

bool isPosition(const Nodes& nodes, int position) {
    return position >= 0 && static_cast<std::size_t>(position) < nodes.size();
}

ConditionNode* nodeAt(ConditionTree& tree, const ConditionPath& path) {
    return const_cast<ConditionNode*>(std::as_const(tree).find(path));
}

/// The nodes among which the node at `path` is; `path` leads to a node.
Nodes& siblingsOf(ConditionTree& tree, const ConditionPath& path) {
    return path.size() == 1 ? tree.roots : nodeAt(tree, parentOf(path))->children;
}

bool startsWith(const ConditionPath& path, const ConditionPath& start) {
    return path.size() >= start.size() && std::equal(start.begin(), start.end(), path.begin());
}

int countOf(const Nodes& nodes) {
    int count = 0;
    for (const ConditionNode& node : nodes) {
        count += 1 + countOf(node.children);
    }
    return count;
}

}  // namespace

ConditionPath parentOf(ConditionPath path) {
    path.pop_back();
    return path;
}

ConditionNode groupNode(ConditionType type, std::vector<ConditionNode> children) {
    return {.type = type, .children = std::move(children)};
}

ConditionNode comparisonNode(const QString& name, qint32 type, const QString& constant) {
    return {.term = {.name = name, .type = type, .constant = constant, .table = {}}};
}

int ConditionTree::size() const {
    return countOf(roots);
}

const ConditionNode* ConditionTree::find(const ConditionPath& path) const {
    const Nodes* nodes = &roots;
    const ConditionNode* found = nullptr;
    for (const int position : path) {
        if (!isPosition(*nodes, position)) {
            return nullptr;
        }
        found = &(*nodes)[static_cast<std::size_t>(position)];
        nodes = &found->children;
    }
    return found;
}

int ConditionTree::childCount(const ConditionPath& path) const {
    const ConditionNode* node = find(path);
    if (node == nullptr && !path.empty()) {
        return 0;
    }
    return static_cast<int>((node == nullptr ? roots : node->children).size());
}

std::optional<ConditionPath> ConditionTree::insert(const ConditionPath& parent, int position,
                                                   ConditionNode node) {
    ConditionNode* group = nodeAt(*this, parent);
    if (position < 0 || position > childCount(parent) ||
        (!parent.empty() && (group == nullptr || !group->isGroup()))) {
        return std::nullopt;
    }
    if (group != nullptr) {
        group->children.insert(at(group->children, position), std::move(node));
    } else if (roots.size() == 1) {
        roots.insert(at(roots, position), std::move(node));
        ConditionNode both = groupNode(ConditionType::And, std::exchange(roots, {}));
        roots.push_back(std::move(both));
        return ConditionPath{0, position};
    } else {
        roots.insert(at(roots, position), std::move(node));
    }
    ConditionPath place = parent;
    place.push_back(position);
    return place;
}

bool ConditionTree::remove(const ConditionPath& path) {
    if (find(path) == nullptr) {
        return false;
    }
    Nodes& siblings = siblingsOf(*this, path);
    siblings.erase(at(siblings, path.back()));
    return true;
}

std::optional<ConditionPath> ConditionTree::move(const ConditionPath& from,
                                                 const ConditionPath& parent, int position) {
    const ConditionNode* node = find(from);
    const ConditionNode* group = find(parent);
    if (node == nullptr || startsWith(parent, from) || position < 0 ||
        position > childCount(parent) ||
        (!parent.empty() && (group == nullptr || !group->isGroup()))) {
        return std::nullopt;
    }
    ConditionNode moved = *node;
    remove(from);
    // What follows the node among its siblings stands one place further up.
    ConditionPath target = parent;
    const std::size_t level = from.size() - 1;
    if (target.size() > level && startsWith(target, parentOf(from)) &&
        target[level] > from[level]) {
        --target[level];
    } else if (target == parentOf(from) && position > from.back()) {
        --position;
    }
    return insert(target, position, std::move(moved));
}

bool ConditionTree::wrap(const ConditionPath& path, ConditionType type) {
    ConditionNode* node = nodeAt(*this, path);
    if (node == nullptr || !isGroupType(type)) {
        return false;
    }
    ConditionNode group = groupNode(type);
    group.children.push_back(std::move(*node));
    *node = std::move(group);
    return true;
}

bool ConditionTree::canUnwrap(const ConditionPath& path) const {
    const ConditionNode* node = find(path);
    return node != nullptr && node->isGroup() &&
           (path.size() > 1 || roots.size() > 1 || node->children.size() <= 1);
}

bool ConditionTree::unwrap(const ConditionPath& path) {
    if (!canUnwrap(path)) {
        return false;
    }
    Nodes& siblings = siblingsOf(*this, path);
    Nodes children = std::move(at(siblings, path.back())->children);
    const auto place = siblings.erase(at(siblings, path.back()));
    siblings.insert(place, std::make_move_iterator(children.begin()),
                    std::make_move_iterator(children.end()));
    return true;
}

bool ConditionTree::setGroupType(const ConditionPath& path, ConditionType type) {
    ConditionNode* node = nodeAt(*this, path);
    if (node == nullptr || !node->isGroup() || !isGroupType(type)) {
        return false;
    }
    node->type = type;
    return true;
}

bool ConditionTree::setTerm(const ConditionPath& path, const ComparisonTerm& term) {
    ConditionNode* node = nodeAt(*this, path);
    if (node == nullptr || node->type != ConditionType::Comparison) {
        return false;
    }
    node->term = term;
    node->hasTerm = true;
    return true;
}

void ConditionHistory::reset(ConditionTree tree) {
    states_.assign(1, std::move(tree));
    position_ = 0;
}

void ConditionHistory::push(ConditionTree tree) {
    if (tree == current()) {
        return;
    }
    states_.resize(position_ + 1);
    states_.push_back(std::move(tree));
    ++position_;
}

void ConditionHistory::undo() {
    position_ -= canUndo() ? 1 : 0;
}

void ConditionHistory::redo() {
    position_ += canRedo() ? 1 : 0;
}

}  // namespace varo
