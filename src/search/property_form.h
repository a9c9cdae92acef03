#pragma once

class QDialog;
class QLabel;
class QPushButton;

namespace varo {

class PropertySource;
class SetFilter;

namespace ui {
class NodeView;
}

/// The named widgets of the property-conditions dialog, each owned by it.
struct PropertyForm {
    QLabel* lblTitle = nullptr;
    ui::NodeView* lvProp = nullptr;
    QPushButton* cmdAddProp = nullptr;
    QPushButton* cmdDelProp = nullptr;
    SetFilter* SetFilterProp = nullptr;
    QPushButton* cmdSearch = nullptr;
    QPushButton* cmdSaveFilter = nullptr;
    QPushButton* cmdDelFilter = nullptr;
    QPushButton* cmdOK = nullptr;
};

/// Creates them in `dialog` and lays them out. `properties` must outlive the dialog.
PropertyForm buildPropertyForm(QDialog& dialog, PropertySource& properties);

}  // namespace varo
