#pragma once

#include "platform/questions/questions.h"
#include "search/property_form.h"
#include "search/property_list_model.h"
#include "search/set_filter.h"

#include <QDialog>

#include <functional>
#include <map>
#include <optional>

namespace varo {

/// The property-conditions dialog, `frmLocateNode`: gives a node or a formula its properties, and
/// each its condition. A condition that has been edited stays as it is, unsaved, while another
/// property is selected; closing with OK asks about each that is not saved then.
class PropertyDialog : public QDialog {
    Q_OBJECT

  public:
    /// `session` has listed the properties. When the dialog was not accepted, what was done is to
    /// be taken back with session.cancel(). Everything handed in must outlive this.
    PropertyDialog(const QString& title, PropertySession& session, PropertySource& properties,
                   Questions& questions, QWidget* parent);
    ~PropertyDialog() override;

    /// What gives the names that are offered for properties in conditions; asked once, when it is
    /// needed first.
    void offerNames(std::function<QStringList()> source);

    /// How many properties the node has, once the dialog has been accepted.
    int propertyCount() const { return propertyCount_; }

    void accept() override;

  private:
    void connectCommands();
    void addProperty();
    void deleteProperty();
    void renameProperty();
    void checkFilter();
    void saveFilter();
    void deleteFilter();
    void showProperty(std::optional<qint32> id);
    void loadFilter(qint32 id);
    bool hasStoredFilter() const;
    void keepDraft();
    void followEdits();
    void tellRefused(const QString& message);
    bool commitEdits();
    bool saveDrafts();
    bool saveShown();
    bool write(const std::function<PropertySession::Outcome()>& edit);
    void showWritten();

    PropertySession& session_;
    Questions& questions_;
    PropertyListModel model_;
    PropertyForm form_;
    /// Those that are not saved; the one shown is in the editor.
    std::map<qint32, SetFilter::Draft> drafts_;
    std::optional<qint32> shown_;
    int propertyCount_ = 0;
    bool isRefusalPending_ = false;  ///< a name has been refused, and the user is about to be told
};

}  // namespace varo
