#include "platform/ui/picture_grid.h"

#include "platform/ui/colors.h"
#include "platform/ui/icons.h"
#include "platform/ui/shown_text.h"

#include <QKeyEvent>
#include <QPainter>
#include <QScrollBar>
#include <QStyledItemDelegate>
#include <QWheelEvent>

#include <algorithm>
#include <array>
#include <ranges>

namespace varo::ui {

namespace {

constexpr std::array kSides{64, 96, 144, 208, 288, 400};
constexpr int kFirstSide = kSides[2];
constexpr int kMargin = 8;
constexpr int kWheelStep = 120;

}  // namespace

/// Draws one picture with its text.
class PictureGrid::Delegate : public QStyledItemDelegate {
  public:
    explicit Delegate(PictureGrid& grid) : QStyledItemDelegate(&grid), grid_(grid) {}

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex&) const override {
        return {grid_.side() + 2 * kMargin,
                grid_.side() + option.fontMetrics.height() + 3 * kMargin};
    }

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override {
        QStyleOptionViewItem cell = option;
        initStyleOption(&cell, index);
        cell.text.clear();
        const QStyle& style = *grid_.style();
        style.drawPrimitive(QStyle::PE_PanelItemViewItem, &cell, painter, &grid_);
        const QRect box(cell.rect.left() + (cell.rect.width() - grid_.side()) / 2,
                        cell.rect.top() + kMargin, grid_.side(), grid_.side());
        paintPicture(*painter, box, cell.palette, index.row());
        paintText(*painter, cell, box.bottom() + 1, index.data().toString());
    }

  private:
    void paintPicture(QPainter& painter, const QRect& box, const QPalette& palette, int row) const {
        const QImage image = grid_.loader_.image(row);
        if (image.isNull()) {
            paintPlaceholder(painter, box, palette, row);
            return;
        }
        QSizeF size = image.deviceIndependentSize();
        if (size.width() > grid_.side() || size.height() > grid_.side()) {
            size.scale(grid_.side(), grid_.side(), Qt::KeepAspectRatio);
        }
        // On whole pixels of the device, or the picture would be blurred.
        const QTransform toDevice = painter.deviceTransform();
        const QPointF middle = QRectF(box).center();
        const QPointF corner = toDevice.inverted().map(
            QPointF(toDevice.map(middle - QPointF(size.width(), size.height()) / 2).toPoint()));
        painter.save();
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        if (image.hasAlphaChannel()) {
            // Drawings without a background are made for white paper.
            painter.fillRect(QRectF(corner, size), Qt::white);
        }
        painter.drawImage(QRectF(corner, size), image);
        painter.restore();
    }

    void paintPlaceholder(QPainter& painter, const QRect& box, const QPalette& palette,
                          int row) const {
        const QColor line = mixed(palette.color(QPalette::Base), palette.color(QPalette::Text), 25);
        painter.save();
        painter.setPen(QPen(line, 1, Qt::DashLine));
        painter.drawRect(box.adjusted(0, 0, -1, -1));
        if (grid_.loader_.isUnreadable(row)) {
            QRect mark(0, 0, 32, 32);
            mark.moveCenter(box.center());
            ownIcon(QStringLiteral("warning")).paint(&painter, mark);
        }
        painter.restore();
    }

    void paintText(QPainter& painter, const QStyleOptionViewItem& cell, int top,
                   const QString& text) const {
        const QRect line(cell.rect.left() + kMargin / 2, top + kMargin / 2,
                         cell.rect.width() - kMargin, cell.fontMetrics.height());
        const bool isSelected = cell.state.testFlag(QStyle::State_Selected);
        painter.save();
        painter.setPen(cell.palette.color(isSelected ? QPalette::HighlightedText : QPalette::Text));
        painter.drawText(line, Qt::AlignHCenter | Qt::AlignVCenter,
                         inOneLine(text, cell.fontMetrics, line.width()));
        painter.restore();
    }

    PictureGrid& grid_;
};

PictureGrid::PictureGrid(QWidget* parent) : QListView(parent), side_(kFirstSide) {
    // List mode: icon mode would let the items be dragged, and take longer to lay out.
    setFlow(LeftToRight);
    setWrapping(true);
    setResizeMode(Adjust);
    setUniformItemSizes(true);
    setVerticalScrollMode(ScrollPerPixel);
    setSelectionMode(SingleSelection);
    setEditTriggers(NoEditTriggers);
    setItemDelegate(new Delegate(*this));
    setSide(side_);
    connect(&loader_, &ThumbnailLoader::loaded, this, [this](int row) {
        if (model() != nullptr) {
            viewport()->update(visualRect(model()->index(row, 0)));
        }
    });
    connect(this, &QListView::clicked, this,
            [this](const QModelIndex& index) { emit pictureClicked(index.row()); });
}

