#pragma once

#include "control/varo_calcex.h"
#include "platform/ui/node_view.h"

#include <QImage>
#include <QTemporaryDir>

#include <functional>
#include <stdexcept>

namespace varo::guide {

/// Something that a scene needs is not there.
struct SceneError : std::runtime_error {
    explicit SceneError(const QString& what) : std::runtime_error(what.toStdString()) {}
};

/// A window with the control on a copy of a configuration, for a program that works with it as a
/// user does, by mouse and keyboard, and takes pictures. What is not there throws SceneError.
class GuideDesk : public QWidget {
  public:
    explicit GuideDesk(const QString& configurationFolder);
    ~GuideDesk() override;

    template <class Part = QWidget>
    Part& part(const QString& name) {
        auto* found = control_->findChild<Part*>(name);
        if (found == nullptr) {
            throw SceneError(QStringLiteral("there is no '%1'").arg(name));
        }
        return *found;
    }
    ui::NodeView& tree() { return part<ui::NodeView>(QStringLiteral("tvFolder")); }
    ui::NodeView& list() { return part<ui::NodeView>(QStringLiteral("lvFormula")); }

    /// Clicks on a widget that can be used, in its middle unless another place is given, and waits
    /// until all has happened.
    void click(QWidget& target, Qt::MouseButton button = Qt::LeftButton, QPoint place = {});
    /// Clicks on the first item with this text.
    void clickItem(ui::NodeView& view, const QString& text, Qt::MouseButton = Qt::LeftButton);
    void clickButton(const QString& name) { click(part(name)); }
    /// Presses keys on the widget that has the focus.
    void pressKey(Qt::Key key);
    void type(const QString& text);
    /// Moves the pointer to an entry of the menu that is open.
    void pointAt(const QString& entry);

    /// Runs `ask`, which must open a modal box, and takes a picture of the window with the box,
    /// which is then given up.
    QImage pictureOfQuestion(const std::function<void()>& ask);

    /// The window as it is.
    QImage picture() { return grabWithPopups(); }

    /// The window with the popup that is open, which is then closed.
    QImage pictureOfPopup();

    /// Place of the widget in a picture.
    QRect place(const QString& name);
    QRect place(const QWidget& target) const;

  private:
    QImage grabWithPopups();

    QTemporaryDir configuration_;
    QTemporaryDir work_;
    Varo_CalcEx* control_;
};

/// Lets everything that is queued happen.
void settle();

}  // namespace varo::guide
