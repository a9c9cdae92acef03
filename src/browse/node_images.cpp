#include "browse/node_images.h"

#include "platform/ui/icons.h"

namespace varo {

namespace {

QString nameOf(NodeImage image) {
    switch (image) {
        case NodeImage::Library:
            return QStringLiteral("library");
        case NodeImage::Folder:
            return QStringLiteral("folder");
        case NodeImage::FolderOpen:
            return QStringLiteral("folder-open");
        case NodeImage::LibraryWithProperty:
            return QStringLiteral("library-property");
        case NodeImage::FolderWithProperty:
            return QStringLiteral("folder-property");
        case NodeImage::FolderWithPropertyOpen:
            return QStringLiteral("folder-open-property");
        case NodeImage::FolderLocated:
            return QStringLiteral("folder-located");
        case NodeImage::LibraryUnreadable:
            return QStringLiteral("library-unreadable");
    }
    return {};
}

QString nameOf(FormulaImage image) {
    switch (image) {
        case FormulaImage::Formula:
            return QStringLiteral("formula");
        case FormulaImage::FormulaWithProperty:
            return QStringLiteral("formula-property");
        case FormulaImage::FormulaLocated:
            return QStringLiteral("formula-located");
    }
    return {};
}

}  // namespace

QIcon nodeIcon(NodeImage image) {
    return ui::ownIcon(nameOf(image));
}

QIcon formulaIcon(FormulaImage image) {
    return ui::ownIcon(nameOf(image));
}

QString locatedDescription(bool isLocated) {
    return isLocated ? QStringLiteral("定位到的项") : QString();
}

}  // namespace varo
