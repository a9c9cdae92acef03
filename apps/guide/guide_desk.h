#pragma once

#include "driver/control_driver.h"

#include <QDir>
#include <QImage>
#include <QTemporaryDir>

#include <functional>

namespace varo::guide {

/// A window with the control on a copy of a configuration, for a program that works with it as a
/// user does, by mouse and keyboard, and takes pictures. What is not there throws DriverError.
class GuideDesk : public QWidget, public ControlDriver {
  public:
    explicit GuideDesk(const QString& configurationFolder);
    ~GuideDesk() override;

    using ControlDriver::find;

    /// Clicks on the first item with this text, at a place that menus leave most of it to be seen.
    void clickItem(ui::NodeView& view, const QString& text, Qt::MouseButton = Qt::LeftButton);
    void clickButton(const QString& name) { click(child(name)); }
    /// Moves the pointer to an entry of the menu that is open.
    void pointAt(const QString& entry);

    /// Runs `ask`, which must open a modal box, and takes a picture of the window with the box,
    /// which is then given up.
    QImage pictureOfQuestion(const std::function<void()>& ask);

    /// The same for a dialog, which is first worked with.
    QImage pictureOfDialog(const std::function<void()>& open,
                           const std::function<void(QWidget& dialog)>& use);

    /// The window as it is.
    QImage picture() { return grabWithPopups(); }

    /// The window with the popup that is open, which is then closed.
    QImage pictureOfPopup();

    /// Place of the widget in a picture.
    QRect place(const QString& name);
    QRect place(const QWidget& target) const;

  private:
    QImage grabWithPopups();

    /// Named so that its path can be shown.
    QTemporaryDir configuration_{QDir::temp().filePath(QStringLiteral("公式库-XXXXXX"))};
    QTemporaryDir work_;
};

}  // namespace varo::guide