void PictureGrid::setPictures(QAbstractItemModel* model, PictureBytes* bytes) {
    loader_.setSource(bytes);
    setModel(model);
    if (model != nullptr) {
        connect(model, &QAbstractItemModel::modelReset, &loader_,
                [this, bytes] { loader_.setSource(bytes); });
    }
}

void PictureGrid::release() {
    if (model() != nullptr) {
        disconnect(model(), nullptr, &loader_, nullptr);
    }
    setPictures(nullptr, nullptr);
}

PictureGrid::State PictureGrid::stateOf(int row) const {
    if (loader_.isUnreadable(row)) {
        return State::Unreadable;
    }
    return loader_.image(row).isNull() ? State::Waiting : State::Shown;
}

void PictureGrid::zoom(int steps) {
    const auto* current = std::ranges::find(kSides, side_);
    const auto wanted = (current - kSides.begin()) + steps;
    const auto last = static_cast<std::ptrdiff_t>(kSides.size()) - 1;
    setSide(steps == 0
                ? kFirstSide
                : kSides[static_cast<std::size_t>(std::clamp<std::ptrdiff_t>(wanted, 0, last))]);
}

void PictureGrid::setSide(int side) {
    // The current picture stays in sight if it is there, else the one at the top.
    const bool isCurrentSeen = viewport()->rect().intersects(visualRect(currentIndex()));
    const QModelIndex kept = isCurrentSeen ? currentIndex() : indexAt({kMargin, kMargin});
    side_ = side;
    setGridSize({side + 2 * kMargin, side + fontMetrics().height() + 3 * kMargin});
    if (kept.isValid()) {
        scrollTo(kept, PositionAtCenter);
    }
}

void PictureGrid::changeEvent(QEvent* event) {
    QListView::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange) {
        setSide(side_);
    }
}

void PictureGrid::keyPressEvent(QKeyEvent* event) {
    if (event->modifiers().testFlag(Qt::ControlModifier)) {
        switch (event->key()) {
            case Qt::Key_Plus:
            case Qt::Key_Equal:
                return zoom(1);
            case Qt::Key_Minus:
                return zoom(-1);
            case Qt::Key_0:
                return zoom(0);
            default:
                break;
        }
    }
    const bool isEnter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (isEnter && currentIndex().isValid()) {
        emit pictureClicked(currentIndex().row());
        return;
    }
    QListView::keyPressEvent(event);
}

void PictureGrid::wheelEvent(QWheelEvent* event) {
    if (!event->modifiers().testFlag(Qt::ControlModifier)) {
        wheel_ = 0;
        QListView::wheelEvent(event);
        return;
    }
    wheel_ += event->angleDelta().y();
    if (const int steps = wheel_ / kWheelStep; steps != 0) {
        wheel_ -= steps * kWheelStep;
        zoom(steps);
    }
    event->accept();
}

void PictureGrid::paintEvent(QPaintEvent* event) {
    askForVisible();
    QListView::paintEvent(event);
}

/// The pictures that can be seen, then as many behind them, then those before them.
void PictureGrid::askForVisible() {
    if (model() == nullptr) {
        return;
    }
    const auto rectOf = [this](int row) { return visualRect(model()->index(row, 0)); };
    const auto rows = std::views::iota(0, model()->rowCount());
    const int first =
        *std::ranges::partition_point(rows, [&](int row) { return rectOf(row).bottom() < 0; });
    const int end = *std::ranges::partition_point(
        rows, [&](int row) { return rectOf(row).top() < viewport()->height(); });
    const int ahead = std::min(end + (end - first) / 2, model()->rowCount());
    const int before = std::max(first - (end - first) / 2, 0);
    std::vector<int> wanted;
    for (int row = first; row < ahead; ++row) {
        wanted.push_back(row);
    }
    for (int row = first - 1; row >= before; --row) {
        wanted.push_back(row);
    }
    loader_.want(std::move(wanted), side_, devicePixelRatioF());
}

}  // namespace varo::ui
