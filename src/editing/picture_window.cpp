#include "editing/picture_window.h"

#include "platform/ui/twips.h"

#include <QMouseEvent>
#include <QVBoxLayout>

#include <utility>

namespace varo {

namespace {

constexpr int kOpeningWidth = 9000;  // twips
constexpr int kOpeningHeight = 5000;

}  // namespace

PictureWindow::PictureWindow(QWidget* parent)
    : QDialog(parent), imgFormula_(new ui::PictureBox(this)) {
    setObjectName(QStringLiteral("frmImage"));
    setWindowTitle(QStringLiteral("公式图片"));
    imgFormula_->setObjectName(QStringLiteral("imgFormula"));
    imgFormula_->setAccessibleName(windowTitle());
    imgFormula_->installEventFilter(this);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(imgFormula_);
    resize(ui::toPixels(kOpeningWidth), ui::toPixels(kOpeningHeight));
}

bool PictureWindow::SetPicture(const QString& path) {
    return imgFormula_->load(path);
}

void PictureWindow::ResizeForm(int width, int height) {
    resize(width, height);
}

/// The double click that opened the window may still have to be released.
bool PictureWindow::eventFilter(QObject* watched, QEvent* event) {
    const bool isPress = event->type() == QEvent::MouseButtonPress;
    if ((isPress || event->type() == QEvent::MouseButtonRelease) &&
        static_cast<QMouseEvent*>(event)->button() == Qt::LeftButton &&
        std::exchange(pressed_, isPress) && !isPress) {
        imgFormula_->clear();
    }
    return QDialog::eventFilter(watched, event);
}

}  // namespace varo
