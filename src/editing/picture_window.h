#pragma once

#include "platform/ui/picture_box.h"

#include <QDialog>

namespace varo {

/// The window that shows a picture large, `frmImage`. A click on the picture empties it.
class PictureWindow : public QDialog {
    Q_OBJECT

  public:
    explicit PictureWindow(QWidget* parent);

    /// Shows the picture in a file. Returns false, with the window as it was, when it holds none.
    bool SetPicture(const QString& path);

    /// Sets the size of the window's inner area in pixels.
    void ResizeForm(int width, int height);

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    ui::PictureBox* imgFormula_;
    bool pressed_ = false;
};

}  // namespace varo
