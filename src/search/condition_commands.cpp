#include "search/condition_commands.h"

#include <algorithm>
#include <utility>

namespace varo {

namespace {

/// A place for a node: what ConditionTree::insert() and move() are given.
struct Place {
    ConditionPath parent;
    int position = 0;
};

ConditionPath sibling(ConditionPath path, int step) {
    path.back() += step;
    return path;
}

Place behind(const ConditionPath& path) {
    return {parentOf(path), path.back() + 1};
}

Place endOf(const ConditionTree& tree, const ConditionPath& group) {
    return {group, tree.childCount(group)};
}

bool takesChild(const ConditionTree& tree, const ConditionPath& path) {
    const ConditionNode* node = tree.find(path);
    return node != nullptr && node->isGroup() &&
           (node->type != ConditionType::Not || node->children.empty());
}

Place placeAtEnd(const ConditionTree& tree) {
    const ConditionPath root{0};
    return endOf(tree, tree.roots.size() == 1 && takesChild(tree, root) ? root : ConditionPath());
}

Place placeForNew(const ConditionTree& tree, const ConditionPath& current) {
    if (tree.find(current) == nullptr) {
        return placeAtEnd(tree);
    }
    if (takesChild(tree, current)) {
        return endOf(tree, current);
    }
    Place place = behind(current);
    while (!place.parent.empty() && !takesChild(tree, place.parent)) {
        place = behind(place.parent);
    }
    return place;
}

std::optional<Place> placeOutside(const ConditionTree& tree, const ConditionPath& path) {
    const ConditionPath group = parentOf(path);
    if (group.empty()) {
        return std::nullopt;
    }
    const ConditionPath around = parentOf(group);
    // Out of the only root there is nowhere to go.
    const bool takes = around.empty() ? tree.roots.size() > 1 : takesChild(tree, around);
    return takes ? std::optional(behind(group)) : std::nullopt;
}

std::optional<Place> placeInside(const ConditionTree& tree, const ConditionPath& path) {
    if (path.back() > 0 && takesChild(tree, sibling(path, -1))) {
        return endOf(tree, sibling(path, -1));
    }
    const ConditionPath next = sibling(path, 1);
    return takesChild(tree, next) ? std::optional(Place{next, 0}) : std::nullopt;
}

/// Where a command moves the node at `path`.
std::optional<Place> placeAfter(ConditionCommand command, const ConditionTree& tree,
                                const ConditionPath& path) {
    const int position = path.back();
    switch (command) {
        case ConditionCommand::MoveUp:
            return position > 0 ? std::optional(Place{parentOf(path), position - 1}) : std::nullopt;
        case ConditionCommand::MoveDown:
            return position + 1 < tree.childCount(parentOf(path))
                       ? std::optional(Place{parentOf(path), position + 2})
                       : std::nullopt;
        case ConditionCommand::MoveOut:
            return placeOutside(tree, path);
        default:
            return placeInside(tree, path);
    }
}

std::optional<EditedCondition> moved(ConditionTree tree, const ConditionPath& from,
                                     const std::optional<Place>& place) {
    const auto selected = place ? tree.move(from, place->parent, place->position) : std::nullopt;
    return selected ? std::optional(EditedCondition{std::move(tree), *selected}) : std::nullopt;
}

std::optional<EditedCondition> added(ConditionTree tree, const ConditionPath& current,
                                     ConditionNode node) {
    const Place place = placeForNew(tree, current);
    const auto selected = tree.insert(place.parent, place.position, std::move(node));
    return selected ? std::optional(EditedCondition{std::move(tree), *selected}) : std::nullopt;
}

/// What is around a group must take its children.
bool canUnwrap(const ConditionTree& tree, const ConditionPath& path) {
    const ConditionNode* around = tree.find(parentOf(path));
    const bool isInNot = around != nullptr && around->type == ConditionType::Not;
    return tree.canUnwrap(path) && (!isInNot || tree.childCount(path) <= 1);
}

EditedCondition wrapped(ConditionTree tree, const ConditionPath& path, ConditionType type) {
    tree.wrap(path, type);
    return {std::move(tree), path};
}

/// Each of these can be done.
std::optional<EditedCondition> editedAt(ConditionCommand command, const ConditionTree& tree,
                                        const ConditionPath& path) {
    switch (command) {
        case ConditionCommand::WrapAnd:
            return wrapped(tree, path, ConditionType::And);
        case ConditionCommand::WrapOr:
            return wrapped(tree, path, ConditionType::Or);
        case ConditionCommand::WrapNot:
            return wrapped(tree, path, ConditionType::Not);
        case ConditionCommand::Unwrap: {
            EditedCondition edit{tree, path};
            edit.tree.unwrap(path);
            return edit;
        }
        case ConditionCommand::Remove: {
            EditedCondition edit{tree, path};
            edit.tree.remove(path);
            return edit;
        }
        default:
            return moved(tree, path, placeAfter(command, tree, path));
    }
}

}  // namespace

bool canEdit(ConditionCommand command, const ConditionTree& tree, const ConditionPath& current) {
    const bool isOnNode = tree.find(current) != nullptr;
    switch (command) {
        case ConditionCommand::AddComparison:
        case ConditionCommand::AddAnd:
        case ConditionCommand::AddOr:
        case ConditionCommand::AddNot:
            return true;
        case ConditionCommand::Clear:
            return !tree.isEmpty();
        case ConditionCommand::Undo:
        case ConditionCommand::Redo:
        case ConditionCommand::Try:
            return false;
        case ConditionCommand::WrapAnd:
        case ConditionCommand::WrapOr:
        case ConditionCommand::WrapNot:
        case ConditionCommand::Remove:
            return isOnNode;
        case ConditionCommand::Unwrap:
            return isOnNode && canUnwrap(tree, current);
        default:
            return isOnNode && placeAfter(command, tree, current);
    }
}

std::optional<EditedCondition> editedBy(ConditionCommand command, const ConditionTree& tree,
                                        const ConditionPath& current) {
    if (!canEdit(command, tree, current)) {
        return std::nullopt;
    }
    switch (command) {
        case ConditionCommand::AddComparison:
            return added(tree, current, {});
        case ConditionCommand::AddAnd:
            return added(tree, current, groupNode(ConditionType::And));
        case ConditionCommand::AddOr:
            return added(tree, current, groupNode(ConditionType::Or));
        case ConditionCommand::AddNot:
            return added(tree, current, groupNode(ConditionType::Not));
        case ConditionCommand::Clear:
            return EditedCondition();
        default:
            return editedAt(command, tree, current);
    }
}

bool canDrop(const ConditionTree& tree, const ConditionPath& from, const ConditionPath& parent) {
    const bool isInside =
        parent.size() >= from.size() && std::equal(from.begin(), from.end(), parent.begin());
    return tree.find(from) != nullptr && !isInside && (parent.empty() || takesChild(tree, parent));
}

std::optional<EditedCondition> editedByDrop(const ConditionTree& tree, const ConditionPath& from,
                                            const ConditionPath& parent, int position) {
    if (!canDrop(tree, from, parent)) {
        return std::nullopt;
    }
    if (position >= 0) {
        return moved(tree, from, Place{parent, position});
    }
    return moved(tree, from, parent.empty() ? placeAtEnd(tree) : endOf(tree, parent));
}

}  // namespace varo
